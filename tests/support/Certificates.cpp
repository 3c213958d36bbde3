#include "support/Certificates.hpp"

#include <stdexcept>

#ifdef PLAYER_HAS_GNUTLS

#include <arpa/inet.h>
#include <gnutls/gnutls.h>
#include <gnutls/x509.h>
#include <stdlib.h>
#include <unistd.h>

#include <ctime>
#include <filesystem>
#include <functional>

namespace TestSupport {

namespace {

constexpr std::time_t kDay = 86400;

void Check(int aResult) {
    if (aResult < 0) { throw std::runtime_error(gnutls_strerror(aResult)); }
}

class Key {
public:
    Key() {
        Check(gnutls_x509_privkey_init(&mKey));
        Check(gnutls_x509_privkey_generate(mKey, GNUTLS_PK_ECDSA, GNUTLS_CURVE_TO_BITS(GNUTLS_ECC_CURVE_SECP256R1), 0));
    }
    Key(const Key&) = delete;
    Key& operator=(const Key&) = delete;
    ~Key() { gnutls_x509_privkey_deinit(mKey); }

    gnutls_x509_privkey_t mKey = nullptr;
};

std::string Text(const std::function<int(gnutls_datum_t*)>& aExport) {
    gnutls_datum_t lData{};
    Check(aExport(&lData));
    const std::string lText(reinterpret_cast<const char*>(lData.data), lData.size);
    gnutls_free(lData.data);
    return lText;
}

class Certificate {
public:
    Certificate(const char* aName, const Key& aKey, std::time_t aFrom, std::time_t aTo) {
        Check(gnutls_x509_crt_init(&mCertificate));
        Check(gnutls_x509_crt_set_version(mCertificate, 3));
        const unsigned char lSerial = ++sSerial;
        Check(gnutls_x509_crt_set_serial(mCertificate, &lSerial, 1));
        Check(gnutls_x509_crt_set_dn(mCertificate, (std::string("CN=") + aName).c_str(), nullptr));
        Check(gnutls_x509_crt_set_key(mCertificate, aKey.mKey));
        const std::time_t lNow = std::time(nullptr);
        Check(gnutls_x509_crt_set_activation_time(mCertificate, lNow + aFrom));
        Check(gnutls_x509_crt_set_expiration_time(mCertificate, lNow + aTo));
    }
    Certificate(const Certificate&) = delete;
    Certificate& operator=(const Certificate&) = delete;
    ~Certificate() { gnutls_x509_crt_deinit(mCertificate); }

    void SetAuthority() { Check(gnutls_x509_crt_set_basic_constraints(mCertificate, 1, -1)); }
    void AddName(const std::string& aName) {
        Check(gnutls_x509_crt_set_subject_alt_name(mCertificate, GNUTLS_SAN_DNSNAME, aName.data(),
                                                   static_cast<unsigned>(aName.size()), GNUTLS_FSAN_APPEND));
    }
    void AddAddress(int aFamily, const char* aAddress) {
        unsigned char lBytes[sizeof(in6_addr)];
        inet_pton(aFamily, aAddress, lBytes);
        Check(gnutls_x509_crt_set_subject_alt_name(mCertificate, GNUTLS_SAN_IPADDRESS, lBytes,
                                                   AF_INET == aFamily ? 4 : 16, GNUTLS_FSAN_APPEND));
    }
    void Sign(const Certificate& aIssuer, const Key& aKey) {
        Check(gnutls_x509_crt_sign2(mCertificate, aIssuer.mCertificate, aKey.mKey, GNUTLS_DIG_SHA256, 0));
    }
    std::string PEM() const {
        return Text(
            [this](gnutls_datum_t* aOut) { return gnutls_x509_crt_export2(mCertificate, GNUTLS_X509_FMT_PEM, aOut); });
    }

private:
    static unsigned char sSerial;
    gnutls_x509_crt_t mCertificate = nullptr;
};

unsigned char Certificate::sSerial = 0;

std::string Stored(const std::string& aText) {
    std::string lPath = (std::filesystem::temp_directory_path() / "authorities.XXXXXX").string();
    const int lFile = mkstemp(lPath.data());
    const bool lIsWritten = static_cast<ssize_t>(aText.size()) == write(lFile, aText.data(), aText.size());
    close(lFile);
    if (!lIsWritten) { throw std::runtime_error("no file for the authorities"); }
    return lPath;
}

}  // namespace

Certificates::Certificates(Flaw aFlaw) {
    const Key lRootKey;
    Certificate lRoot("An authority", lRootKey, -2 * kDay, kDay);
    lRoot.SetAuthority();
    lRoot.Sign(lRoot, lRootKey);

    const Key lKey;
    Certificate lServer("A server", lKey, -2 * kDay, Flaw::kExpired == aFlaw ? -kDay : kDay);
    if (Flaw::kOtherName == aFlaw) {
        lServer.AddName("camera.example");
    } else {
        lServer.AddName("localhost");
        lServer.AddAddress(AF_INET, "127.0.0.1");
        lServer.AddAddress(AF_INET6, "::1");
    }
    lServer.Sign(lRoot, lRootKey);
    mCertificate = lServer.PEM();
    mKey =
        Text([&](gnutls_datum_t* aOut) { return gnutls_x509_privkey_export2(lKey.mKey, GNUTLS_X509_FMT_PEM, aOut); });

    if (Flaw::kUnknownAuthority == aFlaw) {
        Certificate lOther("Another authority", lKey, -2 * kDay, kDay);
        lOther.SetAuthority();
        lOther.Sign(lOther, lKey);
        mAuthoritiesFile = Stored(lOther.PEM());
    } else {
        mAuthoritiesFile = Stored(lRoot.PEM());
    }
}

Certificates::~Certificates() {
    unlink(mAuthoritiesFile.c_str());
}

}  // namespace TestSupport

#else

namespace TestSupport {

Certificates::Certificates(Flaw /*aFlaw*/) {
    throw std::runtime_error("built without GnuTLS");
}

Certificates::~Certificates() = default;

}  // namespace TestSupport

#endif
