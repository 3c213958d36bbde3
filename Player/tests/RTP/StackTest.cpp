#include "RTP/Stack.hpp"

#include <gtest/gtest.h>

#include <numeric>

#include "RTP/StackFixture.hpp"

namespace Player::RTP {

using Testing::Bytes;
using Testing::Packet;
using Testing::Prefix;
using Testing::SizeOf;
using TestSupport::RtpPacket;

namespace {

class StackTest : public Testing::StackFixture {};

// ---------------------------------------------------------------- which packets are taken

TEST_F(StackTest, PacketNeedsPayload) {
    EXPECT_FALSE(Take(Packet().PayloadSize(0))) << "12 bytes";
    EXPECT_TRUE(Take(Packet().PayloadSize(1))) << "13 bytes";
}

TEST_F(StackTest, OnlyVersionTwo) {
    for (const UInt lVersion : {0U, 1U, 3U}) {
        EXPECT_FALSE(Take(Packet().Version(lVersion))) << lVersion;
    }
    EXPECT_TRUE(Take(Packet().Version(2)));
}

TEST_F(StackTest, OnlyTheExpectedPayloadType) {
    mStack.SetExpectedPT(96);
    EXPECT_FALSE(Take(Packet().Type(97)));
    EXPECT_FALSE(Take(Packet().Type(0)));
    EXPECT_TRUE(Take(Packet().Type(96).Marker())) << "the marker is no part of the type";
}

TEST_F(StackTest, OnlyTheExpectedSource) {
    mStack.SetExpectedSSRC(0x11223344);
    EXPECT_FALSE(Take(Packet().Ssrc(0x11223345)));
    EXPECT_FALSE(Take(Packet().Ssrc(0)));
    EXPECT_TRUE(Take(Packet().Ssrc(0x11223344)));
}

TEST_F(StackTest, ASuggestedSourceGivesWayToTheOneThatSendsFirst) {
    mStack.SuggestSSRC(0x11223344);
    EXPECT_TRUE(Take(Packet().Ssrc(77).Seq(1)));
    EXPECT_FALSE(Take(Packet().Ssrc(0x11223344).Seq(2)));
    EXPECT_TRUE(Take(Packet().Ssrc(77).Seq(2)));
    mStack.Flush(Time(1, 1));
    EXPECT_TRUE(Take(Packet().Ssrc(78).Seq(3))) << "a server may send as another one after a seek";
    EXPECT_FALSE(Take(Packet().Ssrc(77).Seq(4)));
}

TEST_F(StackTest, LearnsTypeAndSourceFromTheFirstPacket) {
    EXPECT_TRUE(Take(Packet().Type(33).Ssrc(77).Seq(1)));
    EXPECT_FALSE(Take(Packet().Type(34).Ssrc(77).Seq(2)));
    EXPECT_FALSE(Take(Packet().Type(33).Ssrc(78).Seq(2)));
    EXPECT_TRUE(Take(Packet().Type(33).Ssrc(77).Seq(2)));
    mStack.Flush(Time(1, 1));
    EXPECT_FALSE(Take(Packet().Type(33).Ssrc(78).Seq(3))) << "a flush keeps the source";
    EXPECT_FALSE(Take(Packet().Type(34).Ssrc(77).Seq(3))) << "and the type";
    EXPECT_TRUE(Take(Packet().Type(33).Ssrc(77).Seq(3)));
}

TEST_F(StackTest, LearnsFromAPacketThatItDrops) {
    mStack.SetSeqBase(100);
    EXPECT_FALSE(Take(Packet().Seq(99).Ssrc(77)));
    EXPECT_FALSE(Take(Packet().Seq(100).Ssrc(78)));
    EXPECT_TRUE(Take(Packet().Seq(100).Ssrc(77)));
}

TEST_F(StackTest, TypeAndSourceZeroStandForAny) {
    EXPECT_TRUE(Take(Packet().Type(0).Ssrc(0)));
    EXPECT_TRUE(Take(Packet().Type(96).Ssrc(5).Seq(2))) << "0 was learnt, and 0 expects nothing";
}

TEST_F(StackTest, SourcesExtensionAndPaddingLeavePayload) {
    const struct {
        const char* mName;
        RtpPacket mPacket;
        UInt mPayload;  // 0: dropped
    } kCases[] = {
        {"one source, no payload", Packet().Csrcs({1}).PayloadSize(0), 0},
        {"one source", Packet().Csrcs({1}).PayloadSize(1), 1},
        {"15 sources, no payload", Packet().Csrcs(std::vector<UInt>(15, 7)).PayloadSize(0), 0},
        {"15 sources", Packet().Csrcs(std::vector<UInt>(15, 7)).PayloadSize(2), 2},
        {"empty extension, no payload", Packet().Extension({}).PayloadSize(0), 0},
        {"empty extension", Packet().Extension({}).PayloadSize(1), 1},
        {"extension, no payload", Packet().Extension({1, 2, 3, 4}).PayloadSize(0), 0},
        {"extension", Packet().Extension({1, 2, 3, 4}).PayloadSize(3), 3},
        {"sources and extension", Packet().Csrcs({1, 2}).Extension({1, 2, 3, 4}).PayloadSize(3), 3},
        {"extension that ends with the packet", Packet().ClaimExtension(3, {}).PayloadSize(12), 0},
        {"extension one byte shorter", Packet().ClaimExtension(3, {}).PayloadSize(13), 1},
        {"extension beyond the packet", Packet().ClaimExtension(4, {}).PayloadSize(12), 0},
        {"extension of 2^16 words", Packet().ClaimExtension(65535, {}).PayloadSize(100), 0},
        {"extension of 2^14 words, 0 modulo 2^16 bytes", Packet().ClaimExtension(16383, {}).PayloadSize(100), 0},
        {"padding", Packet().PayloadSize(4).Padding(3), 4},
        {"padding of 255", Packet().PayloadSize(1).Padding(255), 1},
        {"nothing but padding", Packet().PayloadSize(0).Padding(3), 0},
        {"padding of 0", Packet().Payload({5, 0}).PaddingBit(), 2},
        {"padding of all", Packet().Payload({5, 2}).PaddingBit(), 0},
        {"padding beyond the packet", Packet().Payload({5, 255}).PaddingBit(), 0},
        {"padding over the extension", Packet().Extension({1, 2, 3, 4}).Payload({1, 2}).PaddingBit(), 0},
        {"padding bit without payload", Packet().PayloadSize(0).Ssrc(1).PaddingBit(), 0},
    };
    for (const auto& lCase : kCases) {
        mStack.Reset();
        EXPECT_EQ(0 != lCase.mPayload, Take(lCase.mPacket)) << lCase.mName;
        const auto lPacket = mStack.Pop();
        EXPECT_EQ(lCase.mPayload, lPacket ? lPacket->Size() : 0) << lCase.mName;
    }
}

TEST_F(StackTest, LargestExtensionFits) {
    constexpr std::size_t kLargest = 262140;  // 65535 words
    EXPECT_FALSE(Take(Packet().Extension(Bytes(kLargest, 1)).PayloadSize(0)));
    EXPECT_TRUE(Take(Packet().Extension(Bytes(kLargest, 1)).Payload({0x42})));
    const auto lPacket = mStack.Pop();
    ASSERT_EQ(1U, lPacket->Size());
    EXPECT_EQ(0x42, *lPacket->Begin());
}

TEST_F(StackTest, EveryPrefixIsJudgedWithinItsBytes) {
    const RtpPacket lBuilder = Packet().Csrcs({1, 2, 3}).Extension(Bytes(8, 9)).PayloadSize(20);
    const Bytes lWhole = lBuilder.Build();
    for (std::size_t lSize = 0; lSize <= lWhole.size(); ++lSize) {
        mStack.Reset();
        const Bytes lPrefix = Prefix(lWhole, lSize);
        EXPECT_EQ(lSize > 12 + 12 + 12, mStack.HandleRTP(lPrefix.data(), SizeOf(lPrefix), Time(0))) << lSize;
    }
}

TEST_F(StackTest, DroppedPacketsLeaveNoTrace) {
    mStack.SetExpectedPT(96);
    EXPECT_FALSE(Take(Packet().Type(97).Seq(500)));
    EXPECT_FALSE(Take(Packet().Version(1).Seq(500)));
    EXPECT_FALSE(Take(Packet().PayloadSize(0).Seq(500)));
    EXPECT_EQ(0U, mStack.GetReception().mPacketsReceived);
    Bytes lReport(32);
    EXPECT_EQ(0U, mStack.AssembleRTCP_RR(lReport.data(), 32, Time(0)));
    EXPECT_TRUE(Take(Packet().Seq(20).Ssrc(0xABCD))) << "nothing was learnt";
    EXPECT_EQ(0U, mStack.Pop()->SeqNumberExt());
}

// ---------------------------------------------------------------- indices and timestamps

TEST_F(StackTest, FirstPacketIsTheBaseUnlessOneIsSet) {
    EXPECT_TRUE(Take(Packet().Seq(500).Timestamp(7000)));
    auto lPacket = mStack.Pop();
    EXPECT_EQ(0U, lPacket->SeqNumberExt());
    EXPECT_EQ(0, lPacket->TimestampExt());

    mStack.Reset();
    mStack.SetSeqBase(490);
    mStack.SetTimeBase(6000);
    EXPECT_TRUE(Take(Packet().Seq(500).Timestamp(7000)));
    lPacket = mStack.Pop();
    EXPECT_EQ(10U, lPacket->SeqNumberExt());
    EXPECT_EQ(1000, lPacket->TimestampExt());
}

TEST_F(StackTest, BaseOfZeroIsReplacedByTheFirstPacket) {
    mStack.SetSeqBase(0);
    mStack.SetTimeBase(0);
    EXPECT_TRUE(Take(Packet().Seq(3).Timestamp(900)));
    const auto lPacket = mStack.Pop();
    EXPECT_EQ(0U, lPacket->SeqNumberExt());
    EXPECT_EQ(0, lPacket->TimestampExt());
}

TEST_F(StackTest, NothingBeforeThePlayRange) {
    mStack.SetSeqBase(100);
    mStack.SetTimeBase(5000);
    EXPECT_FALSE(Take(Packet().Seq(99).Timestamp(5000)));
    EXPECT_FALSE(Take(Packet().Seq(100).Timestamp(4999)));
    EXPECT_FALSE(Take(Packet().Seq(65535).Timestamp(5000))) << "from before a wrap that never was";
    EXPECT_FALSE(Take(Packet().Seq(100).Timestamp(0xFFFFFFFF)));
    EXPECT_EQ(0U, mStack.GetReception().mPacketsReceived);
    EXPECT_TRUE(Take(Packet().Seq(100).Timestamp(5000)));
    EXPECT_FALSE(Take(Packet().Seq(99).Timestamp(5000))) << "also later";
    EXPECT_EQ(1U, mStack.GetReception().mPacketsReceived);
}

TEST_F(StackTest, PicturesMayBeShownShortlyBeforeThePlayRange) {
    for (const UInt lBase : {50000U, 10U}) {
        mStack.Reset();
        mStack.SetSeqBase(100);
        mStack.SetTimeBase(lBase, 4000);
        EXPECT_TRUE(Take(Packet().Seq(100).Timestamp(lBase - 4000))) << "the first";
        EXPECT_TRUE(Take(Packet().Seq(101).Timestamp(lBase + 3600)));
        EXPECT_TRUE(mStack.Pop() && mStack.Pop());
        EXPECT_FALSE(Take(Packet().Seq(102).Timestamp(lBase - 4001)));
        EXPECT_FALSE(Take(Packet().Seq(99).Timestamp(lBase - 1))) << "of the range before";
        ASSERT_TRUE(Take(Packet().Seq(102).Timestamp(lBase - 3600)));
        EXPECT_EQ(-3600, mStack.Pop()->TimestampExt());
        EXPECT_FALSE(Take(Packet().Seq(101).Timestamp(lBase - 3601))) << "too late";
    }
}

TEST_F(StackTest, PacketDroppedForItsTimestampDoesNotMoveTheSequence) {
    mStack.SetTimeBase(5000);
    EXPECT_TRUE(Take(Packet().Seq(10).Timestamp(5000)));
    EXPECT_FALSE(Take(Packet().Seq(900).Timestamp(4000)));
    EXPECT_EQ(10, Report()[19]);
    EXPECT_EQ(0, Report()[18]);
}

TEST_F(StackTest, IndexGoesOnAcrossTheWrap) {
    for (const UInt lSeq : {65534U, 65535U, 65536U, 65537U}) {
        EXPECT_TRUE(TakeFrame(lSeq));
    }
    EXPECT_EQ((std::vector<UInt>{0, 1, 2, 3}), PopAll());
}

TEST_F(StackTest, LatePacketFromBeforeTheWrapGetsTheCycleBefore) {
    EXPECT_TRUE(TakeFrame(65533));
    EXPECT_TRUE(TakeFrame(65537));
    EXPECT_TRUE(TakeFrame(65535));
    EXPECT_EQ((std::vector<UInt>{0, 2, 4}), PopAll());
    EXPECT_EQ(1, Report()[17]) << "the count of cycles stays";
}

TEST_F(StackTest, TimestampGoesOnAcrossTheWrap) {
    EXPECT_TRUE(Take(Packet().Seq(1).Timestamp(0xFFFFFFF0)));
    EXPECT_TRUE(Take(Packet().Seq(2).Timestamp(0x00000010)));
    EXPECT_TRUE(Take(Packet().Seq(3).Timestamp(0xFFFFFFF8))) << "a picture shown before the one before";
    std::vector<long long> lTimestamps;
    while (!mStack.Empty()) {
        lTimestamps.push_back(mStack.Pop()->TimestampExt());
    }
    EXPECT_EQ((std::vector<long long>{0, 0x20, 8}), lTimestamps);
}

TEST_F(StackTest, NewBasesGoOnFromWhereTheCountIs) {
    EXPECT_TRUE(Take(Packet().Seq(100).Timestamp(1000)));
    EXPECT_TRUE(Take(Packet().Seq(110).Timestamp(91000)));
    mStack.SetSeqBase(40000);
    mStack.SetTimeBase(0xF0000000);
    EXPECT_TRUE(Take(Packet().Seq(40001).Timestamp(0xF0000000 + 3600)));
    EXPECT_TRUE(Take(Packet().Seq(40003).Timestamp(0xF0000000 + 7200)));
    std::vector<long long> lTimestamps;
    std::vector<UInt> lIndices;
    while (!mStack.Empty()) {
        const auto lPacket = mStack.Pop();
        lIndices.push_back(lPacket->SeqNumberExt());
        lTimestamps.push_back(lPacket->TimestampExt());
    }
    EXPECT_EQ((std::vector<UInt>{0, 10, 11, 13}), lIndices);
    EXPECT_EQ((std::vector<long long>{0, 90000, 93600, 97200}), lTimestamps);
}

TEST_F(StackTest, BeginTimeIsThePlayTimeOfTheTimeBase) {
    mStack.SetTimeBase(5000);
    mStack.SetBeginTime(Time(25, 2));
    EXPECT_TRUE(Take(Packet().Seq(1).Timestamp(5000)));
    EXPECT_TRUE(Take(Packet().Seq(2).Timestamp(5000 + 45000)));
    EXPECT_EQ(Time(25, 2), mStack.Pop()->PlayTime());
    EXPECT_EQ(Time(13, 1), mStack.Pop()->PlayTime());
}

TEST_F(StackTest, BeginTimeReplacesWhatWasCarriedOver) {
    EXPECT_TRUE(Take(Packet().Seq(1).Timestamp(1000)));
    EXPECT_TRUE(Take(Packet().Seq(2).Timestamp(1000 + kRes)));
    mStack.SetTimeBase(7000);
    mStack.SetBeginTime(Time(100, 1));
    mStack.SetBeginTime(Time(60, 1));
    EXPECT_TRUE(Take(Packet().Seq(3).Timestamp(7000)));
    EXPECT_EQ(Time(60, 1), mStack.LatestTime());
}

TEST_F(StackTest, BeginTimeIsCutToWholeTicks) {
    mStack.SetTimeRes(10);
    mStack.SetBeginTime(Time(199, 100));
    EXPECT_TRUE(Take(Packet()));
    EXPECT_EQ(19, mStack.Pop()->TimestampExt());
}

// ---------------------------------------------------------------- order

TEST_F(StackTest, HandsPacketsOutInOrder) {
    const struct {
        std::vector<UInt> mArrived;
        std::vector<UInt> mRefused;
        std::vector<UInt> mOrder;
    } kCases[] = {
        {{0, 1, 2, 3}, {}, {0, 1, 2, 3}},
        {{0, 3, 2, 1}, {}, {0, 1, 2, 3}},
        {{0, 5, 3, 4, 1, 2}, {}, {0, 1, 2, 3, 4, 5}},
        {{0, 1, 2, 3, 2}, {2}, {0, 1, 2, 3}},    // a duplicate in the middle
        {{0, 1, 2, 3, 3}, {3}, {0, 1, 2, 3}},    // at the back
        {{0, 1, 2, 3, 0}, {}, {0, 0, 1, 2, 3}},  // at the front: queued again
        {{0, 0, 0}, {}, {0, 0, 0}},              // front and back at once
        {{0, 0, 1, 0, 1}, {1}, {0, 0, 0, 1}},
        {{0, 9, 5, 5, 9}, {5, 9}, {0, 5, 9}},
    };
    for (const auto& lCase : kCases) {
        mStack.Flush(Time(0));
        mStack.SetSeqBase(100);
        std::vector<UInt> lRefused;
        for (const UInt lIndex : lCase.mArrived) {
            if (!Take(Packet().Seq(100 + lIndex))) { lRefused.push_back(lIndex); }
        }
        EXPECT_EQ(lCase.mRefused, lRefused);
        EXPECT_EQ(lRefused.size(), mStack.GetReception().mPacketsDuplicate);
        EXPECT_EQ(lCase.mOrder, PopAll());
    }
}

TEST_F(StackTest, ADuplicateGoesBeforeItsTwinAtTheFront) {
    EXPECT_TRUE(Take(Packet().Payload({1})));
    EXPECT_TRUE(Take(Packet().Payload({2})));
    EXPECT_EQ(2, *mStack.Pop()->Begin());
    EXPECT_EQ(1, *mStack.Pop()->Begin());
}

TEST_F(StackTest, ADuplicateBehindADoubleFrontIsRecognised) {
    mStack.SetSeqBase(100);
    EXPECT_TRUE(Take(Packet().Seq(101)));
    EXPECT_TRUE(Take(Packet().Seq(101)));
    EXPECT_TRUE(Take(Packet().Seq(100)));
    EXPECT_FALSE(Take(Packet().Seq(101)));
    EXPECT_EQ((std::vector<UInt>{0, 1, 1}), PopAll());
}

TEST_F(StackTest, DropsWhatWasPlayedOut) {
    for (UInt lSeq = 100; lSeq < 105; ++lSeq) {
        EXPECT_TRUE(TakeFrame(lSeq));
    }
    PopAll();
    EXPECT_FALSE(TakeFrame(103)) << "older by number and by time";
    EXPECT_EQ(6U, mStack.GetReception().mPacketsReceived) << "it counts all the same";
    EXPECT_EQ(1U, mStack.GetReception().mPacketsLate);
    EXPECT_TRUE(TakeFrame(104)) << "a duplicate of the last one is not older by time";
    EXPECT_TRUE(Take(Packet().Seq(103).Timestamp(104 * 3600))) << "nor is one of the same picture";
    EXPECT_TRUE(Take(Packet().Seq(105).Timestamp(103 * 3600))) << "older by time alone";
}

TEST_F(StackTest, AFlushForgetsWhatWasPlayedOut) {
    mStack.SetSeqBase(100);
    mStack.SetTimeBase(360000);
    EXPECT_TRUE(TakeFrame(105));
    mStack.Pop();
    mStack.Flush(Time(1, 1));
    EXPECT_TRUE(TakeFrame(103));
}

TEST_F(StackTest, QueueHoldsAsManyPacketsAsCome) {
    for (UInt lSeq = 1; lSeq <= 100000; ++lSeq) {
        ASSERT_TRUE(TakeFrame(lSeq));
    }
    std::vector<UInt> lAll(100000);
    std::iota(lAll.begin(), lAll.end(), 0);
    EXPECT_EQ(lAll, PopAll());
}

TEST_F(StackTest, PopOfAnEmptyQueueIsNull) {
    EXPECT_TRUE(mStack.Empty());
    EXPECT_FALSE(mStack.Pop());
}

TEST_F(StackTest, PacketCarriesTheDatagram) {
    const RtpPacket lBuilder =
        Packet().Seq(9).Timestamp(10).Marker().Csrcs({5, 6}).Extension({1, 2, 3, 4}).Payload({7, 8}).Padding(2);
    EXPECT_TRUE(Take(lBuilder));
    EXPECT_FALSE(mStack.Empty());
    const auto lPacket = mStack.Pop();
    EXPECT_EQ((Bytes{7, 8}), Bytes(lPacket->Begin(), lPacket->End()));
    EXPECT_EQ(9, lPacket->SeqNumber());
    EXPECT_EQ(10U, lPacket->Timestamp());
    EXPECT_TRUE(lPacket->HasMarker());
    EXPECT_EQ(2, lPacket->NumCSRCs());
    EXPECT_EQ(4, lPacket->ExtensionSize());
    EXPECT_EQ(1U, lPacket->GetRefCount()) << "the stack has let go of it";
}

}  // namespace
}  // namespace Player::RTP
