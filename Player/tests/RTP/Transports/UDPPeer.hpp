#pragma once

#include <arpa/inet.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <stdexcept>
#include <string>
#include <utility>

#include "RTP/PacketBuilder.hpp"

namespace Player::Testing {

/// A UDP socket on the loopback address, as a server would have it.
class UDPPeer {
public:
    UDPPeer() : UDPPeer(0) {}
    /// Throws when the port is taken.
    explicit UDPPeer(UInt aPort) : mSocket(::socket(AF_INET, SOCK_DGRAM, 0)) {
        const sockaddr_in lAddress = LoopbackAddress(aPort);
        if (0 != ::bind(mSocket, reinterpret_cast<const sockaddr*>(&lAddress), sizeof(lAddress))) {
            ::close(mSocket);
            throw std::runtime_error("UDPPeer: bind");
        }
    }
    UDPPeer(const UDPPeer&) = delete;
    UDPPeer& operator=(const UDPPeer&) = delete;
    ~UDPPeer() { ::close(mSocket); }

    UInt Port() const { return BoundPort(mSocket); }

    void Send(const Bytes& aBytes, UInt aToPort) const {
        const sockaddr_in lAddress = LoopbackAddress(aToPort);
        const ssize_t lSent = ::sendto(mSocket, aBytes.data(), aBytes.size(), 0,
                                       reinterpret_cast<const sockaddr*>(&lAddress), sizeof(lAddress));
        if (lSent != static_cast<ssize_t>(aBytes.size())) { throw std::runtime_error("UDPPeer: sendto"); }
    }

    /// Waits for a datagram and tells the port it came from. Throws when none comes.
    std::pair<Bytes, UInt> Receive() const {
        pollfd lPoll{mSocket, POLLIN, 0};
        if (1 != ::poll(&lPoll, 1, 5000)) { throw std::runtime_error("UDPPeer: nothing came"); }
        Bytes lBytes(65536);
        sockaddr_in lFrom{};
        socklen_t lFromSize = sizeof(lFrom);
        const ssize_t lSize =
            ::recvfrom(mSocket, lBytes.data(), lBytes.size(), 0, reinterpret_cast<sockaddr*>(&lFrom), &lFromSize);
        lBytes.resize(static_cast<std::size_t>(lSize));
        return {lBytes, ntohs(lFrom.sin_port)};
    }

    /// The port that a descriptor is bound to; 0 when it is no socket, or not bound.
    static UInt BoundPort(int aDescriptor) {
        sockaddr_in lAddress{};
        socklen_t lSize = sizeof(lAddress);
        if (0 != ::getsockname(aDescriptor, reinterpret_cast<sockaddr*>(&lAddress), &lSize)) { return 0; }
        return AF_INET == lAddress.sin_family ? ntohs(lAddress.sin_port) : 0;
    }

private:
    static sockaddr_in LoopbackAddress(UInt aPort) {
        sockaddr_in lAddress{};
        lAddress.sin_family = AF_INET;
        lAddress.sin_port = htons(static_cast<unsigned short>(aPort));
        lAddress.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        return lAddress;
    }

    int mSocket;
};

}  // namespace Player::Testing
