#pragma once

#include "Packets/RTP.hpp"
#include "Player/Processor.hpp"
#include "Player/Properties.hpp"

namespace Player::Processors::RTP {

/// What the depacketizers share: the next link of the chain, to which notices and flushes go on.
/// Nothing may be delivered before `Attach`.
class Depacketizer : public Processor {
public:
    /// What a sender who never ends an access unit can make a depacketizer hold, in bytes. A unit that
    /// grows beyond it is dropped whole.
    static constexpr UInt kMaxPendingBytes = 32U << 20;

    void Attach(const SharedPtr<Processor, SharedObject>& aNext) override { mNext = aNext; }
    void Param(const String& aKey, const String& aVal) override { Next().Param(aKey, aVal); }
    void Flush() override { Next().Flush(); }

protected:
    /// Whether a track's description announces RTP with this payload format.
    static bool IsFormat(const Properties& aFormat, const char* aName) {
        return aFormat.Is("Transport", "RTP/AVP") && aFormat.Is("Format", aName);
    }
    /// A new `T` for a track of this payload format; the consumer's side learns that samples come out of
    /// the chain. Null, and the description stays as it is, for any other track.
    template <typename T>
    static SharedPtr<Processor, SharedObject> CreateFor(Properties& aFormat, const char* aName) {
        if (!IsFormat(aFormat, aName)) { return {}; }
        SetDeliversSamples(aFormat);
        return SharedPtr<Processor, SharedObject>(new T());
    }
    static void SetDeliversSamples(Properties& aFormat) { aFormat.Insert("Transport", "Sample"); }

    /// All that a transport delivers is RTP packets.
    static const Packets::RTP& AsRTP(const Packet& aPacket) { return static_cast<const Packets::RTP&>(aPacket); }

    Processor& Next() const { return mNext.Ref(); }

private:
    SharedPtr<Processor, SharedObject> mNext;
};

}  // namespace Player::Processors::RTP
