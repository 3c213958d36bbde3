#include "Sockets/Socket.hpp"

#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>

#include "Player/Assert.hpp"
#include "Sockets/Transfer.hpp"
#include "Sockets/Wait.hpp"
#include "Throw.hpp"

namespace Player {

using Sockets::Readiness;
using Sockets::TransferResult;
using Sockets::Uninterrupted;

namespace {

constexpr SInt kClosedDescriptor = -1;

const char* EnableOrDisable(bool aEnable) {
    return aEnable ? "enable" : "disable";
}

/// The error that a connection attempt ended with, 0 when it succeeded.
int PendingError(SInt aSocket) {
    int lPending = -1;
    socklen_t lSize = sizeof lPending;
    // The outcome of the call itself is not looked at: the preset value stands for its failure.
    static_cast<void>(getsockopt(aSocket, SOL_SOCKET, SO_ERROR, &lPending, &lSize));
    return lPending;
}

}  // namespace

Socket::~Socket() {
    Close();
}

void Socket::Close() {
    if (0 <= mSocket) { ::close(mSocket); }
    mSocket = kClosedDescriptor;
}

SInt Socket::Connect(const Address& aAddr) {
    const int lResult = Uninterrupted([&] { return ::connect(mSocket, aAddr.Begin(), aAddr.Size()); });
    if (0 != lResult) {
        const int lError = errno;
        PLAYER_THROW_SYSTEM(NetworkErr, ErrorCode::kConnectFailed, lError, "Socket::Connect(): Failed to connect [%u]",
                            static_cast<UInt>(lError));
    }
    return lResult;
}

SInt Socket::Connect(const Address& aAddr, UInt aTimeoutSec) {
    if (0 == ::connect(mSocket, aAddr.Begin(), aAddr.Size())) { return 0; }

    const bool lInProgress = EINPROGRESS == errno;
    const SInt lReady = lInProgress ? Sockets::Wait(mSocket, Readiness::kWritable, aTimeoutSec) : -1;
    if (lReady < 0) {
        const int lError = errno;
        PLAYER_THROW_SYSTEM(NetworkErr, ErrorCode::kConnectFailed, lError, "Socket::Connect(): Failed to connect [%u]",
                            static_cast<UInt>(lError));
    }
    if (0 == lReady) {
        PLAYER_THROW_SYSTEM(NetworkErr, ErrorCode::kConnectFailed, ETIMEDOUT,
                            "Socket::Connect(): Failed to connect [Timeout]");
    }

    const int lPending = PendingError(mSocket);
    if (0 != lPending) {
        PLAYER_THROW_SYSTEM(NetworkErr, ErrorCode::kConnectFailed, lPending,
                            "Socket::Connect(): Failed to get last error [%u]", static_cast<UInt>(lPending));
    }
    return 0;
}

SInt Socket::Bind(const Address& aAddr) {
    const int lResult = ::bind(mSocket, aAddr.Begin(), aAddr.Size());
    if (0 != lResult) {
        const int lError = errno;
        PLAYER_THROW_SYSTEM(NetworkErr, ErrorCode::kBindFailed, lError, "Socket::Bind(): Failed to bind [%u]",
                            static_cast<UInt>(lError));
    }
    return lResult;
}

SInt Socket::Read(void* aData, UInt aSize) {
    return Receive(aData, aSize, 0);
}

SInt Socket::Read(void* aData, UInt aSize, UInt aTimeoutSec) {
    PLAYER_ASSERT(0 == (aSize >> 31));
    const SInt lReady = Sockets::Wait(mSocket, Readiness::kReadable, aTimeoutSec);
    if (lReady < 0) {
        const int lError = errno;
        PLAYER_THROW_SYSTEM(NetworkErr, ErrorCode::kReadFailed, lError, "Socket::Read(): Failed to read [%u]",
                            static_cast<UInt>(lError));
    }
    return 0 == lReady ? kTimeOut : Read(aData, aSize);
}

SInt Socket::ReadAvailable(void* aData, UInt aSize) {
    return Receive(aData, aSize, MSG_DONTWAIT);
}

SInt Socket::Receive(void* aData, UInt aSize, int aFlags) {
    PLAYER_ASSERT(0 == (aSize >> 31));
    const ssize_t lCount = Uninterrupted([&] { return ::recv(mSocket, aData, aSize, aFlags); });
    return TransferResult(lCount, ErrorCode::kReadFailed, "Socket::Read(): Failed to read [%u]");
}

SInt Socket::Write(const void* aData, UInt aSize) {
    return Send(aData, aSize, 0);
}

SInt Socket::Write(const void* aData, UInt aSize, UInt aTimeoutSec) {
    const SInt lReady = Sockets::Wait(mSocket, Readiness::kWritable, aTimeoutSec);
    if (lReady < 0) {
        const int lError = errno;
        PLAYER_THROW_SYSTEM(NetworkErr, ErrorCode::kWriteFailed, lError, "Socket::Write(): Failed to write [%u]",
                            static_cast<UInt>(lError));
    }
    return 0 == lReady ? kTimeOut : Send(aData, aSize, MSG_DONTWAIT);
}

SInt Socket::Send(const void* aData, UInt aSize, int aFlags) {
    PLAYER_ASSERT(0 == (aSize >> 31));
    const ssize_t lCount = Uninterrupted([&] { return ::send(mSocket, aData, aSize, MSG_NOSIGNAL | aFlags); });
    return TransferResult(lCount, ErrorCode::kWriteFailed, "Socket::Write(): Failed to write [%u]");
}

bool Socket::HasClosed() const {
    const SInt lReady = Sockets::Wait(mSocket, Readiness::kReadable, 0);
    if (lReady <= 0) { return lReady < 0; }
    // Readable with nothing to read is the end of the stream.
    int lPending = 0;
    return 0 != ::ioctl(mSocket, FIONREAD, &lPending) || 0 == lPending;
}

SInt Socket::KeepAlive(bool aEnable) {
    const int lValue = aEnable ? 1 : 0;
    const int lResult = ::setsockopt(mSocket, SOL_SOCKET, SO_KEEPALIVE, &lValue, sizeof lValue);
    if (0 != lResult) {
        const int lError = errno;
        PLAYER_THROW_SYSTEM(NetworkErr, ErrorCode::kOptionFailed, lError,
                            "Socket::KeepAlive(): Failed to %s keep-alive [%u]", EnableOrDisable(aEnable),
                            static_cast<UInt>(lError));
    }
    return lResult;
}

SInt Socket::RecvBufferSize(UInt aBytes) {
    const int lValue = static_cast<int>(aBytes);
    const int lResult = ::setsockopt(mSocket, SOL_SOCKET, SO_RCVBUF, &lValue, sizeof lValue);
    if (0 != lResult) {
        const int lError = errno;
        PLAYER_THROW_SYSTEM(NetworkErr, ErrorCode::kOptionFailed, lError,
                            "Socket::RecvBufferSize(): Failed set receive buffer size to %u [%u]", aBytes,
                            static_cast<UInt>(lError));
    }
    return lResult;
}

UInt Socket::RecvBufferSize() const {
    int lValue = 0;
    socklen_t lSize = sizeof lValue;
    if (0 != ::getsockopt(mSocket, SOL_SOCKET, SO_RCVBUF, &lValue, &lSize)) { return 0; }
    // The system doubles what it was asked for, to have room for its own data.
    return static_cast<UInt>(lValue) / 2;
}

UInt Socket::RoundTrip() const {
#ifdef TCP_INFO
    tcp_info lInfo{};
    socklen_t lSize = sizeof lInfo;
    if (0 != ::getsockopt(mSocket, IPPROTO_TCP, TCP_INFO, &lInfo, &lSize)) { return 0; }
    return lInfo.tcpi_rtt;
#else
    return 0;
#endif
}

SInt Socket::NonBlockingMode(bool aEnable) {
    const int lResult = ::fcntl(mSocket, F_SETFL, aEnable ? O_NONBLOCK : 0);
    if (0 != lResult) {
        const int lError = errno;
        // Applications know this text, prefix included.
        PLAYER_THROW_SYSTEM(NetworkErr, ErrorCode::kOptionFailed, lError,
                            "Socket::KeepAlive(): Failed %s non-blocking mode [%u]", EnableOrDisable(aEnable),
                            static_cast<UInt>(lError));
    }
    return lResult;
}

}  // namespace Player
