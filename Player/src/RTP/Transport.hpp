#pragma once

#include <cstddef>

#include "Player/Processor.hpp"
#include "Player/Ptr.hpp"
#include "Player/Types.hpp"
#include "RTP/Stack.hpp"

namespace Player::RTP {

/// Carries the RTP and RTCP of all tracks of a session, drives each track's stack and hands its packets
/// to the track's processor. One thread at a time.
/// A track index out of range, and an operation on all tracks where there are none, are assertions.
class Transport {
public:
    Transport() = default;
    Transport(const Transport&) = delete;
    Transport& operator=(const Transport&) = delete;
    virtual ~Transport() = default;

    virtual TrackIdx AddTrack() = 0;
    /// Drops what the track holds, here and down its chain, and starts its reception anew.
    virtual void FlushTrack(TrackIdx aIdx) = 0;
    virtual Stack& ModifyTrackRTPStack(TrackIdx aIdx) = 0;
    virtual const Stack& GetTrackRTPStack(TrackIdx aIdx) const = 0;

    virtual void SetTrackLocalIP(TrackIdx aIdx, const String& aIP);
    virtual void SetTrackLocalPorts(TrackIdx aIdx, const String& aPorts);
    virtual String GetTrackLocalIP(TrackIdx aIdx) const;
    /// The port pair as a Transport header names it: "49152-49153".
    virtual String GetTrackLocalPorts(TrackIdx aIdx) const;
    virtual void SetTrackRemoteIP(TrackIdx aIdx, const String& aIP);
    /// One or two ports joined by a hyphen.
    virtual void SetTrackRemotePorts(TrackIdx aIdx, const String& aPorts);
    virtual String GetTrackRemoteIP(TrackIdx aIdx) const;
    virtual String GetTrackRemotePorts(TrackIdx aIdx) const;
    /// The channel pair as a Transport header names it: "0-1".
    virtual void SetInterLeavedChannelIdentifier(TrackIdx aIdx, const String& aChannels);
    virtual int GetChannelIndexByChannelIdentifier(int aChannel) const;

    virtual void AttachTrack(TrackIdx aIdx, const SharedPtr<Processor, SharedObject>& aProcessor) = 0;
    /// `Processor::Param` of the track's chain.
    virtual void NotifyTrack(TrackIdx aIdx, const String& aKey, const String& aVal) = 0;

    /// Takes in what has arrived. True when the track got media.
    virtual bool FillTrack(TrackIdx aIdx) = 0;
    /// Takes in what has arrived. True also when the track still has media queued.
    virtual bool FillOrHaveTrack(TrackIdx aIdx) = 0;
    /// Hands queued packets to the track's chain until that refuses more. True when any went.
    virtual bool FetchTrack(TrackIdx aIdx) = 0;
    /// `FillOrHaveTrack`, then `FetchTrack`.
    virtual bool ProduceTrack(TrackIdx aIdx) = 0;

    // The same for every track in order; results are ORed.
    virtual void Notify(const String& aKey, const String& aVal) = 0;
    /// Before media is expected: opens the way for it.
    virtual void Preflight() = 0;
    virtual void Flush() = 0;
    virtual bool Fill() = 0;
    virtual bool FillOrHave() = 0;
    virtual bool Fetch() = 0;
    virtual bool Produce() = 0;

    /// What becomes readable when a packet of the track arrives; -1 where the track has no such thing of its own.
    virtual SInt TrackDescriptor(TrackIdx aIdx) const;
    /// Asks for a receive buffer of that many bytes; returns what the track gets, 0 where it has none of its own.
    virtual UInt SetTrackReceiveBuffer(TrackIdx aIdx, UInt aBytes);
    /// Whether the sender's system has refused a datagram: its port is closed.
    virtual bool IsRefused();

    /// Bytes of packets that the tracks may hold in order, together. For a transport without tracks.
    virtual void LimitQueues(std::size_t aBytes) = 0;
};

}  // namespace Player::RTP
