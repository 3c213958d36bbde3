#pragma once

#include <vector>

#include "Packets/RTP.hpp"
#include "Player/Consumer.hpp"
#include "Player/Properties.hpp"
#include "support/Target.hpp"

namespace Fuzz {

/// An RTP packet in the order of its arrival. Its play time is its place in that order, so that a sample tells where it
/// comes from.
struct Arrival {
    Bytes mPayload;
    bool mMarker = false;
    std::uint16_t mSeq = 0;
    std::uint32_t mTimestamp = 0;
};

/// Packets with at least a byte of payload, as the reception lets through. Each is: flags (marker; a gap before it; a
/// number of its own; a new timestamp), then what the flags ask for, then the payload, preceded by its size.
std::vector<Arrival> ReadArrivals(Input& aInput);

using PacketPtr = Player::SharedPtr<Player::Packet, Player::SharedObject>;

/// A depacketizer and what came out of it.
class Chain {
public:
    /// Of a tolerant one, if asked for.
    Chain(const char* aFormat, const std::string& aFmtParams, bool aIsTolerant = false);

    /// The number of samples that the packet brought. What the chain answers must be what the consumer answered.
    std::size_t Push(const Arrival& aArrival);
    void EndStream();
    void Flush();

    const std::vector<PacketPtr>& Samples() const { return mEnd->mSamples; }
    /// Of the sample.
    static Bytes BytesOf(const PacketPtr& aSample);
    /// Which packet gave it its play time.
    static std::size_t PlaceOf(const PacketPtr& aSample);

private:
    class Recorder : public Player::Consumer {
    public:
        void Param(const Player::String& aKey, const Player::String& aVal) override;
        bool Handle(const PacketPtr& aPacket, Player::Time aLatest) override;
        void Flush() override { ++mFlushes; }

        std::vector<PacketPtr> mSamples;
        unsigned mNotices = 0;
        unsigned mFlushes = 0;
    };

    Player::SharedPtr<Recorder, Player::SharedObject> mEnd;
    Player::SharedPtr<Player::Processor, Player::SharedObject> mProcessor;
    std::size_t mPushed = 0;
};

/// The sizes of all payloads together.
std::size_t TotalSize(const std::vector<Arrival>& aArrivals);
bool Contains(const Bytes& aWhole, const std::uint8_t* aPart, std::size_t aSize);

}  // namespace Fuzz
