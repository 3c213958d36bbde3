#pragma once

#include <atomic>
#include <string>

#include "support/Bytes.hpp"

namespace TestSupport {

/// The server's pair of UDP ports of one track: RTP on an even port that the system chose, RTCP on the next.
/// On the loopback a datagram is in the receiver's queue when the sending call returns.
class UdpPeer {
public:
    UdpPeer();
    UdpPeer(UdpPeer&& aOther) noexcept;
    UdpPeer& operator=(UdpPeer&&) = delete;
    ~UdpPeer();

    unsigned RtpPort() const { return mPort; }
    /// "50000-50001"
    std::string Ports() const;

    /// Where to send: RTP to this port of the loopback, RTCP to the next.
    void SetClientPort(unsigned aPort) { mClientPort = aPort; }
    void SendRtp(const Bytes& aDatagram) const { Send(mRtp, mClientPort, aDatagram); }
    void SendRtcp(const Bytes& aDatagram) const { Send(mRtcp, mClientPort + 1, aDatagram); }

    /// The next datagram, within ten seconds; empty when none came.
    Bytes ReceiveRtp() const { return Receive(mRtp); }
    Bytes ReceiveRtcp() const { return Receive(mRtcp); }
    /// Whether a datagram is there now.
    bool HasRtp() const { return Has(mRtp); }
    bool HasRtcp() const { return Has(mRtcp); }

private:
    static void Send(int aSocket, unsigned aPort, const Bytes& aDatagram);
    static Bytes Receive(int aSocket);
    static bool Has(int aSocket);

    int mRtp = -1;
    int mRtcp = -1;
    unsigned mPort = 0;
    std::atomic<unsigned> mClientPort{0};
};

}  // namespace TestSupport
