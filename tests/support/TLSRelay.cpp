#include "support/TLSRelay.hpp"

#include <stdexcept>

#ifdef PLAYER_HAS_GNUTLS

#include <arpa/inet.h>
#include <gnutls/gnutls.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>

#include "support/Listener.hpp"

namespace TestSupport {

namespace {

constexpr int kSliceMs = 10;

gnutls_datum_t Datum(const std::string& aText) {
    return {reinterpret_cast<unsigned char*>(const_cast<char*>(aText.data())), static_cast<unsigned>(aText.size())};
}

std::size_t Sum(std::size_t aOne, std::size_t aOther) {
    return aOne + std::min(aOther, TLSRelay::kNever - aOne);
}

int ConnectTo(unsigned aPort) {
    const int lSocket = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in lAddress{};
    lAddress.sin_family = AF_INET;
    lAddress.sin_port = htons(static_cast<in_port_t>(aPort));
    lAddress.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    connect(lSocket, reinterpret_cast<sockaddr*>(&lAddress), sizeof(lAddress));
    return lSocket;
}

}  // namespace

/// One client, and its connection to the server.
class TLSRelay::Client {
public:
    Client(int aSocket, const TLSRelay& aRelay) : mSocket(aSocket), mRelay(aRelay) {
        const int lOn = 1;
        setsockopt(mSocket, IPPROTO_TCP, TCP_NODELAY, &lOn, sizeof(lOn));
        gnutls_certificate_allocate_credentials(&mCredentials);
        const gnutls_datum_t lCertificate = Datum(aRelay.mCertificates.mCertificate);
        const gnutls_datum_t lKey = Datum(aRelay.mCertificates.mKey);
        gnutls_certificate_set_x509_key_mem(mCredentials, &lCertificate, &lKey, GNUTLS_X509_FMT_PEM);
        gnutls_init(&mSession, GNUTLS_SERVER | GNUTLS_NONBLOCK | GNUTLS_NO_SIGNAL);
        gnutls_set_default_priority(mSession);
        gnutls_credentials_set(mSession, GNUTLS_CRD_CERTIFICATE, mCredentials);
        gnutls_transport_set_ptr(mSession, this);
        gnutls_transport_set_push_function(mSession, Push);
        gnutls_transport_set_pull_function(mSession, Pull);
    }
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;
    ~Client() {
        gnutls_deinit(mSession);
        gnutls_certificate_free_credentials(mCredentials);
        close(mSocket);
        if (mServer >= 0) { close(mServer); }
    }

    /// False when it comes to nothing.
    bool ShakeHands() {
        int lResult = -1;
        while (0 != (lResult = gnutls_handshake(mSession)) && 0 == gnutls_error_is_fatal(lResult)) {
            if (mRelay.mPatience.Stopped()) { return false; }
            pollfd lPoll = {mSocket, POLLIN, 0};
            poll(&lPoll, 1, kSliceMs);
        }
        if (0 == lResult) { mMutedAfter = Sum(mSent, mRelay.mManners.mMutedInRecordsAfter); }
        return 0 == lResult;
    }

    void Relay() {
        mServer = ConnectTo(mRelay.mServerPort);
        while (!mRelay.mPatience.Stopped() && PassOn() && PassBack()) {
            pollfd lPolls[] = {{mSocket, POLLIN, 0}, {mServer, POLLIN, 0}};
            poll(lPolls, 2, kSliceMs);
        }
    }

private:
    /// From the client to the server. False when it has ended.
    bool PassOn() {
        char lData[16384];
        ssize_t lCount = 0;
        while ((lCount = gnutls_record_recv(mSession, lData, sizeof(lData))) > 0) {
            if (send(mServer, lData, static_cast<std::size_t>(lCount), MSG_NOSIGNAL) < 0) { return false; }
        }
        return lCount < 0 && 0 == gnutls_error_is_fatal(static_cast<int>(lCount));
    }

    bool PassBack() {
        char lData[16384];
        ssize_t lCount = 0;
        while ((lCount = recv(mServer, lData, sizeof(lData), MSG_DONTWAIT)) > 0) {
            for (ssize_t lDone = 0; lDone < lCount;) {
                const ssize_t lSent =
                    gnutls_record_send(mSession, lData + lDone, static_cast<std::size_t>(lCount - lDone));
                if (lSent < 0) { return false; }
                lDone += lSent;
            }
        }
        if (0 == lCount && mRelay.mManners.mSaysGoodbye) { gnutls_bye(mSession, GNUTLS_SHUT_WR); }
        return 0 != lCount;
    }

    static ssize_t Push(gnutls_transport_ptr_t aClient, const void* aData, std::size_t aSize) {
        Client& lClient = *static_cast<Client*>(aClient);
        const Manners& lManners = lClient.mRelay.mManners;
        const char* const lData = static_cast<const char*>(aData);
        const std::size_t lEnd = std::min(aSize, lClient.mMutedAfter - std::min(lClient.mMutedAfter, lClient.mSent));
        const std::size_t lPiece = 0 == lManners.mPiece ? aSize : lManners.mPiece;
        for (std::size_t lAt = 0; lAt < lEnd; lAt += lPiece) {
            if (send(lClient.mSocket, lData + lAt, std::min(lPiece, lEnd - lAt), MSG_NOSIGNAL) < 0) { return -1; }
        }
        lClient.mSent += aSize;
        return static_cast<ssize_t>(aSize);
    }
    static ssize_t Pull(gnutls_transport_ptr_t aClient, void* aData, std::size_t aSize) {
        return recv(static_cast<Client*>(aClient)->mSocket, aData, aSize, MSG_DONTWAIT);
    }

    int mSocket;
    const TLSRelay& mRelay;
    int mServer = -1;
    std::size_t mSent = 0;
    std::size_t mMutedAfter = mRelay.mManners.mMutedAfter;
    gnutls_session_t mSession = nullptr;
    gnutls_certificate_credentials_t mCredentials = nullptr;
};

TLSRelay::TLSRelay(unsigned aServerPort) : TLSRelay(aServerPort, Manners()) {}

TLSRelay::TLSRelay(unsigned aServerPort, Manners aManners)
    : mManners(aManners), mCertificates(aManners.mFlaw), mServerPort(aServerPort), mListener(ListenOnLoopback(mPort)) {
    mThread = std::thread([this] { Run(); });
}

TLSRelay::~TLSRelay() {
    mPatience.Stop();
    mThread.join();
    close(mListener);
}

void TLSRelay::Run() {
    while (!mPatience.Stopped()) {
        pollfd lPoll = {mListener, POLLIN, 0};
        if (poll(&lPoll, 1, kSliceMs) <= 0) { continue; }
        Client lClient(accept(mListener, nullptr, nullptr), *this);
        if (!lClient.ShakeHands()) { continue; }
        lClient.Relay();
    }
}

}  // namespace TestSupport

#else

namespace TestSupport {

TLSRelay::TLSRelay(unsigned aServerPort) : mServerPort(aServerPort) {}

TLSRelay::TLSRelay(unsigned aServerPort, Manners aManners) : mManners(aManners), mServerPort(aServerPort) {}

TLSRelay::~TLSRelay() = default;

}  // namespace TestSupport

#endif
