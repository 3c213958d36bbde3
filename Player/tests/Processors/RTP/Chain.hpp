#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <deque>
#include <string>
#include <vector>

#include "Packets/RTP.hpp"
#include "Player/Consumer.hpp"
#include "Player/Properties.hpp"
#include "Processors/RTP/Factories.hpp"
#include "support/Datagrams.hpp"

namespace Player::Testing {

using PacketPtr = SharedPtr<Player::Packet, SharedObject>;
using ProcessorPtr = SharedPtr<Processor, SharedObject>;

using TestSupport::operator+;

/// `aCount` bytes that count up from `aFirst`.
inline Bytes Counted(UInt aCount, Byte aFirst = 0) {
    Bytes lBytes;
    for (UInt lIdx = 0; lIdx < aCount; ++lIdx) {
        lBytes.push_back(static_cast<Byte>(aFirst + lIdx));
    }
    return lBytes;
}

/// A packet with this payload: sequence number 1, timestamp 9000 and no marker unless set otherwise.
inline TestSupport::RtpPacket PacketWith(const Bytes& aPayload) {
    return TestSupport::RtpPacket().Seq(1).Timestamp(9000).Ssrc(0x12345678).Payload(aPayload);
}

/// The packet as a depacketizer gets it. Its play time is its timestamp.
inline PacketPtr Made(const TestSupport::RtpPacket& aPacket) {
    const SharedPtr<Packets::RTP, SharedObject> lPacket = HandedOut(aPacket);
    lPacket->SetPlayTime(Time(lPacket->TimestampExt()));
    return lPacket;
}

/// The end of a chain. Notes samples, notices and flushes; answers true unless other answers are lined up.
class Recorder : public Consumer {
public:
    void Param(const String& aKey, const String& aVal) override { mEvents.push_back(aKey + "=" + aVal); }
    void Flush() override { mEvents.emplace_back("flush"); }
    bool Handle(const PacketPtr& aPacket, Time aLatest) override {
        mEvents.emplace_back("sample");
        mSamples.push_back(aPacket);
        mLatest.push_back(aLatest);
        if (mAnswers.empty()) { return true; }
        const bool lAnswer = mAnswers.front();
        mAnswers.pop_front();
        return lAnswer;
    }

    std::vector<std::string> mEvents;
    std::vector<PacketPtr> mSamples;
    std::vector<Time> mLatest;
    std::deque<bool> mAnswers;
};

inline Bytes BytesOf(const PacketPtr& aPacket) {
    return Bytes(aPacket->Begin(), aPacket->End());
}

/// A track of one format with its depacketizer.
class Chain {
public:
    using Factory = ProcessorPtr (*)(Properties&);

    explicit Chain(const char* aFormat, const char* aFmtParams = "",
                   Factory aCreate = Processors::RTP::CreateDepacketizer)
        : mEnd(new Recorder()) {
        mFormat.Insert("Transport", "RTP/AVP");
        mFormat.Insert("Format", aFormat);
        mFormat.Insert("FmtParams", aFmtParams);
        mProcessor = aCreate(mFormat);
        mProcessor->Attach(mEnd);
    }

    bool Push(const TestSupport::RtpPacket& aPacket, Time aLatest = Time(0)) {
        return mProcessor->Handle(Made(aPacket), aLatest);
    }
    Processor& Link() { return *mProcessor; }

    Recorder& End() { return *mEnd; }
    std::size_t Delivered() const { return mEnd->mSamples.size(); }
    /// The contents of all samples so far.
    std::vector<Bytes> Samples() const {
        std::vector<Bytes> lSamples;
        for (const PacketPtr& lSample : mEnd->mSamples) {
            lSamples.push_back(BytesOf(lSample));
        }
        return lSamples;
    }
    template <typename T>
    const T* Sample(std::size_t aIdx) const {
        return dynamic_cast<const T*>(mEnd->mSamples.at(aIdx).Ptr());
    }

private:
    Properties mFormat;
    SharedPtr<Recorder, SharedObject> mEnd;
    ProcessorPtr mProcessor;
};

}  // namespace Player::Testing
