#include "Processors/RTP/MP4ALATM.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Packets/MP4ASample.hpp"
#include "Processors/RTP/Chain.hpp"

namespace Player::Testing {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;

class MP4ALATMTest : public testing::Test {
protected:
    Chain mChain{"MP4A-LATM"};
};

TEST_F(MP4ALATMTest, APacketGivesAllItsFramesAtOneTime) {
    const Bytes lFive = Counted(5, 0x10);
    const Bytes lThree = Counted(3, 0x20);
    mChain.Push(PacketWith(Bytes{5} + lFive + Bytes{3} + lThree).Timestamp(4000).Marker(), Time(5000));
    EXPECT_THAT(mChain.Samples(), ElementsAre(lFive, lThree));
    for (std::size_t lIdx = 0; lIdx < 2; ++lIdx) {
        EXPECT_NE(nullptr, mChain.Sample<Packets::MP4ASample>(lIdx));
        EXPECT_EQ(Time(4000), mChain.End().mSamples[lIdx]->PlayTime());
        EXPECT_EQ(Time(5000), mChain.End().mLatest[lIdx]);
    }
}

TEST_F(MP4ALATMTest, LengthsAddUp) {
    const struct {
        Bytes mLength;
        UInt mSize;
    } kTable[] = {
        {{0x01}, 1},
        {{0xFE}, 254},
        {{0xFF, 0x00}, 255},
        {{0xFF, 0x10}, 0x10F},
        {{0xFF, 0xFF, 0x00}, 510},
        {{0xFF, 0xFF, 0xFF, 0x02}, 767},
    };
    for (const auto& lRow : kTable) {
        Chain lChain("MP4A-LATM");
        lChain.Push(PacketWith(lRow.mLength + Counted(lRow.mSize)).Marker());
        EXPECT_THAT(lChain.Samples(), ElementsAre(Counted(lRow.mSize)));
    }
}

TEST_F(MP4ALATMTest, ALengthThatCannotBeEndsThePacket) {
    const struct {
        const char* mWhat;
        Bytes mPayload;
        std::vector<Bytes> mSamples;
    } kTable[] = {
        {"length 0 first", {0, 1, 0xAA}, {}},
        {"length 0 behind a frame", {1, 0xAA, 0, 1, 0xBB}, {{0xAA}}},
        {"one byte too long", {1, 0xAA, 3, 1, 2}, {{0xAA}}},
        {"just fits", {1, 0xAA, 2, 1, 2}, {{0xAA}, {1, 2}}},
        {"a length and nothing else", {1}, {}},
        {"a length that does not end", {1, 0xAA, 0xFF}, {{0xAA}}},
        {"and again", {0xFF, 0xFF, 0xFF}, {}},
        {"nothing at all", {}, {}},
    };
    for (const auto& lRow : kTable) {
        Chain lChain("MP4A-LATM");
        EXPECT_TRUE(lChain.Push(PacketWith(lRow.mPayload).Marker())) << lRow.mWhat;
        EXPECT_THAT(lChain.Samples(), ElementsAreArray(lRow.mSamples)) << lRow.mWhat;
    }
}

TEST_F(MP4ALATMTest, OfAFrameOverSeveralPacketsOnlyTheLastIsLookedAt) {
    mChain.Push(PacketWith({2, 0xAA}).Seq(1));
    EXPECT_EQ(0U, mChain.Delivered());
    mChain.Push(PacketWith({1, 0xBB}).Seq(2));
    mChain.Push(PacketWith({1, 0xCC}).Seq(3).Marker());
    EXPECT_THAT(mChain.Samples(), ElementsAre(Bytes{0xCC}));
}

TEST_F(MP4ALATMTest, TheLastFramesAnswerCounts) {
    const TestSupport::RtpPacket lTwo = PacketWith({1, 0xAA, 1, 0xBB}).Marker();
    mChain.End().mAnswers = {false, true, true, false};
    EXPECT_TRUE(mChain.Push(lTwo));
    EXPECT_FALSE(mChain.Push(lTwo));
    EXPECT_EQ(4U, mChain.Delivered()) << "a refusal keeps no frame back";
}

TEST_F(MP4ALATMTest, NoticesAndFlushesGoOn) {
    mChain.Push(PacketWith({1, 0xAA}));
    mChain.Link().Param("EndOfStream", "EndTime");
    mChain.Link().Flush();
    EXPECT_THAT(mChain.End().mEvents, ElementsAre("EndOfStream=EndTime", "flush"));
}

}  // namespace
}  // namespace Player::Testing
