#pragma once

#include "RTP/Transports/TrackTransport.hpp"
#include "Sockets/DatagramBatch.hpp"
#include "Sockets/UDP.hpp"

namespace Player::RTP::Transports {

/// A track over its own pair of UDP sockets: RTP on an even port, RTCP on the one above.
struct UDPTrack : Track {
    /// Binds the first free pair within [aPortsBeg, aPortsEnd), both even, beginning at a random one.
    /// An empty local IP stands for every address. Throws `RTPErr` `kNoPorts` when no pair is free.
    UDPTrack(UInt aPortsBeg, UInt aPortsEnd, const String& aLocalIP, SInt aFamily = AF_INET);

    /// Family of the addresses.
    SInt mFamily;
    Sockets::UDP mRTPSocket;
    Sockets::UDP mRTCPSocket;
    unsigned short mLocalRTPPort = 0;
    String mRemoteIP;
    /// One or two ports joined by a hyphen.
    String mRemotePorts;
    /// Whether the last read of the socket failed, which is reported when it begins.
    bool mRTPFails = false;
    bool mRTCPFails = false;

private:
    bool TryPort(UInt aPort, const String& aLocalIP);
};

/// Receives every track over its own pair of UDP sockets, from whatever address the packets come, and
/// answers each RTCP packet with a receiver report to its sender.
class OverUDP : public TrackTransport<UDPTrack> {
public:
    using Track = UDPTrack;

    /// Local ports to choose from: even bounds, the second one excluded. The local IP may be empty. The family is that
    /// of the server's address.
    OverUDP(unsigned int aPortsBegin, unsigned int aPortsEnd, const String& aLocalIP, SInt aFamily = AF_INET);

    /// Throws `RTPErr` `kNoPorts` when no port pair is free.
    TrackIdx AddTrack() override;
    String GetTrackLocalPorts(TrackIdx aIdx) const override;
    void SetTrackRemoteIP(TrackIdx aIdx, const String& aIP) override;
    void SetTrackRemotePorts(TrackIdx aIdx, const String& aPorts) override;
    void Preflight() override;
    SInt TrackDescriptor(TrackIdx aIdx) const override { return At(aIdx).mRTPSocket.Descriptor(); }
    UInt SetTrackReceiveBuffer(TrackIdx aIdx, UInt aBytes) override;
    /// From the first call on the system is asked to keep what it learns.
    bool IsRefused() override;

protected:
    bool TakeIn(UDPTrack& aTrack) override;

private:
    static void PreflightTrack(UDPTrack& aTrack, Time aNow);
    bool DrainRTP(UDPTrack& aTrack);
    void DrainRTCP(UDPTrack& aTrack);

    UInt mPortsBegin;
    UInt mPortsEnd;
    String mLocalIP;
    SInt mFamily;
    /// Used by one track at a time.
    Sockets::DatagramBatch mBatch;
};

}  // namespace Player::RTP::Transports
