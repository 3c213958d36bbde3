#pragma once

#include <memory>
#include <string>

namespace TestSupport {

/// An authority and the certificate that it has given a server on the loopback, made anew; all in PEM.
struct Certificates {
    enum class Flaw { kNone, kOtherName, kExpired, kUnknownAuthority };

    /// Throws `std::runtime_error` where there is no GnuTLS.
    explicit Certificates(Flaw aFlaw = Flaw::kNone);
    Certificates(const Certificates&) = delete;
    Certificates& operator=(const Certificates&) = delete;
    /// Removes the file.
    ~Certificates();

    std::string mCertificate;
    std::string mKey;
    /// A file with the authority's certificate; with `kUnknownAuthority` that of another one.
    std::string mAuthoritiesFile;
};

}  // namespace TestSupport
