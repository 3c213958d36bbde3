#include "Processors/RTP/AMR.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Processors/RTP/Chain.hpp"

namespace Player::Testing {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

constexpr Byte kModeRequest = 0xF0;

class AMRTest : public testing::Test {
protected:
    Chain mChain{"AMR"};
};

TEST_F(AMRTest, FramesComeOutOneByOneAtOneTime) {
    const Bytes lData = Counted(62);
    const Bytes lHead = {kModeRequest, 0xBC, 0x3C};  // two frames of type 7
    mChain.Push(PacketWith(lHead + lData).Timestamp(160), Time(320));
    EXPECT_THAT(mChain.Samples(), ElementsAre(Counted(31), Counted(31, 31)));
    for (std::size_t lIdx = 0; lIdx < 2; ++lIdx) {
        EXPECT_EQ(Time(160), mChain.End().mSamples[lIdx]->PlayTime());
        EXPECT_EQ(Time(320), mChain.End().mLatest[lIdx]);
        EXPECT_NE(nullptr, mChain.Sample<Packets::Media>(lIdx));
    }
}

TEST_F(AMRTest, EveryTypeHasItsSizeWhateverTheOtherBits) {
    const UInt kSizes[] = {12, 13, 15, 17, 19, 20, 26, 31, 5, 6, 5, 5, 0, 0, 0, 0};
    for (UInt lType = 0; lType < 16; ++lType) {
        for (UInt lLowBits = 0; lLowBits < 8; ++lLowBits) {  // quality and padding
            Chain lChain("AMR");
            lChain.Push(PacketWith(Bytes{kModeRequest, static_cast<Byte>(lType << 3 | lLowBits)} + Counted(40)));
            if (0 == kSizes[lType]) {
                EXPECT_THAT(lChain.Samples(), IsEmpty()) << lType;
            } else {
                EXPECT_THAT(lChain.Samples(), ElementsAre(Counted(kSizes[lType]))) << lType;
            }
        }
    }
}

TEST_F(AMRTest, AnEntryWithoutDataMovesNothing) {
    // type 8 (5 bytes), type 15 (none), type 9 (6 bytes)
    mChain.Push(PacketWith(Bytes{kModeRequest, 0xC4, 0xFC, 0x4C} + Counted(11)));
    EXPECT_THAT(mChain.Samples(), ElementsAre(Counted(5), Counted(6, 5)));
}

TEST_F(AMRTest, AnEntryWithoutDataAloneGivesNothing) {
    mChain.End().mAnswers = {false};
    EXPECT_TRUE(mChain.Push(PacketWith({kModeRequest, 0x7C})));
    EXPECT_EQ(0U, mChain.Delivered());
}

TEST_F(AMRTest, TheMarkerPlaysNoPart) {
    mChain.Push(PacketWith(Bytes{kModeRequest, 0x44} + Counted(5)).Marker());
    mChain.Push(PacketWith(Bytes{kModeRequest, 0x44} + Counted(5)));
    EXPECT_EQ(2U, mChain.Delivered());
}

TEST_F(AMRTest, WhatAPacketLacksIsZero) {
    const Bytes lHead = {kModeRequest, 0xC4, 0xC4, 0x44};  // three frames of type 8
    const struct {
        UInt mBytes;
        std::vector<Bytes> mFrames;
    } kTable[] = {
        {16, {{1, 2, 3, 4, 5}, {6, 7, 8, 9, 10}, {11, 12, 13, 14, 15}}},  // one byte left over
        {15, {{1, 2, 3, 4, 5}, {6, 7, 8, 9, 10}, {11, 12, 13, 14, 15}}},
        {14, {{1, 2, 3, 4, 5}, {6, 7, 8, 9, 10}, {11, 12, 13, 14, 0}}},
        {6, {{1, 2, 3, 4, 5}, {6, 0, 0, 0, 0}, {0, 0, 0, 0, 0}}},
        {0, {{0, 0, 0, 0, 0}, {0, 0, 0, 0, 0}, {0, 0, 0, 0, 0}}},
    };
    for (const auto& lRow : kTable) {
        Chain lChain("AMR");
        lChain.Push(PacketWith(lHead + Counted(lRow.mBytes, 1)));
        EXPECT_THAT(lChain.Samples(), ElementsAreArray(lRow.mFrames)) << lRow.mBytes;
    }
}

TEST_F(AMRTest, TheLargestFrameMayBeMissingWhole) {
    mChain.Push(PacketWith({kModeRequest, 0x3C}));
    EXPECT_THAT(mChain.Samples(), ElementsAre(Bytes(31, 0)));
}

TEST_F(AMRTest, TheTableEndsWithThePayload) {
    mChain.Push(PacketWith({kModeRequest, 0xC4, 0xC4}));  // both say that more follow
    EXPECT_THAT(mChain.Samples(), ElementsAre(Bytes(5, 0), Bytes(5, 0)));
    EXPECT_TRUE(mChain.Push(PacketWith({0xFF})));
    EXPECT_TRUE(mChain.Push(PacketWith({})));
    EXPECT_EQ(2U, mChain.Delivered());
}

TEST_F(AMRTest, PaddingIsNoFrameData) {
    mChain.Push(PacketWith({kModeRequest, 0x44, 1, 2}).Padding(4));
    EXPECT_THAT(mChain.Samples(), ElementsAre(Bytes{1, 2, 0, 0, 0}));
}

TEST_F(AMRTest, TheLastFramesAnswerCounts) {
    const TestSupport::RtpPacket lTwo = PacketWith(Bytes{kModeRequest, 0xC4, 0x44} + Counted(10));
    mChain.End().mAnswers = {false, true, true, false};
    EXPECT_TRUE(mChain.Push(lTwo));
    EXPECT_FALSE(mChain.Push(lTwo));
    EXPECT_EQ(4U, mChain.Delivered());
}

TEST_F(AMRTest, NoticesAndFlushesGoOn) {
    mChain.Link().Param("EndOfStream", "Unknown");
    mChain.Link().Flush();
    EXPECT_THAT(mChain.End().mEvents, ElementsAre("EndOfStream=Unknown", "flush"));
}

}  // namespace
}  // namespace Player::Testing
