#include "Processors/RTP/EarlyMarkers.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Packets/MP4VSample.hpp"
#include "Processors/RTP/Chain.hpp"

namespace Player::Testing {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const Bytes kStart = {0x00, 0x00, 0x01, 0xB0};
const Bytes kPicture = {0x00, 0x00, 0x01, 0xB6};
const Bytes kMore = {0x10, 0x11};
const Bytes kEnd = {0x20};

class EarlyMarkersTest : public testing::Test {
protected:
    Chain mChain{"MP4V-ES", "", Processors::RTP::CreateTolerantDepacketizer};
};

TEST_F(EarlyMarkersTest, AMarkedStartGoesOn) {
    EXPECT_TRUE(mChain.Push(PacketWith(kStart).Seq(100).Marker()));
    EXPECT_TRUE(mChain.Push(PacketWith(kMore).Seq(101)));
    EXPECT_THAT(mChain.Samples(), IsEmpty());
    EXPECT_TRUE(mChain.Push(PacketWith(kEnd).Seq(102).Marker(), Time(800)));
    EXPECT_THAT(mChain.Samples(), ElementsAre(kStart + kMore + kEnd));
    EXPECT_NE(nullptr, mChain.Sample<Packets::MP4VSample>(0));
    EXPECT_EQ(Time(9000), mChain.End().mSamples[0]->PlayTime());
    EXPECT_EQ(Time(800), mChain.End().mLatest[0]);
    mChain.Push(PacketWith(kEnd).Seq(103).Marker());
    EXPECT_EQ(1U, mChain.Delivered()) << "what has no start is dropped";
}

TEST_F(EarlyMarkersTest, AFrameOfOnePacketIsDeliveredWithTheNext) {
    mChain.Push(PacketWith(kPicture).Seq(1).Marker());
    mChain.Push(PacketWith(kPicture + kEnd).Seq(2).Timestamp(12000).Marker(), Time(5));
    EXPECT_THAT(mChain.Samples(), ElementsAre(kPicture));
    EXPECT_EQ(Time(9000), mChain.End().mSamples[0]->PlayTime());
    EXPECT_EQ(Time(5), mChain.End().mLatest[0]);
    // Also where that is one of the same time.
    mChain.Push(PacketWith(kPicture).Seq(3).Timestamp(12000).Marker());
    EXPECT_EQ(kPicture + kEnd, mChain.Samples()[1]);
}

TEST_F(EarlyMarkersTest, TheLastFrameIsDeliveredAtTheEnd) {
    mChain.Push(PacketWith(kPicture).Seq(1).Marker());
    mChain.Link().Param("State", "Paused");
    EXPECT_EQ(0U, mChain.Delivered());
    mChain.Link().Param("EndOfStream", "Bye");
    EXPECT_THAT(mChain.End().mEvents, ElementsAre("State=Paused", "sample", "EndOfStream=Bye"));
    mChain.Push(PacketWith(kPicture).Seq(2));
    mChain.Link().Param("EndOfStream", "Bye");
    EXPECT_EQ(1U, mChain.Delivered()) << "half a frame is none";
}

TEST_F(EarlyMarkersTest, AFrameThatIsMarkedAtItsEndIsDeliveredThere) {
    mChain.Push(PacketWith(kStart).Seq(65535));
    mChain.Push(PacketWith(kEnd).Seq(0).Marker());
    EXPECT_THAT(mChain.Samples(), ElementsAre(kStart + kEnd)) << "across the wrap of the numbers";
}

TEST_F(EarlyMarkersTest, HeadersAndPictureInPacketsOfTheirOwnAreOneFrame) {
    mChain.Push(PacketWith(kStart).Seq(1));
    mChain.Push(PacketWith(kPicture).Seq(2).Marker());
    EXPECT_THAT(mChain.Samples(), ElementsAre(kStart + kPicture));
}

TEST_F(EarlyMarkersTest, AFrameWithoutAMarkerEndsBeforeTheNext) {
    mChain.Push(PacketWith(kStart).Seq(1));
    mChain.Push(PacketWith(kEnd).Seq(2));
    mChain.Push(PacketWith(kPicture).Seq(3).Timestamp(12000));
    EXPECT_THAT(mChain.Samples(), ElementsAre(kStart + kEnd));
    mChain.Push(PacketWith(kPicture).Seq(5).Timestamp(15000));
    EXPECT_EQ(1U, mChain.Delivered()) << "unless a packet is missing";
}

TEST_F(EarlyMarkersTest, ALostPacketCostsTheFrame) {
    mChain.Push(PacketWith(kStart).Seq(1));
    mChain.Push(PacketWith(kEnd).Seq(3).Marker());
    mChain.Push(PacketWith(kEnd).Seq(2).Marker());
    EXPECT_THAT(mChain.Samples(), IsEmpty());
}

TEST_F(EarlyMarkersTest, TheNextLinksAnswerIsTheAnswer) {
    mChain.End().mAnswers = {false, false};
    EXPECT_TRUE(mChain.Push(PacketWith(kPicture).Seq(1).Marker()));
    EXPECT_FALSE(mChain.Push(PacketWith(kPicture).Seq(2).Timestamp(12000)));
    EXPECT_FALSE(mChain.Push(PacketWith(kEnd).Seq(3).Timestamp(12000).Marker()));
}

TEST_F(EarlyMarkersTest, FlushForgetsTheFrame) {
    mChain.Push(PacketWith(kPicture).Seq(1).Marker());
    mChain.Link().Flush();
    mChain.Push(PacketWith(kEnd).Seq(2).Marker());
    mChain.Link().Param("EndOfStream", "Bye");
    EXPECT_THAT(mChain.End().mEvents, ElementsAre("flush", "EndOfStream=Bye"));
}

TEST_F(EarlyMarkersTest, AFrameBeyondTheLimitIsDroppedWhole) {
    const Bytes lPart(64000, 0x33);
    unsigned short lSeq = 0;
    mChain.Push(PacketWith(kStart).Seq(lSeq++));
    for (UInt lSize = 0; lSize <= Processors::RTP::EarlyMarkers::kMaxPendingBytes; lSize += 64000) {
        mChain.Push(PacketWith(lPart).Seq(lSeq++));
    }
    mChain.Push(PacketWith(kEnd).Seq(lSeq++).Marker());
    EXPECT_THAT(mChain.Samples(), IsEmpty());
}

}  // namespace
}  // namespace Player::Testing
