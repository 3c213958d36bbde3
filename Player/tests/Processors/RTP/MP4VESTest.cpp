#include "Processors/RTP/MP4VES.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Packets/MP4VSample.hpp"
#include "Processors/RTP/Chain.hpp"

namespace Player::Testing {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const Bytes kStart = {0x00, 0x00, 0x01, 0xB6};
const Bytes kMore = {0x10, 0x11};
const Bytes kEnd = {0x20};

class MP4VESTest : public testing::Test {
protected:
    Chain mChain{"MP4V-ES"};
};

TEST_F(MP4VESTest, AFrameIsGatheredUpToTheMarker) {
    EXPECT_TRUE(mChain.Push(PacketWith(kStart).Seq(100)));
    EXPECT_TRUE(mChain.Push(PacketWith(kMore).Seq(101)));
    EXPECT_EQ(0U, mChain.Delivered());
    EXPECT_TRUE(mChain.Push(PacketWith(kEnd).Seq(102).Timestamp(700).Marker(), Time(800)));
    EXPECT_THAT(mChain.Samples(), ElementsAre(kStart + kMore + kEnd));
    EXPECT_NE(nullptr, mChain.Sample<Packets::MP4VSample>(0));
    EXPECT_EQ(Time(700), mChain.End().mSamples[0]->PlayTime()) << "the last packet's";
    EXPECT_EQ(Time(800), mChain.End().mLatest[0]);
}

TEST_F(MP4VESTest, ALostPacketCostsTheFrame) {
    mChain.Push(PacketWith(kStart).Seq(100));
    EXPECT_TRUE(mChain.Push(PacketWith(kEnd).Seq(102).Marker()));
    EXPECT_THAT(mChain.Samples(), IsEmpty());
}

TEST_F(MP4VESTest, APacketOutOfTurnIsDroppedButTheFrameGoesOn) {
    mChain.Push(PacketWith(kStart).Seq(100));
    mChain.Push(PacketWith(kMore).Seq(103));
    mChain.Push(PacketWith(kMore).Seq(100));
    mChain.Push(PacketWith(kMore).Seq(101));
    mChain.Push(PacketWith(kMore).Seq(101));
    mChain.Push(PacketWith(kEnd).Seq(102).Marker());
    EXPECT_THAT(mChain.Samples(), ElementsAre(kStart + kMore + kEnd));
}

TEST_F(MP4VESTest, WithoutAStartPacketsAreDropped) {
    EXPECT_TRUE(mChain.Push(PacketWith(kEnd).Seq(0).Marker()));
    EXPECT_TRUE(mChain.Push(PacketWith(kEnd).Seq(1).Marker()));
    EXPECT_THAT(mChain.Samples(), IsEmpty());
}

TEST_F(MP4VESTest, AfterAFrameWhatHasNoStartIsDropped) {
    mChain.Push(PacketWith(kStart).Seq(100));
    mChain.Push(PacketWith(kEnd).Seq(101).Marker());
    mChain.Push(PacketWith(kEnd).Seq(102).Marker());
    EXPECT_EQ(1U, mChain.Delivered());
}

TEST_F(MP4VESTest, AnotherStartReplacesWhatWasGathered) {
    mChain.Push(PacketWith(kStart).Seq(100));
    mChain.Push(PacketWith(kMore).Seq(101));
    mChain.Push(PacketWith(kStart + kMore).Seq(110));
    mChain.Push(PacketWith(kEnd).Seq(111).Marker());
    EXPECT_THAT(mChain.Samples(), ElementsAre(kStart + kMore + kEnd));
}

TEST_F(MP4VESTest, AMarkedStartIsAFrameAloneAndLeavesTheGatheredOne) {
    mChain.Push(PacketWith(kStart).Seq(100));
    mChain.Push(PacketWith(kStart + kEnd).Seq(200).Timestamp(5).Marker());
    EXPECT_THAT(mChain.Samples(), ElementsAre(kStart + kEnd));
    EXPECT_EQ(Time(5), mChain.End().mSamples[0]->PlayTime());
    mChain.Push(PacketWith(kMore).Seq(101).Marker());
    EXPECT_THAT(mChain.Samples(), ElementsAre(kStart + kEnd, kStart + kMore));
}

TEST_F(MP4VESTest, TheTimestampIsNotLookedAt) {
    mChain.Push(PacketWith(kStart).Seq(100).Timestamp(1));
    mChain.Push(PacketWith(kEnd).Seq(101).Timestamp(2).Marker());
    EXPECT_THAT(mChain.Samples(), ElementsAre(kStart + kEnd));
}

TEST_F(MP4VESTest, OnlyAStartCodeStartsAFrame) {
    const struct {
        Bytes mPayload;
        bool mIsStart;
    } kTable[] = {
        {{0x00, 0x00, 0x01}, true},
        {{0x00, 0x00, 0x01, 0xB3}, true},
        {{0x00, 0x00}, false},
        {{0x00}, false},
        {{0x00, 0x00, 0x02}, false},
        {{0x00, 0x01, 0x01}, false},
        {{0x01, 0x00, 0x01}, false},
        {{0x00, 0x00, 0x00, 0x01}, false},
        {{}, false},
    };
    for (const auto& lRow : kTable) {
        Chain lChain("MP4V-ES");
        lChain.Push(PacketWith(lRow.mPayload).Marker());
        EXPECT_EQ(lRow.mIsStart ? 1U : 0U, lChain.Delivered()) << testing::PrintToString(lRow.mPayload);
    }
}

TEST_F(MP4VESTest, AFrameDoesNotGoOnAcrossTheWrapOfTheNumbers) {
    mChain.Push(PacketWith(kStart).Seq(65534));
    mChain.Push(PacketWith(kMore).Seq(65535));
    mChain.Push(PacketWith(kEnd).Seq(0).Marker());
    EXPECT_THAT(mChain.Samples(), IsEmpty());
    mChain.Push(PacketWith(kStart).Seq(65535));
    mChain.Push(PacketWith(kEnd).Seq(0).Marker());
    EXPECT_THAT(mChain.Samples(), IsEmpty());
    mChain.Push(PacketWith(kStart).Seq(65534));
    mChain.Push(PacketWith(kEnd).Seq(65535).Marker());
    EXPECT_THAT(mChain.Samples(), ElementsAre(kStart + kEnd)) << "up to the largest number it does";
}

TEST_F(MP4VESTest, AFrameLargerThanTheFirstRoomIsGathered) {
    const Bytes lPart = Counted(1400);
    Bytes lFrame = kStart;
    mChain.Push(PacketWith(kStart).Seq(10));
    for (unsigned short lSeq = 11; lSeq < 21; ++lSeq) {
        lFrame = lFrame + lPart;
        TestSupport::RtpPacket lPacket = PacketWith(lPart);
        mChain.Push(20 == lSeq ? lPacket.Seq(lSeq).Marker() : lPacket.Seq(lSeq));
    }
    EXPECT_THAT(mChain.Samples(), ElementsAre(lFrame));
}

TEST_F(MP4VESTest, TheNextLinksAnswerIsTheAnswer) {
    mChain.End().mAnswers = {false, false};
    EXPECT_FALSE(mChain.Push(PacketWith(kStart).Seq(1).Marker()));
    EXPECT_TRUE(mChain.Push(PacketWith(kStart).Seq(2)));
    EXPECT_FALSE(mChain.Push(PacketWith(kEnd).Seq(3).Marker()));
}

TEST_F(MP4VESTest, FlushForgetsTheFrame) {
    mChain.Push(PacketWith(kStart).Seq(100));
    mChain.Link().Flush();
    mChain.Push(PacketWith(kEnd).Seq(101).Marker());
    mChain.Push(PacketWith(kEnd).Seq(0).Marker());
    EXPECT_THAT(mChain.End().mEvents, ElementsAre("flush"));
}

TEST_F(MP4VESTest, NoticesGoOnAndDeliverNothing) {
    mChain.Push(PacketWith(kStart).Seq(100));
    mChain.Link().Param("EndOfStream", "Bye");
    EXPECT_THAT(mChain.End().mEvents, ElementsAre("EndOfStream=Bye"));
}

/// A frame of `aTotal` bytes, number 0 first, the last packet marked.
void PushFrame(Chain& aChain, UInt aTotal) {
    constexpr UInt kPart = 64000;
    aChain.Push(PacketWith(kStart).Seq(0));
    unsigned short lSeq = 1;
    UInt lLeft = aTotal - static_cast<UInt>(kStart.size());
    for (; lLeft > kPart; lLeft -= kPart) {
        aChain.Push(PacketWith(Bytes(kPart, 0x33)).Seq(lSeq++));
    }
    aChain.Push(PacketWith(Bytes(lLeft, 0x33)).Seq(lSeq).Marker());
}

TEST_F(MP4VESTest, AFrameOfTheLargestSizeIsDelivered) {
    PushFrame(mChain, Processors::RTP::MP4VES::kMaxPendingBytes);
    ASSERT_EQ(1U, mChain.Delivered());
    EXPECT_EQ(Processors::RTP::MP4VES::kMaxPendingBytes, mChain.End().mSamples[0]->Size());
}

TEST_F(MP4VESTest, AFrameBeyondTheLimitIsDroppedWhole) {
    PushFrame(mChain, Processors::RTP::MP4VES::kMaxPendingBytes + 1);
    EXPECT_EQ(0U, mChain.Delivered());
    PushFrame(mChain, 1000);
    EXPECT_EQ(1U, mChain.Delivered());
}

}  // namespace
}  // namespace Player::Testing
