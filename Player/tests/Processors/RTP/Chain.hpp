#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <deque>
#include <string>
#include <utility>
#include <vector>

#include "Packets/RTP.hpp"
#include "Player/Consumer.hpp"
#include "Player/Properties.hpp"
#include "Processors/RTP/Factories.hpp"

/// A depacketizer between a hand that writes packets and a consumer that notes what reaches it.
namespace Player::Test {

using Bytes = std::vector<Byte>;
using PacketPtr = SharedPtr<Packet, SharedObject>;
using ProcessorPtr = SharedPtr<Processor, SharedObject>;

inline Bytes operator+(Bytes aA, const Bytes& aB) {
    aA.insert(aA.end(), aB.begin(), aB.end());
    return aA;
}

/// `aCount` bytes that count up from `aFirst`.
inline Bytes Counted(UInt aCount, Byte aFirst = 0) {
    Bytes lBytes;
    for (UInt lIdx = 0; lIdx < aCount; ++lIdx) {
        lBytes.push_back(static_cast<Byte>(aFirst + lIdx));
    }
    return lBytes;
}

/// The packet being written: sequence number 1, timestamp 9000 and no marker unless told otherwise. Its
/// play time is its timestamp.
class RTPPacket {
public:
    explicit RTPPacket(Bytes aPayload) : mPayload(std::move(aPayload)) {}

    RTPPacket& Seq(unsigned short aSeq) { return mSeq = aSeq, *this; }
    RTPPacket& At(UInt aTimestamp) { return mTimestamp = aTimestamp, *this; }
    RTPPacket& Marker() { return mMarker = true, *this; }
    RTPPacket& Padding(Byte aPadding) { return mPadding = aPadding, *this; }

    /// The datagram lies in a block of its exact size.
    PacketPtr Make() const {
        Bytes lData = {0x80, static_cast<Byte>(mMarker ? 0xE0 : 0x60)};
        Put(lData, mSeq, 2);
        Put(lData, mTimestamp, 4);
        Put(lData, 0x12345678, 4);
        Packets::RTP::Lengths lLengths;
        lLengths.mHeader = 12;
        lLengths.mPadding = mPadding;
        lData = lData + mPayload + Bytes(mPadding, 0xEE);
        PacketPtr lPacket(new Packets::RTP(lData.data(), static_cast<UInt>(lData.size()), lLengths, mSeq, mTimestamp));
        lPacket->SetPlayTime(Time(mTimestamp));
        return lPacket;
    }

private:
    static void Put(Bytes& aOut, UInt aValue, UInt aSize) {
        while (0 != aSize--) {
            aOut.push_back(static_cast<Byte>(aValue >> 8 * aSize));
        }
    }

    Bytes mPayload;
    unsigned short mSeq = 1;
    UInt mTimestamp = 9000;
    bool mMarker = false;
    Byte mPadding = 0;
};

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

    bool Push(const RTPPacket& aPacket, Time aLatest = Time(0)) { return mProcessor->Handle(aPacket.Make(), aLatest); }
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

}  // namespace Player::Test
