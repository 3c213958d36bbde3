#pragma once

#include <chrono>
#include <memory>
#include <string>

#include "Player/Types.hpp"

namespace Player::Sockets {

/// The client's end of TLS over a connected, non-blocking socket, which it does not own. Nothing is read from a server
/// whose certificate is not that of the host, or is not vouched for by an authority. Built without GnuTLS, none can be
/// made. Results and failures are those of `Socket`; a time-out bounds a call as a whole, records that trickle in
/// included.
class TLS {
public:
    /// `aHost` is the name, or the address, that the certificate has to bear. `aAuthorities` is a file of their
    /// certificates (PEM); empty for the system's. Throws `NetworkErr` `kTLSFailed`.
    TLS(SInt aSocket, const std::string& aHost, const std::string& aAuthorities);
    TLS(const TLS&) = delete;
    TLS& operator=(const TLS&) = delete;
    ~TLS();

    /// Throws `NetworkErr` `kTLSFailed`, with what is wrong with the certificate if that is it, or `kConnectFailed`
    /// when the time is over.
    void Handshake(UInt aTimeoutSec);
    /// An end that the server did not announce is an end as well: messages carry their own length.
    SInt Read(void* aData, UInt aSize, UInt aTimeoutSec);
    /// As much as has come and fits.
    SInt ReadAvailable(void* aData, UInt aSize);
    SInt Write(const void* aData, UInt aSize, UInt aTimeoutSec);
    bool HasClosed();

private:
    struct Session;
    using Deadline = std::chrono::steady_clock::time_point;

    /// What is decrypted now: the count, `kClosed` or `kNoData`.
    SInt Receive(void* aData, UInt aSize);
    SInt TakeAhead(void* aData, UInt aSize);
    /// Until the socket is ready for what the last call lacked. False when the time is over.
    bool Await(Deadline aDeadline) const;
    [[noreturn]] void ThrowRefused(int aResult) const;

    SInt mSocket;
    std::string mHost;
    std::unique_ptr<Session> mSession;
    /// Decrypted to see whether the connection has ended, and not read yet.
    std::string mAhead;
    bool mHasEnded = false;
};

}  // namespace Player::Sockets
