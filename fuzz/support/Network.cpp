#include "support/Network.hpp"

#include <fcntl.h>
#include <netdb.h>
#include <sys/ioctl.h>
#include <sys/select.h>
#include <sys/socket.h>
#include <sys/time.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdarg>
#include <cstring>

#include "support/Check.hpp"

namespace Fuzz {

namespace {

Network* gCurrent = nullptr;

// Beyond what a process of one thread has open, and within what a set for `select` holds.
constexpr int kFirstSocket = 512;
constexpr int kSocketsEnd = 1024;

int Fail(int aError) {
    errno = aError;
    return -1;
}

}  // namespace

Network::Network() {
    FUZZ_CHECK(nullptr == gCurrent);
    gCurrent = this;
}

Network::~Network() {
    // Whatever happened, no descriptor is left behind.
    FUZZ_CHECK(mSockets.empty());
    gCurrent = nullptr;
}

Network* Network::Current() {
    return gCurrent;
}

void Network::Send(const Bytes& aPiece) {
    if (!aPiece.empty()) { mScript.push_back({Event::kPiece, aPiece}); }
}

void Network::Send(const std::vector<Bytes>& aPieces) {
    for (const Bytes& lPiece : aPieces) {
        Send(lPiece);
    }
}

void Network::Deliver(std::size_t aIdx, const Bytes& aDatagram) {
    if (aIdx >= mBound.size()) { return; }
    const auto lSocket = mSockets.find(mBound[aIdx]);
    if (lSocket != mSockets.end()) { lSocket->second.mDatagrams.push_back(aDatagram); }
}

void Network::Recover() {
    mScript.clear();
    mRefusals.clear();
    mMostTaken = kNoLimit;
}

int Network::Refusal(Call aCall) {
    std::deque<int>& lRefusals = mRefusals[aCall];
    if (lRefusals.empty()) { return 0; }
    const int lError = lRefusals.front();
    lRefusals.pop_front();
    return lError;
}

Network::Socket& Network::At(int aSocket) {
    FUZZ_CHECK(Has(aSocket));
    return mSockets[aSocket];
}

int Network::OpenSocket(int aType) {
    if (const int lError = Refusal(Call::kSocket)) { return Fail(lError); }
    int lSocket = kFirstSocket;
    while (Has(lSocket)) {
        ++lSocket;
    }
    if (kSocketsEnd == lSocket) { return Fail(EMFILE); }
    mSockets[lSocket].mIsStream = SOCK_STREAM == aType;
    return lSocket;
}

int Network::CloseSocket(int aSocket) {
    At(aSocket);
    mSockets.erase(aSocket);
    for (int& lBound : mBound) {
        if (lBound == aSocket) { lBound = -1; }
    }
    while (!mBound.empty() && -1 == mBound.back()) {
        mBound.pop_back();
    }
    return 0;
}

int Network::Connect(int aSocket) {
    Socket& lSocket = At(aSocket);
    FUZZ_CHECK(lSocket.mIsStream && !lSocket.mIsConnected);
    const int lError = Refusal(Call::kConnect);
    lSocket.mIsConnected = 0 == lError || EINPROGRESS == lError;
    return 0 == lError ? 0 : Fail(lError);
}

int Network::Bind(int aSocket) {
    Socket& lSocket = At(aSocket);
    FUZZ_CHECK(!lSocket.mIsBound);
    if (const int lError = Refusal(Call::kBind)) { return Fail(lError); }
    lSocket.mIsBound = true;
    if (!lSocket.mIsStream) { mBound.push_back(aSocket); }
    return 0;
}

int Network::IsReadable(int aSocket, long long aWait) {
    Socket& lSocket = At(aSocket);
    if (const int lError = Refusal(Call::kWait)) { return Fail(lError); }
    if (!lSocket.mIsStream) { return lSocket.mDatagrams.empty() ? 0 : 1; }
    while (0 != aWait && !mScript.empty() && Event::kPause == mScript.front().mEvent) {
        mScript.pop_front();
    }
    if (mScript.empty() || lSocket.mIsEnded) { return 1; }
    const Event lNext = mScript.front().mEvent;
    if (Event::kPause != lNext && Event::kSilence != lNext) { return 1; }
    if (0 != aWait) { mScript.pop_front(); }
    mMicroseconds += aWait;
    return 0;
}

int Network::IsWritable(int aSocket, long long aWait) {
    At(aSocket);
    if (const int lError = Refusal(Call::kWait)) { return Fail(lError); }
    if (0 != mMostTaken) { return 1; }
    mMicroseconds += aWait;
    return 0;
}

int Network::Unread(int aSocket) const {
    const auto lSocket = mSockets.find(aSocket);
    FUZZ_CHECK(lSocket != mSockets.end());
    if (lSocket->second.mIsEnded || mScript.empty()) { return 0; }
    return static_cast<int>(mScript.front().mPiece.size());
}

ssize_t Network::Receive(int aSocket, void* aData, std::size_t aSize) {
    Socket& lSocket = At(aSocket);
    if (const int lError = Refusal(Call::kRead)) { return Fail(lError); }
    return lSocket.mIsStream ? ReceivePiece(lSocket, aData, aSize) : ReceiveDatagram(lSocket, aData, aSize);
}

ssize_t Network::ReceivePiece(Socket& aSocket, void* aData, std::size_t aSize) {
    FUZZ_CHECK(aSocket.mIsConnected && 0 != aSize);
    if (aSocket.mIsEnded || mScript.empty()) { return 0; }
    Step& lStep = mScript.front();
    const Event lEvent = lStep.mEvent;
    if (Event::kPiece == lEvent) {
        const std::size_t lCount = std::min(aSize, lStep.mPiece.size());
        std::memcpy(aData, lStep.mPiece.data(), lCount);
        lStep.mPiece.erase(lStep.mPiece.begin(), lStep.mPiece.begin() + static_cast<std::ptrdiff_t>(lCount));
        if (lStep.mPiece.empty()) { mScript.pop_front(); }
        return static_cast<ssize_t>(lCount);
    }
    if (Event::kSilence == lEvent) { return Fail(EAGAIN); }
    mScript.pop_front();
    if (Event::kPause == lEvent) { return Fail(EAGAIN); }
    aSocket.mIsEnded = true;
    return Event::kClose == lEvent ? 0 : Fail(ECONNRESET);
}

ssize_t Network::ReceiveDatagram(Socket& aSocket, void* aData, std::size_t aSize) {
    if (aSocket.mDatagrams.empty()) { return Fail(EAGAIN); }
    const Bytes& lDatagram = aSocket.mDatagrams.front();
    const std::size_t lCount = std::min(aSize, lDatagram.size());
    if (0 != lCount) { std::memcpy(aData, lDatagram.data(), lCount); }
    aSocket.mDatagrams.pop_front();
    return static_cast<ssize_t>(lCount);
}

ssize_t Network::Write(int aSocket, const void* aData, std::size_t aSize) {
    const Socket& lSocket = At(aSocket);
    if (const int lError = Refusal(Call::kWrite)) { return Fail(lError); }
    if (!lSocket.mIsStream) {
        ++mDatagrams;
        return static_cast<ssize_t>(aSize);
    }
    FUZZ_CHECK(lSocket.mIsConnected);
    const std::size_t lTaken = std::min(aSize, mMostTaken);
    if (0 == lTaken && 0 != aSize) { return Fail(EAGAIN); }
    mSent.append(static_cast<const char*>(aData), lTaken);
    return static_cast<ssize_t>(lTaken);
}

}  // namespace Fuzz

