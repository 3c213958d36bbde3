#pragma once

#include <atomic>
#include <string>
#include <utility>

#include "support/UdpSocket.hpp"

namespace TestSupport {

/// The server's pair of UDP ports of one track: RTP on an even port that the system chose, RTCP on the next.
class UdpPeer {
public:
    UdpPeer();
    UdpPeer(UdpPeer&& aOther) noexcept : mSockets(std::move(aOther.mSockets)), mClientPort(aOther.mClientPort.load()) {}
    UdpPeer& operator=(UdpPeer&&) = delete;
    ~UdpPeer() = default;

    unsigned RtpPort() const { return mSockets.first.Port(); }
    /// "50000-50001"
    std::string Ports() const;

    /// Where to send: RTP to this port of the loopback, RTCP to the next.
    void SetClientPort(unsigned aPort) { mClientPort = aPort; }
    void SendRtp(const Bytes& aDatagram) const { mSockets.first.Send(aDatagram, mClientPort); }
    void SendRtcp(const Bytes& aDatagram) const { mSockets.second.Send(aDatagram, mClientPort + 1); }

    /// The next datagram. Throws when none comes.
    Bytes ReceiveRtp() const { return mSockets.first.Receive().first; }
    Bytes ReceiveRtcp() const { return mSockets.second.Receive().first; }
    /// Whether a datagram is there now.
    bool HasRtp() const { return mSockets.first.Has(); }
    bool HasRtcp() const { return mSockets.second.Has(); }

private:
    std::pair<UdpSocket, UdpSocket> mSockets;
    std::atomic<unsigned> mClientPort{0};
};

}  // namespace TestSupport
