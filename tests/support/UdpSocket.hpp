#pragma once

#include <utility>

#include "support/Bytes.hpp"

namespace TestSupport {

/// A UDP socket on the loopback address, as a server would have it. On the loopback a datagram is in the receiver's
/// queue when the sending call returns. Failures are thrown as `std::runtime_error`.
class UdpSocket {
public:
    /// Port 0 lets the system choose. Throws when the port is taken.
    explicit UdpSocket(unsigned aPort = 0);
    UdpSocket(UdpSocket&& aOther) noexcept : mDescriptor(std::exchange(aOther.mDescriptor, -1)) {}
    UdpSocket& operator=(UdpSocket&&) = delete;
    ~UdpSocket();

    unsigned Port() const { return BoundPort(mDescriptor); }

    void Send(const Bytes& aDatagram, unsigned aToPort) const;
    /// Waits for a datagram and tells the port it came from as well. Throws when none comes within ten seconds.
    std::pair<Bytes, unsigned> Receive() const;
    /// Whether a datagram is there now.
    bool Has() const;

    /// The port that a descriptor is bound to; 0 when it is no IPv4 socket, or not bound.
    static unsigned BoundPort(int aDescriptor);

private:
    int mDescriptor;
};

}  // namespace TestSupport
