#include "Sockets/TLS.hpp"

#include <cerrno>

#include "Player/Assert.hpp"
#include "Player/Features.hpp"
#include "Player/Mem.hpp"
#include "Sockets/Socket.hpp"
#include "Sockets/Wait.hpp"
#include "Throw.hpp"

#ifdef PLAYER_HAS_GNUTLS
#include <arpa/inet.h>
#include <gnutls/gnutls.h>
#endif

namespace Player {

bool HasTLS() {
#ifdef PLAYER_HAS_GNUTLS
    return true;
#else
    return false;
#endif
}

}  // namespace Player

namespace Player::Sockets {

#ifdef PLAYER_HAS_GNUTLS

namespace {

using Clock = std::chrono::steady_clock;

/// One record holds no more.
constexpr UInt kLargestRecord = 16384;
/// Messages of TLS itself between two of the server's, of one call.
constexpr UInt kMostInterruptions = 64;

Clock::time_point After(UInt aSeconds) {
    return Clock::now() + std::chrono::seconds(aSeconds);
}

bool IsLiteral(const std::string& aHost) {
    unsigned char lAddress[sizeof(in6_addr)];
    return 1 == inet_pton(AF_INET, aHost.c_str(), lAddress) || 1 == inet_pton(AF_INET6, aHost.c_str(), lAddress);
}

/// What a certificate is refused for, in the words of GnuTLS.
std::string WordsFor(unsigned aStatus) {
    gnutls_datum_t lText{};
    if (gnutls_certificate_verification_status_print(aStatus, GNUTLS_CRT_X509, &lText, 0) < 0) { return "not trusted"; }
    std::string lWords(reinterpret_cast<const char*>(lText.data), lText.size);
    gnutls_free(lText.data);
    return lWords.substr(0, lWords.find_last_not_of(std::string(" \0", 2)) + 1);
}

/// The system's reason for a failure of the connection below.
int SystemErrorOf(int aErrno) {
    return 0 == aErrno ? ECONNRESET : aErrno;
}

}  // namespace

struct TLS::Session {
    Session() = default;
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;
    ~Session() {
        gnutls_deinit(mHandle);
        gnutls_certificate_free_credentials(mCredentials);
    }

