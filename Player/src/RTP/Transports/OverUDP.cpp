#include "RTP/Transports/OverUDP.hpp"

#include <cstdlib>
#include <vector>

#include "Player/Exception.hpp"
#include "Player/String.hpp"
#include "Throw.hpp"

namespace Player::RTP::Transports {

namespace {

constexpr UInt kRTPReceiveBuffer = 300000;
constexpr UInt kRTCPReceiveBuffer = 6000;
constexpr UInt kMaxDatagram = 1500;

// More than the receive buffers hold: a drain takes all that waited when it began, and yet it ends
// when a sender is faster than we are.
constexpr UInt kMaxBatches = 128;
constexpr UInt kMaxRTCPPackets = 128;

/// An empty local IP stands for every address.
Address LocalAddress(const String& aLocalIP, UInt aPort, SInt aFamily) {
    if (aLocalIP.empty()) { return Address(aFamily, aPort); }
    return Address(aLocalIP.c_str(), StringWithFormat("%u", aPort).c_str(), aFamily);
}

void BindSocket(Sockets::UDP& aSocket, UInt aReceiveBuffer, const Address& aAddress) {
    aSocket.RecvBufferSize(aReceiveBuffer);
    aSocket.Bind(aAddress);
    aSocket.NonBlockingMode(true);
}

/// A datagram that goes out opens the way for those that come in through a NAT.
void PunchHole(Sockets::UDP& aSocket, SInt aFamily, const String& aIP, const String& aPort) {
    constexpr Byte kNothing[8] = {};
    Report(__FILE__, __LINE__, Severity::Info, "Punching a hole to IP: %s, Port: %s", aIP.c_str(), aPort.c_str());
    try {
        aSocket.WriteTo(kNothing, sizeof(kNothing), Address(aIP.c_str(), aPort.c_str(), aFamily));
    } catch (const NetworkErr& lError) {
        // Without a NAT media will come all the same.
        Report(__FILE__, __LINE__, Severity::Warning, "OverUDP::PunchHole(): %s", lError.Message());
    }
}

void SendReport(Sockets::UDP& aSocket, const Byte* aData, UInt aSize, const Address& aTo) {
    try {
        aSocket.WriteTo(aData, aSize, aTo);
    } catch (const NetworkErr& lError) {
        // The server does without this report; more will follow.
        Report(__FILE__, __LINE__, Severity::Warning, "OverUDP::SendReport(): %s", lError.Message());
    }
}

/// A socket that fails at each look is reported once.
void ReportOnce(bool& aFails, unsigned aPort, const NetworkErr& aError) {
    if (!aFails) {
        Report(__FILE__, __LINE__, Severity::Warning, "OverUDP::FillTrack(): Nothing can be read from port %u: %s",
               aPort, aError.Message());
    }
    aFails = true;
}

}  // namespace

UDPTrack::UDPTrack(UInt aPortsBeg, UInt aPortsEnd, const String& aLocalIP, SInt aFamily)
    : mFamily(aFamily), mRTPSocket(aFamily), mRTCPSocket(aFamily) {
    PLAYER_ASSERT((0 == aPortsBeg % 2) && 0 == (aPortsEnd % 2) && aPortsEnd > aPortsBeg);
    const UInt lRange = aPortsEnd - aPortsBeg;
    const UInt lStart = static_cast<UInt>(std::rand()) * 2 % lRange;
    for (UInt lOffset = 0; lOffset < lRange; lOffset += 2) {
        if (TryPort((lStart + lOffset) % lRange + aPortsBeg, aLocalIP)) { return; }
    }
    PLAYER_THROW(RTPErr, ErrorCode::kNoPorts, "OverUDP::Track(): %s", "Failed to create UDP port pair");
}

bool UDPTrack::TryPort(UInt aPort, const String& aLocalIP) {
    try {
        BindSocket(mRTPSocket, kRTPReceiveBuffer, LocalAddress(aLocalIP, aPort, mFamily));
        BindSocket(mRTCPSocket, kRTCPReceiveBuffer, LocalAddress(aLocalIP, aPort + 1, mFamily));
    } catch (...) {
        // The RTCP socket is as good as new: it comes last, and only a successful bind would mark it.
        mRTPSocket.Reset();
        return false;
    }
    mLocalRTPPort = static_cast<unsigned short>(aPort);
    return true;
}

OverUDP::OverUDP(unsigned int aPortsBegin, unsigned int aPortsEnd, const String& aLocalIP, SInt aFamily)
    : mPortsBegin(aPortsBegin), mPortsEnd(aPortsEnd), mLocalIP(aLocalIP), mFamily(aFamily) {}

TrackIdx OverUDP::AddTrack() {
    return Add(ScopedPtr<UDPTrack>(new UDPTrack(mPortsBegin, mPortsEnd, mLocalIP, mFamily)));
}

String OverUDP::GetTrackLocalPorts(TrackIdx aIdx) const {
    const UInt lPort = At(aIdx).mLocalRTPPort;
    return StringWithFormat("%u-%u", lPort, lPort + 1);
}

void OverUDP::SetTrackRemoteIP(TrackIdx aIdx, const String& aIP) {
    At(aIdx).mRemoteIP = aIP;
}

void OverUDP::SetTrackRemotePorts(TrackIdx aIdx, const String& aPorts) {
    At(aIdx).mRemotePorts = aPorts;
}

void OverUDP::Preflight() {
    const Time lNow = Time::Now();
    for (const auto& lTrack : All()) {
        PreflightTrack(*lTrack, lNow);
    }
}

void OverUDP::PreflightTrack(UDPTrack& aTrack, Time aNow) {
    aTrack.mStack.Preflight(aNow);
    aTrack.mEndNotified = false;
    if (aTrack.mRemoteIP.empty() || aTrack.mRemotePorts.empty()) { return; }

    std::vector<String> lPorts;
    Split(aTrack.mRemotePorts, '-', lPorts);
    PLAYER_ASSERT(2 >= lPorts.size());
    if (!lPorts.empty()) { PunchHole(aTrack.mRTPSocket, aTrack.mFamily, aTrack.mRemoteIP, lPorts[0]); }
    if (1 < lPorts.size()) { PunchHole(aTrack.mRTCPSocket, aTrack.mFamily, aTrack.mRemoteIP, lPorts[1]); }
}

UInt OverUDP::SetTrackReceiveBuffer(TrackIdx aIdx, UInt aBytes) {
    At(aIdx).mRTPSocket.RecvBufferSize(aBytes);
    return At(aIdx).mRTPSocket.RecvBufferSize();
}

bool OverUDP::IsRefused() {
    bool lIsRefused = false;
    for (const auto& lTrack : Held()) {
        lIsRefused = lTrack->mRTPSocket.TakeRefusal() || lIsRefused;
    }
    return lIsRefused;
}

bool OverUDP::TakeIn(UDPTrack& aTrack) {
    const bool lHasAccepted = DrainRTP(aTrack);
    DrainRTCP(aTrack);
    if (!lHasAccepted) { aTrack.NotifyEnd(Time::Now()); }
    return lHasAccepted;
}

bool OverUDP::DrainRTP(UDPTrack& aTrack) {
    bool lHasAccepted = false;
    try {
        // A batch that is not full has emptied the socket.
        bool lIsFull = true;
        for (UInt lBatch = 0; lIsFull && lBatch < kMaxBatches && aTrack.WantsMore(Time::Now()); ++lBatch) {
            lIsFull = Sockets::DatagramBatch::kSlots == aTrack.mRTPSocket.ReadMany(mBatch);
            aTrack.mRTPFails = false;
            for (UInt i = 0; i < mBatch.Count(); ++i) {
                const bool lTaken = aTrack.mStack.HandleRTP(mBatch.Data(i), mBatch.Size(i), Time::Now());
                lHasAccepted = lTaken || lHasAccepted;
            }
        }
    } catch (const NetworkErr& lError) {
        // The other tracks go on, and so does this one's RTCP.
        ReportOnce(aTrack.mRTPFails, aTrack.mLocalRTPPort, lError);
    }
    return lHasAccepted;
}

void OverUDP::DrainRTCP(UDPTrack& aTrack) {
    Byte lData[kMaxDatagram];
    Address lFrom;
    try {
        for (UInt lPacket = 0; lPacket < kMaxRTCPPackets; ++lPacket) {
            const SInt lSize = aTrack.mRTCPSocket.ReadFrom(lData, kMaxDatagram, lFrom);
            aTrack.mRTCPFails = false;
            if (lSize < 0) { return; }
            // The report may overwrite the packet: it is assembled when that has been read.
            const UInt lReport = AnswerRTCP(aTrack, lData, static_cast<UInt>(lSize), lData, kMaxDatagram);
            if (0 != lReport) { SendReport(aTrack.mRTCPSocket, lData, lReport, lFrom); }
        }
    } catch (const NetworkErr& lError) {
        // Media go on without reports.
        ReportOnce(aTrack.mRTCPFails, aTrack.mLocalRTPPort + 1U, lError);
    }
}

}  // namespace Player::RTP::Transports
