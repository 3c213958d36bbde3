#pragma once

#include "Player/Types.hpp"
#include "Sockets/Address.hpp"

namespace Player {

/// Owns a descriptor and closes it. Failures throw `NetworkErr` with the number of the operation; the
/// socket stays open then. Sending never raises SIGPIPE; an interrupted wait goes on with the time left.
/// Sizes of 2^31 and above are a mistake of the caller (an assertion).
class Socket {
public:
    /// Results of `Read` that are no byte counts.
    static constexpr SInt kClosed = 0;
    static constexpr SInt kNoData = -1;
    static constexpr SInt kTimeOut = -3;

    /// Adopts the descriptor.
    explicit Socket(UInt aSocket) : mSocket(static_cast<SInt>(aSocket)) {}
    Socket(const Socket&) = delete;
    Socket& operator=(const Socket&) = delete;
    virtual ~Socket();

    /// Blocking. Throws `kConnectFailed`.
    SInt Connect(const Address& aAddr);
    /// For a socket in non-blocking mode; waits at most that many whole seconds. Throws `kConnectFailed`.
    SInt Connect(const Address& aAddr, UInt aTimeoutSec);
    /// Throws `kBindFailed`.
    SInt Bind(const Address& aAddr);
    /// One `recv`: the byte count, `kClosed` or `kNoData`. Throws `kReadFailed`.
    SInt Read(void* aData, UInt aSize);
    /// Waits at most that many whole seconds first: `kTimeOut` when nothing came. Throws `kReadFailed`.
    SInt Read(void* aData, UInt aSize, UInt aTimeoutSec);
    /// `Read` that never blocks, whatever the mode of the socket. Throws `kReadFailed`.
    SInt ReadAvailable(void* aData, UInt aSize);
    /// One `send`: the byte count, perhaps less than `aSize`, or `kNoData` when the socket takes none now.
    /// Throws `kWriteFailed`.
    SInt Write(const void* aData, UInt aSize);
    /// Waits at most that many whole seconds for room first: `kTimeOut` when there was none.
    /// Throws `kWriteFailed`.
    SInt Write(const void* aData, UInt aSize, UInt aTimeoutSec);
    /// Whether the peer has ended the connection and nothing is left to read.
    bool HasClosed() const;
    /// Throws `kOptionFailed`, like the next two.
    SInt KeepAlive(bool aEnable);
    SInt RecvBufferSize(UInt aBytes);
    /// What the system gives, 0 when it is unknown.
    UInt RecvBufferSize() const;
    /// What the system measures on a TCP connection, in microseconds; 0 where it does not say.
    UInt RoundTrip() const;
    /// Sets the descriptor's status flags to `O_NONBLOCK` alone, or to none.
    SInt NonBlockingMode(bool aEnable);
    /// For waiting; -1 when there is none.
    SInt Descriptor() const { return mSocket; }

protected:
    /// Closes the descriptor; every operation fails until another is adopted.
    void Close();
    void Adopt(UInt aSocket) { mSocket = static_cast<SInt>(aSocket); }

private:
    SInt Receive(void* aData, UInt aSize, int aFlags);
    SInt Send(const void* aData, UInt aSize, int aFlags);

    SInt mSocket;
};

}  // namespace Player