    gnutls_session_t mHandle = nullptr;
    gnutls_certificate_credentials_t mCredentials = nullptr;
    bool mIsUp = false;
};

TLS::TLS(SInt aSocket, const std::string& aHost, const std::string& aAuthorities)
    : mSocket(aSocket), mHost(aHost), mSession(new Session) {
    const auto lCheck = [](int aResult, const char* aWhat) {
        if (aResult >= 0) { return; }
        PLAYER_THROW(NetworkErr, ErrorCode::kTLSFailed, "TLS::TLS(): %s: %s", aWhat, gnutls_strerror(aResult));
    };
    lCheck(gnutls_certificate_allocate_credentials(&mSession->mCredentials), "No credentials");
    if (aAuthorities.empty()) {
        // A system that knows no authority trusts no certificate.
        gnutls_certificate_set_x509_system_trust(mSession->mCredentials);
    } else {
        const int lFound =
            gnutls_certificate_set_x509_trust_file(mSession->mCredentials, aAuthorities.c_str(), GNUTLS_X509_FMT_PEM);
        lCheck(0 == lFound ? GNUTLS_E_NO_CERTIFICATE_FOUND : lFound, ("No authorities in " + aAuthorities).c_str());
    }
    lCheck(gnutls_init(&mSession->mHandle, GNUTLS_CLIENT | GNUTLS_NONBLOCK | GNUTLS_NO_SIGNAL), "No session");
    gnutls_session_t const lHandle = mSession->mHandle;
    lCheck(gnutls_set_default_priority(lHandle), "No priorities");
    lCheck(gnutls_credentials_set(lHandle, GNUTLS_CRD_CERTIFICATE, mSession->mCredentials), "No credentials");
    if (!IsLiteral(mHost)) {
        lCheck(gnutls_server_name_set(lHandle, GNUTLS_NAME_DNS, mHost.data(), mHost.size()), "Not a name");
    }
    gnutls_session_set_verify_cert(lHandle, mHost.c_str(), 0);
    gnutls_transport_set_int(lHandle, aSocket);
}

TLS::~TLS() {
    // Says goodbye if that costs no wait.
    if (mSession->mIsUp) { gnutls_bye(mSession->mHandle, GNUTLS_SHUT_WR); }
}

bool TLS::Await(Deadline aDeadline) const {
    const bool lWrites = 1 == gnutls_record_get_direction(mSession->mHandle);
    const SInt lReady = WaitUntil(mSocket, lWrites ? Readiness::kWritable : Readiness::kReadable, aDeadline);
    // A failed wait fails again where the socket is used.
    return 0 != lReady;
}

void TLS::Handshake(UInt aTimeoutSec) {
    const Deadline lDeadline = After(aTimeoutSec);
    for (int lResult = -1; 0 != lResult;) {
        lResult = gnutls_handshake(mSession->mHandle);
        if (0 != gnutls_error_is_fatal(lResult)) { ThrowRefused(lResult); }
        const bool lIsOver = 0 != lResult && (GNUTLS_E_AGAIN == lResult ? !Await(lDeadline) : Clock::now() > lDeadline);
        if (lIsOver) {
            PLAYER_THROW_SYSTEM(NetworkErr, ErrorCode::kConnectFailed, ETIMEDOUT, "TLS::Handshake(): %s",
                                "The server does not answer in time");
        }
    }
    mSession->mIsUp = true;
    char* const lSecured = gnutls_session_get_desc(mSession->mHandle);
    Report(__FILE__, __LINE__, Severity::Info, "Secured: %s", nullptr == lSecured ? "TLS" : lSecured);
    gnutls_free(lSecured);
}

void TLS::ThrowRefused(int aResult) const {
    gnutls_session_t const lHandle = mSession->mHandle;
    if (GNUTLS_E_CERTIFICATE_VERIFICATION_ERROR == aResult) {
        PLAYER_THROW(NetworkErr, ErrorCode::kTLSFailed, "TLS::Handshake(): The certificate of %s is refused: %s",
                     mHost.c_str(), WordsFor(gnutls_session_get_verify_cert_status(lHandle)).c_str());
    }
    if (GNUTLS_E_FATAL_ALERT_RECEIVED == aResult) {
        PLAYER_THROW(NetworkErr, ErrorCode::kTLSFailed, "TLS::Handshake(): %s refuses: %s", mHost.c_str(),
                     gnutls_alert_get_name(gnutls_alert_get(lHandle)));
    }
    PLAYER_THROW(NetworkErr, ErrorCode::kTLSFailed, "TLS::Handshake(): No TLS with %s: %s", mHost.c_str(),
                 gnutls_strerror(aResult));
}

SInt TLS::Receive(void* aData, UInt aSize) {
    if (mHasEnded) { return Socket::kClosed; }
    for (UInt i = 0; i < kMostInterruptions; ++i) {
        const ssize_t lCount = gnutls_record_recv(mSession->mHandle, aData, aSize);
        const int lErrno = errno;
        if (lCount > 0) { return static_cast<SInt>(lCount); }
        if (0 == lCount || GNUTLS_E_PREMATURE_TERMINATION == lCount) {
            mHasEnded = true;
            return Socket::kClosed;
        }
        if (GNUTLS_E_AGAIN == lCount) { return Socket::kNoData; }
        const int lResult = static_cast<int>(lCount);
        if (0 != gnutls_error_is_fatal(lResult)) {
            PLAYER_THROW_SYSTEM(NetworkErr, ErrorCode::kReadFailed, SystemErrorOf(lErrno),
                                "TLS::Read(): Failed to read: %s", gnutls_strerror(lResult));
        }
    }
    return Socket::kNoData;
}

SInt TLS::TakeAhead(void* aData, UInt aSize) {
    const UInt lSize = Util::Min(aSize, static_cast<UInt>(mAhead.size()));
    Mem::Copy(aData, static_cast<const void*>(mAhead.data()), lSize);
    mAhead.erase(0, lSize);
    return static_cast<SInt>(lSize);
}

SInt TLS::Read(void* aData, UInt aSize, UInt aTimeoutSec) {
    PLAYER_ASSERT(0 == (aSize >> 31));
    if (!mAhead.empty()) { return TakeAhead(aData, aSize); }
    const Deadline lDeadline = After(aTimeoutSec);
    for (;;) {
        const SInt lCount = Receive(aData, aSize);
        if (Socket::kNoData != lCount) { return lCount; }
        if (!Await(lDeadline)) { return Socket::kTimeOut; }
    }
}

SInt TLS::ReadAvailable(void* aData, UInt aSize) {
    PLAYER_ASSERT(0 == (aSize >> 31));
    UInt lTaken = mAhead.empty() ? 0 : static_cast<UInt>(TakeAhead(aData, aSize));
    SInt lCount = 1;
    while (lCount > 0 && lTaken < aSize) {
        lCount = Receive(static_cast<Byte*>(aData) + lTaken, aSize - lTaken);
        if (lCount > 0) { lTaken += static_cast<UInt>(lCount); }
    }
    return 0 == lTaken ? lCount : static_cast<SInt>(lTaken);
}

SInt TLS::Write(const void* aData, UInt aSize, UInt aTimeoutSec) {
    PLAYER_ASSERT(0 == (aSize >> 31));
    const Deadline lDeadline = After(aTimeoutSec);
    for (;;) {
        const ssize_t lCount = gnutls_record_send(mSession->mHandle, aData, aSize);
        const int lErrno = errno;
        if (lCount >= 0) { return static_cast<SInt>(lCount); }
        const int lResult = static_cast<int>(lCount);
        if (0 != gnutls_error_is_fatal(lResult)) {
            PLAYER_THROW_SYSTEM(NetworkErr, ErrorCode::kWriteFailed, SystemErrorOf(lErrno),
                                "TLS::Write(): Failed to write: %s", gnutls_strerror(lResult));
        }
        if (!Await(lDeadline)) { return Socket::kTimeOut; }
    }
}

bool TLS::HasClosed() {
    if (!mAhead.empty() || 0 != gnutls_record_check_pending(mSession->mHandle)) { return false; }
    if (0 == Wait(mSocket, Readiness::kReadable, 0)) { return mHasEnded; }
    // What waits in the socket may be data, or the end.
    std::string lRecord(kLargestRecord, '\0');
    try {
        const SInt lCount = Receive(&lRecord[0], kLargestRecord);
        if (lCount > 0) { mAhead.assign(lRecord, 0, static_cast<std::size_t>(lCount)); }
        return Socket::kClosed == lCount;
    } catch (const NetworkErr&) { return true; }
}

#else

struct TLS::Session {};

TLS::TLS(SInt aSocket, const std::string& aHost, const std::string& /*aAuthorities*/) : mSocket(aSocket), mHost(aHost) {
    PLAYER_THROW(NetworkErr, ErrorCode::kTLSFailed, "TLS::TLS(): %s", "Built without GnuTLS: no rtsps");
}

TLS::~TLS() = default;

// None of these is reached.
void TLS::Handshake(UInt /*aTimeoutSec*/) {}

SInt TLS::Read(void* /*aData*/, UInt /*aSize*/, UInt /*aTimeoutSec*/) {
    return Socket::kClosed;
}

SInt TLS::ReadAvailable(void* /*aData*/, UInt /*aSize*/) {
    return Socket::kClosed;
}

SInt TLS::Write(const void* /*aData*/, UInt /*aSize*/, UInt /*aTimeoutSec*/) {
    return Socket::kTimeOut;
}

bool TLS::HasClosed() {
    return true;
}

#endif

}  // namespace Player::Sockets