// The linker leads the library's calls here. What is none of ours goes on to the system.

using Fuzz::Network;

using SteadyClock = std::chrono::steady_clock;
SteadyClock::time_point RealSteadyNow() __asm__("__real__ZNSt6chrono3_V212steady_clock3nowEv");
SteadyClock::time_point SteadyNow() __asm__("__wrap__ZNSt6chrono3_V212steady_clock3nowEv");

SteadyClock::time_point SteadyNow() {
    if (nullptr == Network::Current()) { return RealSteadyNow(); }
    return SteadyClock::time_point(std::chrono::microseconds(Network::Current()->Microseconds()));
}

namespace {

bool IsOurs(int aSocket) {
    return nullptr != Network::Current() && Network::Current()->Has(aSocket);
}

Network& Ours() {
    FUZZ_CHECK(nullptr != Network::Current());
    return *Network::Current();
}

/// The address that every datagram comes from.
void StoreSender(sockaddr* aAddress, socklen_t* aSize) {
    sockaddr lAddress{};
    lAddress.sa_family = AF_INET;
    const socklen_t lSize = std::min<socklen_t>(*aSize, sizeof lAddress);
    std::memcpy(aAddress, &lAddress, lSize);
    *aSize = sizeof lAddress;
}

}  // namespace

extern "C" {

int __real_close(int aSocket);
int __real_getaddrinfo(const char* aHost, const char* aService, const addrinfo* aHints, addrinfo** aFound);

int __wrap_socket(int /*aDomain*/, int aType, int /*aProtocol*/) {
    return Ours().OpenSocket(aType);
}

int __wrap_close(int aSocket) {
    return IsOurs(aSocket) ? Ours().CloseSocket(aSocket) : __real_close(aSocket);
}

int __wrap_connect(int aSocket, const sockaddr* /*aAddress*/, socklen_t /*aSize*/) {
    return Ours().Connect(aSocket);
}

int __wrap_bind(int aSocket, const sockaddr* /*aAddress*/, socklen_t /*aSize*/) {
    return Ours().Bind(aSocket);
}

int __wrap_fcntl(int aSocket, int /*aCommand*/, ...) {
    FUZZ_CHECK(IsOurs(aSocket));
    return 0;
}

int __wrap_ioctl(int aSocket, unsigned long aRequest, ...) {
    FUZZ_CHECK(FIONREAD == aRequest);
    std::va_list lArgs;
    va_start(lArgs, aRequest);
    int* const lCount = va_arg(lArgs, int*);
    va_end(lArgs);
    *lCount = Ours().Unread(aSocket);
    return 0;
}

int __wrap_setsockopt(int aSocket, int /*aLevel*/, int /*aName*/, const void* /*aValue*/, socklen_t /*aSize*/) {
    FUZZ_CHECK(IsOurs(aSocket));
    return 0;
}

int __wrap_getsockopt(int aSocket, int /*aLevel*/, int /*aName*/, void* aValue, socklen_t* aSize) {
    FUZZ_CHECK(IsOurs(aSocket) && sizeof(int) == *aSize);
    const int lPending = Ours().Refusal(Network::Call::kPending);
    std::memcpy(aValue, &lPending, sizeof lPending);
    return 0;
}

int __wrap_select(int aEnd, fd_set* aReadable, fd_set* /*aWritable*/, fd_set* /*aFailed*/, timeval* aTimeout) {
    const long long lWait = aTimeout->tv_sec * 1000000LL + aTimeout->tv_usec;
    return nullptr == aReadable ? Ours().IsWritable(aEnd - 1, lWait) : Ours().IsReadable(aEnd - 1, lWait);
}

ssize_t __wrap_recv(int aSocket, void* aData, size_t aSize, int /*aFlags*/) {
    return Ours().Receive(aSocket, aData, aSize);
}

ssize_t __wrap_send(int aSocket, const void* aData, size_t aSize, int /*aFlags*/) {
    return Ours().Write(aSocket, aData, aSize);
}

ssize_t __wrap_sendto(int aSocket, const void* aData, size_t aSize, int /*aFlags*/, const sockaddr* /*aTo*/,
                      socklen_t /*aToSize*/) {
    return Ours().Write(aSocket, aData, aSize);
}

ssize_t __wrap_recvfrom(int aSocket, void* aData, size_t aSize, int /*aFlags*/, sockaddr* aFrom, socklen_t* aFromSize) {
    const ssize_t lCount = Ours().Receive(aSocket, aData, aSize);
    if (lCount >= 0) { StoreSender(aFrom, aFromSize); }
    return lCount;
}

int __wrap_recvmmsg(int aSocket, mmsghdr* aMessages, unsigned aCount, int /*aFlags*/, timespec* /*aTimeout*/) {
    unsigned lTaken = 0;
    for (; lTaken < aCount; ++lTaken) {
        const iovec& lSlot = aMessages[lTaken].msg_hdr.msg_iov[0];
        const ssize_t lSize = Ours().Receive(aSocket, lSlot.iov_base, lSlot.iov_len);
        if (lSize < 0) { break; }
        aMessages[lTaken].msg_len = static_cast<unsigned>(lSize);
    }
    return 0 == lTaken ? -1 : static_cast<int>(lTaken);
}

/// Numbers only: no server of names is asked.
int __wrap_getaddrinfo(const char* aHost, const char* aService, const addrinfo* aHints, addrinfo** aFound) {
    addrinfo lHints = *aHints;
    lHints.ai_flags |= AI_NUMERICHOST | AI_NUMERICSERV;
    return __real_getaddrinfo(aHost, aService, &lHints, aFound);
}

int __wrap_gettimeofday(timeval* aNow, void* /*aZone*/) {
    const long long lNow = Ours().Microseconds();
    aNow->tv_sec = static_cast<decltype(aNow->tv_sec)>(lNow / 1000000);
    aNow->tv_usec = static_cast<decltype(aNow->tv_usec)>(lNow % 1000000);
    return 0;
}

}  // extern "C"
