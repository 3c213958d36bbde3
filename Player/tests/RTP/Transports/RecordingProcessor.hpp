#pragma once

#include <string>
#include <vector>

#include "Packets/RTP.hpp"
#include "Player/Processor.hpp"
#include "Player/String.hpp"

namespace Player::Testing {

/// Writes down what reaches the head of a chain: "Flush", "key=value", and for packets their index and the
/// latest play time in seconds, "7@2".
class RecordingProcessor : public Processor {
public:
    void Attach(const SharedPtr<Processor, SharedObject>& /*aNext*/) override {}
    void Param(const String& aKey, const String& aVal) override { mEvents.push_back(aKey + "=" + aVal); }
    bool Handle(const SharedPtr<Player::Packet, SharedObject>& aPacket, Time aLatest) override {
        const auto& lPacket = dynamic_cast<const Packets::RTP&>(*aPacket);
        mEvents.push_back(StringWithFormat("%u@%u", lPacket.SeqNumberExt(), static_cast<UInt>(aLatest.Scale(1, 1))));
        return 0 == mRefuseAfter || 0 != --mRefuseAfter;
    }
    void Flush() override { mEvents.emplace_back("Flush"); }

    /// What was written down since the last call.
    std::vector<std::string> Events() {
        std::vector<std::string> lEvents;
        lEvents.swap(mEvents);
        return lEvents;
    }

    /// Refuses more after that many packets; 0 for never.
    UInt mRefuseAfter = 0;

private:
    std::vector<std::string> mEvents;
};

}  // namespace Player::Testing
