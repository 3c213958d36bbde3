#pragma once

#include "RTP/Transports/InterleavedConnection.hpp"
#include "RTP/Transports/TrackTransport.hpp"

namespace Player::RTP::Transports {

/// A track over two channels of the RTSP connection.
struct RTSPTrack : Track {
    /// The channel of its RTP.
    int mChannelId = 0;
};

/// Receives all tracks interleaved in the RTSP connection: asks the session to read it, and takes the
/// frames that the session finds there. Packets are copied once, straight from the session's buffer.
class OverRTSP : public TrackTransport<RTSPTrack> {
public:
    using Track = RTSPTrack;

    /// The session stays the caller's and outlives the transport.
    explicit OverRTSP(InterleavedConnection* aSession) : mRTSPSession(aSession) {}

    TrackIdx AddTrack() override;
    /// Deletes all tracks.
    void Reset();

    /// Takes the first number of a channel pair such as "2-3".
    void SetInterLeavedChannelIdentifier(TrackIdx aIdx, const String& aChannels) override;
    /// The track whose RTP, else whose RTCP comes on the channel; -1 when there is none.
    int GetTrackByChannelId(int aChannel) const;

    /// Takes the payload of a frame, which stays the caller's. True when it was media that was accepted.
    bool HandlePacketData(unsigned char aChannel, unsigned char* aData, unsigned short aSize);
    /// Has the session read what has arrived. True when that delivered a frame.
    bool Receive();

    /// The shortest of the spans that the tracks hold in order.
    Time GetBufferSizeInTime() const;

    void Preflight() override;
    bool FillOrHave() override;
    bool Produce() override;

protected:
    bool TakeIn(RTSPTrack& aTrack) override;

private:
    void ReceiveForAny();
    void HandleRTCP(TrackIdx aIdx, const Byte* aData, UInt aSize);

    InterleavedConnection* mRTSPSession;
    /// Whether the last read failed, which is reported when it begins.
    bool mFails = false;
};

}  // namespace Player::RTP::Transports
