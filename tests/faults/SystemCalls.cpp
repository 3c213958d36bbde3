#include "SystemCalls.hpp"

#include <dlfcn.h>
#include <sys/select.h>
#include <sys/socket.h>
#include <sys/time.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>

namespace Faults {

namespace {

/// What goes wrong for this thread; 0 is nothing.
struct Plan {
    Call mCall = Call::kSocket;
    int mErrno = 0;
    unsigned mCallsLeft = 0;

    bool mInterrupt = false;
    bool mWasInterrupted = false;

    unsigned mPiece = 0;

    long mClockStep = 0;
    unsigned mReadsLeft = 0;
};

thread_local Plan tPlan;

/// Those that wait or move data; to connect a socket that does not block is neither.
bool IsInterruptible(Call aCall) {
    return Call::kSend <= aCall && aCall <= Call::kSelect;
}

bool Fails(Call aCall) {
    if (tPlan.mInterrupt && IsInterruptible(aCall)) {
        tPlan.mWasInterrupted = !tPlan.mWasInterrupted;
        errno = EINTR;
        return tPlan.mWasInterrupted;
    }
    if (0 == tPlan.mCallsLeft || aCall != tPlan.mCall || 0 != --tPlan.mCallsLeft) { return false; }
    errno = tPlan.mErrno;
    return true;
}

std::size_t Piece(std::size_t aSize) {
    return 0 == tPlan.mPiece ? aSize : std::min<std::size_t>(aSize, tPlan.mPiece);
}

/// The system's own, which the functions below stand in front of.
template <typename Function>
Function* Real(const char* aName) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, aName));
}

}  // namespace

FailingCall::FailingCall(Call aCall, int aErrno, unsigned aNumber) {
    tPlan.mCall = aCall;
    tPlan.mErrno = aErrno;
    tPlan.mCallsLeft = aNumber;
}

FailingCall::~FailingCall() {
    tPlan = Plan();
}

bool FailingCall::Happened() {
    return 0 == tPlan.mCallsLeft;
}

Interrupted::Interrupted() {
    tPlan.mInterrupt = true;
}

Interrupted::~Interrupted() {
    tPlan = Plan();
}

SmallWrites::SmallWrites(unsigned aBytes) {
    tPlan.mPiece = aBytes;
}

SmallWrites::~SmallWrites() {
    tPlan = Plan();
}

ClockSet::ClockSet(long aSeconds, unsigned aNumber) {
    tPlan.mClockStep = aSeconds;
    tPlan.mReadsLeft = aNumber;
}

ClockSet::~ClockSet() {
    tPlan = Plan();
}

bool ClockSet::Happened() {
    return 0 == tPlan.mReadsLeft;
}

}  // namespace Faults

using Faults::Call;
using Faults::Fails;
using Faults::Piece;
using Faults::Real;

extern "C" {

int socket(int aDomain, int aType, int aProtocol) noexcept {
    static auto* const sReal = Real<int(int, int, int)>("socket");
    return Fails(Call::kSocket) ? -1 : sReal(aDomain, aType, aProtocol);
}

int bind(int aSocket, const sockaddr* aAddress, socklen_t aSize) noexcept {
    static auto* const sReal = Real<int(int, const sockaddr*, socklen_t)>("bind");
    return Fails(Call::kBind) ? -1 : sReal(aSocket, aAddress, aSize);
}

int connect(int aSocket, const sockaddr* aAddress, socklen_t aSize) {
    static auto* const sReal = Real<int(int, const sockaddr*, socklen_t)>("connect");
    return Fails(Call::kConnect) ? -1 : sReal(aSocket, aAddress, aSize);
}

int setsockopt(int aSocket, int aLevel, int aName, const void* aValue, socklen_t aSize) noexcept {
    static auto* const sReal = Real<int(int, int, int, const void*, socklen_t)>("setsockopt");
    return Fails(Call::kSetSockOpt) ? -1 : sReal(aSocket, aLevel, aName, aValue, aSize);
}

ssize_t send(int aSocket, const void* aData, size_t aSize, int aFlags) {
    static auto* const sReal = Real<ssize_t(int, const void*, size_t, int)>("send");
    return Fails(Call::kSend) ? -1 : sReal(aSocket, aData, Piece(aSize), aFlags);
}

ssize_t sendto(int aSocket, const void* aData, size_t aSize, int aFlags, const sockaddr* aTo, socklen_t aToSize) {
    static auto* const sReal = Real<ssize_t(int, const void*, size_t, int, const sockaddr*, socklen_t)>("sendto");
    return Fails(Call::kSendTo) ? -1 : sReal(aSocket, aData, aSize, aFlags, aTo, aToSize);
}

ssize_t recv(int aSocket, void* aData, size_t aSize, int aFlags) {
    static auto* const sReal = Real<ssize_t(int, void*, size_t, int)>("recv");
    return Fails(Call::kRecv) ? -1 : sReal(aSocket, aData, aSize, aFlags);
}

ssize_t recvfrom(int aSocket, void* aData, size_t aSize, int aFlags, sockaddr* aFrom, socklen_t* aFromSize) {
    static auto* const sReal = Real<ssize_t(int, void*, size_t, int, sockaddr*, socklen_t*)>("recvfrom");
    return Fails(Call::kRecvFrom) ? -1 : sReal(aSocket, aData, aSize, aFlags, aFrom, aFromSize);
}

int recvmmsg(int aSocket, mmsghdr* aMessages, unsigned aCount, int aFlags, timespec* aTimeOut) {
    static auto* const sReal = Real<int(int, mmsghdr*, unsigned, int, timespec*)>("recvmmsg");
    return Fails(Call::kRecvMMsg) ? -1 : sReal(aSocket, aMessages, aCount, aFlags, aTimeOut);
}

int select(int aCount, fd_set* aRead, fd_set* aWrite, fd_set* aExcept, timeval* aTimeOut) {
    static auto* const sReal = Real<int(int, fd_set*, fd_set*, fd_set*, timeval*)>("select");
    return Fails(Call::kSelect) ? -1 : sReal(aCount, aRead, aWrite, aExcept, aTimeOut);
}

int gettimeofday(timeval* aTime, void* aZone) noexcept {
    static auto* const sReal = Real<int(timeval*, void*)>("gettimeofday");
    if (Fails(Call::kTime)) { return -1; }
    const int lResult = sReal(aTime, aZone);
    if (0 != Faults::tPlan.mReadsLeft) { --Faults::tPlan.mReadsLeft; }
    if (0 == Faults::tPlan.mReadsLeft) { aTime->tv_sec += Faults::tPlan.mClockStep; }
    return lResult;
}
}
