#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <thread>

#include "support/Certificates.hpp"
#include "support/Patience.hpp"

namespace TestSupport {

/// Speaks TLS to clients on the loopback, one after the other, and passes what they say on to a server there that knows
/// none. Throws `std::runtime_error` where there is no GnuTLS.
class TLSRelay {
public:
    static constexpr std::size_t kNever = static_cast<std::size_t>(-1);

    struct Manners {
        Certificates::Flaw mFlaw = Certificates::Flaw::kNone;
        /// Bytes that leave at a time; 0 for all.
        std::size_t mPiece = 0;
        /// Bytes after which nothing more leaves, of each connection.
        std::size_t mMutedAfter = kNever;
        /// The same, counted from the end of the handshake.
        std::size_t mMutedInRecordsAfter = kNever;
        /// The connection ends without a word when the server ends it.
        bool mSaysGoodbye = true;
    };

    explicit TLSRelay(unsigned aServerPort);
    TLSRelay(unsigned aServerPort, Manners aManners);
    TLSRelay(const TLSRelay&) = delete;
    TLSRelay& operator=(const TLSRelay&) = delete;
    ~TLSRelay();

    unsigned Port() const { return mPort; }
    const std::string& AuthoritiesFile() const { return mCertificates.mAuthoritiesFile; }

private:
    class Client;

    void Run();

    const Manners mManners;
    const Certificates mCertificates;
    const unsigned mServerPort;
    Patience mPatience{std::chrono::seconds(10)};
    unsigned mPort = 0;
    int mListener = -1;
    std::thread mThread;
};

}  // namespace TestSupport
