// RTP packets, alone and in streams: which are dropped, and what comes out of the rest.
#include <gmock/gmock.h>

#include "Hostile/Row.hpp"
#include "RTP/StackFixture.hpp"
#include "support/ReportCapture.hpp"

namespace Player::Hostile {

using Testing::Bytes;
using Testing::Packet;
using Testing::Prefix;
using Testing::SizeOf;
using TestSupport::RtpPacket;

struct PacketRow {
    const char* mName;
    Bytes mDatagram;
    /// Bytes of payload; 0 for a packet that is dropped.
    UInt mPayload;
};

/// A packet of a stream by its number and timestamp.
struct Sent {
    UInt mSeq;
    UInt mTimestamp;
    bool mIsTaken;
};

struct StreamRow {
    const char* mName;
    std::vector<Sent> mSent;
    /// Of the packets in the order in which they come out: their numbers as they were sent.
    std::vector<UInt> mOut;
};

namespace {

const PacketRow kPackets[] = {
    {"Nothing", {}, 0},
    {"OneByte", {0x80}, 0},
    {"AHeaderWithoutItsLastByte", Prefix(Packet().Build(), 11), 0},
    {"AHeaderAlone", Packet().PayloadSize(0).Build(), 0},
    {"OneByteOfPayload", Packet().PayloadSize(1).Build(), 1},
    {"Version0", Packet().Version(0).Build(), 0},
    {"Version1", Packet().Version(1).Build(), 0},
    {"Version3", Packet().Version(3).Build(), 0},
    {"AllBitsSet", Bytes(100, 0xFF), 0},
    {"AllBitsOfAHeaderOfVersion2", Bytes(100, 0xBF), 0},
    {"FifteenSources", Packet().Csrcs(std::vector<UInt>(15, 7)).PayloadSize(1).Build(), 1},
    {"FifteenSourcesAndNothingElse", Packet().Csrcs(std::vector<UInt>(15, 7)).PayloadSize(0).Build(), 0},
    {"FifteenSourcesThatAreNotThere",
     [] {
         Bytes lBytes = Packet().PayloadSize(59).Build();
         lBytes[0] = 0x8F;
         return lBytes;
     }(),
     0},
    {"AnExtensionOf65535Words", Packet().ClaimExtension(65535, {}).PayloadSize(1400).Build(), 0},
    {"AnExtensionOf65535WordsThatIsThere", Packet().Extension(Bytes(4 * 65535, 1)).PayloadSize(2).Build(), 2},
    {"AnExtensionOneWordTooLong", Packet().ClaimExtension(2, Bytes(4)).PayloadSize(4).Build(), 0},
    {"AnExtensionWithoutItsHeader",
     [] {
         Bytes lBytes = Packet().PayloadSize(3).Build();
         lBytes[0] = 0x90;
         return lBytes;
     }(),
     0},
    {"AnExtensionBehindSourcesThatAreNotThere",
     [] {
         Bytes lBytes = Packet().PayloadSize(62).Build();
         lBytes[0] = 0x9F;
         return lBytes;
     }(),
     0},
    {"APaddingOf255", Packet().PayloadSize(1).Padding(255).Build(), 1},
    {"APaddingOf255OfLess", Packet().Payload(Bytes(200, 255)).PaddingBit().Build(), 0},
    {"APaddingOfAll", Packet().Payload({0, 0, 3}).PaddingBit().Build(), 0},
    {"APaddingOfNothing", Packet().Payload({1, 0}).PaddingBit().Build(), 2},
    {"APaddingThatIsTheHeader", Packet().PayloadSize(0).PaddingBit().Build(), 0},
    {"APaddingOverTheExtension", Packet().Extension(Bytes(8)).Payload({1, 9}).PaddingBit().Build(), 0},
    {"AnotherType", Packet().Type(97).Build(), 0},
    {"ATypeOfRTCP", Packet().Type(72).Build(), 0},
    {"AnotherSource", Packet().Ssrc(0x11223345).Build(), 0},
    {"NoSource", Packet().Ssrc(0).Build(), 0},
    {"ADatagramOf64Kilobytes", Packet().PayloadSize(65495).Build(), 65495},
};

class HostilePacketTest : public Testing::StackFixture, public testing::WithParamInterface<PacketRow> {};

TEST_P(HostilePacketTest, IsTakenOrLeavesNoTrace) {
    const PacketRow& lRow = GetParam();
    mStack.SetExpectedPT(96);
    mStack.SetExpectedSSRC(0x11223344);
    const Bytes lDatagram = Testing::Exactly(lRow.mDatagram);
    EXPECT_EQ(0 != lRow.mPayload, mStack.HandleRTP(lDatagram.data(), SizeOf(lDatagram), Time(1000, 1)));
    EXPECT_EQ(0 != lRow.mPayload, 0 != mStack.GetReception().mPacketsReceived);
    const auto lPacket = mStack.Pop();
    EXPECT_EQ(lRow.mPayload, lPacket ? lPacket->Size() : 0);
    // The stream goes on.
    EXPECT_TRUE(TakeFrame(2));
    EXPECT_TRUE(TakeFrame(3));
    EXPECT_EQ(2U, PopAll().size());
}

INSTANTIATE_TEST_SUITE_P(Rows, HostilePacketTest, testing::ValuesIn(kPackets), NameOfRow());

// ---------------------------------------------------------------------------- numbers and timestamps

const StreamRow kStreams[] = {
    {"AJumpAheadByHalf", {{10, 10, true}, {32777, 11, true}, {32778, 12, true}}, {10, 32777, 32778}},
    {"AJumpAheadByMore", {{10, 10, true}, {32778, 11, false}, {11, 12, true}}, {10, 11}},
    {"AJumpBackInTheFirstCycle", {{100, 10, true}, {99, 11, false}, {101, 12, true}}, {100, 101}},
    {"AWrap", {{65534, 10, true}, {65535, 11, true}, {0, 12, true}, {1, 13, true}}, {65534, 65535, 0, 1}},
    {"AWrapInAnotherOrder", {{65534, 10, true}, {1, 13, true}, {65535, 11, true}, {0, 12, true}}, {65534, 65535, 0, 1}},
    {"AStepBackBehindAWrap", {{65535, 10, true}, {0, 11, true}, {65534, 12, false}, {1, 13, true}}, {65535, 0, 1}},
    {"ANumberOverAndOver", {{10, 10, true}, {11, 11, true}, {11, 12, false}, {11, 13, false}}, {10, 11}},
    {"TheFirstNumberTwice", {{10, 10, true}, {10, 11, true}}, {10, 10}},
    {"TheWrongWayRound",
     {{10, 10, true}, {14, 11, true}, {13, 12, true}, {12, 13, true}, {11, 14, true}},
     {10, 11, 12, 13, 14}},
    {"ATimestampAheadByHalf", {{10, 10, true}, {11, 0x80000009, true}, {12, 0x8000000A, true}}, {10, 11, 12}},
    {"ATimestampAheadByMore", {{10, 10, true}, {11, 0x8000000A, false}, {12, 11, true}}, {10, 12}},
    {"ATimestampBeforeTheFirst", {{10, 10, true}, {11, 9, false}, {12, 11, true}}, {10, 12}},
    {"TimestampsThatStandStill", {{10, 10, true}, {11, 10, true}, {12, 10, true}}, {10, 11, 12}},
    {"TimestampsThatGoBackAndForth",
     {{10, 10, true}, {11, 99, true}, {12, 11, true}, {13, 98, true}},
     {10, 11, 12, 13}},
    {"AWrapOfTheTimestamps", {{10, 0xFFFFFFFF, true}, {11, 0, true}, {12, 1, true}}, {10, 11, 12}},
    {"JumpsAllAroundTheCircle",
     {{1, 1, true}, {30000, 2, true}, {60000, 3, true}, {24464, 4, true}, {2, 5, true}},
     {1, 30000, 60000, 2, 24464}},
};

class HostileStreamTest : public Testing::StackFixture, public testing::WithParamInterface<StreamRow> {};

TEST_P(HostileStreamTest, ComesOutInOrder) {
    for (const Sent& lSent : GetParam().mSent) {
        EXPECT_EQ(lSent.mIsTaken, Take(Packet().Seq(lSent.mSeq).Timestamp(lSent.mTimestamp))) << lSent.mSeq;
    }
    std::vector<UInt> lOut;
    UInt lLast = 0;
    while (const auto lPacket = mStack.Pop()) {
        lOut.push_back(lPacket->SeqNumber());
        EXPECT_LE(lLast, lPacket->SeqNumberExt());
        lLast = lPacket->SeqNumberExt();
    }
    EXPECT_EQ(GetParam().mOut, lOut);
}

INSTANTIATE_TEST_SUITE_P(Rows, HostileStreamTest, testing::ValuesIn(kStreams), NameOfRow());

// ---------------------------------------------------------------------------- a queue that nobody empties

class HostileQueueTest : public Testing::StackFixture {
protected:
    static constexpr UInt kLimit = 1U << 20;

    HostileQueueTest() {
        mStack.SetBacklog(mBacklog);
        mOther.SetBacklog(mBacklog);
    }

    /// Whether a packet that holds a hundredth of what may wait, cut to bytes, was queued.
    bool TakeLarge(UInt aSeq) {
        return Take(Packet().Seq(aSeq).PayloadSize(kLimit / 100 - 12 - static_cast<UInt>(sizeof(Packets::RTP))));
    }
    bool OtherTakes(UInt aSeq, UInt aSize) {
        const Testing::Bytes lBytes = Packet().Seq(aSeq).PayloadSize(aSize).Build();
        return mOther.HandleRTP(lBytes.data(), Testing::SizeOf(lBytes), Time(1000, 1));
    }

    const SharedPtr<RTP::Backlog, SharedObject> mBacklog{new RTP::Backlog(kLimit)};
    RTP::Stack mOther;
};

TEST_F(HostileQueueTest, HoldsSoMuchAndGoesOnWhenItIsEmptied) {
    const TestSupport::ReportCapture lReports;
    UInt lSeq = 1;
    while (lSeq < 200 && TakeLarge(lSeq)) {
        ++lSeq;
    }
    EXPECT_TRUE(mStack.Full());
    EXPECT_FALSE(mStack.WantsMore());
    EXPECT_EQ(102U, lSeq) << "one begins where the last bytes are free";
    EXPECT_FALSE(TakeFrame(200)) << "not even a small one";
    EXPECT_EQ(103U, mStack.GetReception().mPacketsReceived) << "all have arrived";
    EXPECT_EQ(2U, mStack.GetReception().mPacketsDropped);
    EXPECT_THAT(lReports.All(),
                testing::ElementsAre(testing::Pair(Severity::Warning, "Packets are dropped: 1 MiB wait to be played")));

    EXPECT_EQ(1U, mStack.Pop()->SeqNumber());
    EXPECT_EQ(2U, mStack.Pop()->SeqNumber());
    EXPECT_FALSE(mStack.Full());
    EXPECT_TRUE(TakeFrame(201));
    EXPECT_EQ(100U, PopAll().size());
    EXPECT_FALSE(mStack.Full());
}

TEST_F(HostileQueueTest, IsEmptyBehindAFlush) {
    for (const bool lResets : {false, true}) {
        for (UInt lSeq = 1; !mStack.Full(); ++lSeq) {
            ASSERT_TRUE(TakeLarge(lSeq));
        }
        EXPECT_TRUE(mOther.Full());
        lResets ? mStack.Reset() : mStack.Flush(Time(1, 1));
        EXPECT_FALSE(mOther.Full());
        EXPECT_FALSE(mStack.Full());
        EXPECT_TRUE(TakeFrame(300));
        mStack.Flush(Time(1, 1));
        EXPECT_EQ(0U, mStack.GetReception().mPacketsDropped);
    }
}

TEST_F(HostileQueueTest, AllTracksCountButOneThatHoldsLittleIsNotStarved) {
    const TestSupport::ReportCapture lReports;
    for (UInt lSeq = 1; TakeLarge(lSeq); ++lSeq) {}
    EXPECT_TRUE(mOther.Full());
    EXPECT_TRUE(mOther.WantsMore());
    EXPECT_TRUE(OtherTakes(1, kLimit / 256));
    EXPECT_FALSE(mOther.WantsMore());
    EXPECT_FALSE(OtherTakes(2, 1));
    EXPECT_TRUE(mOther.Pop());
    EXPECT_TRUE(OtherTakes(3, 1));
    EXPECT_TRUE(mStack.Pop());
    EXPECT_TRUE(mStack.Pop());
    EXPECT_TRUE(OtherTakes(4, kLimit / 256)) << "place for both";
    EXPECT_TRUE(OtherTakes(5, 1));
}

TEST_F(HostileQueueTest, AStackThatIsGoneHoldsNothing) {
    for (UInt lSeq = 1; !mStack.Full(); ++lSeq) {
        ASSERT_TRUE(TakeLarge(lSeq));
    }
    mStack.Pop();
    mStack.Pop();
    EXPECT_FALSE(mOther.Full());
    {
        const RTP::Stack lCopy = mStack;
        EXPECT_TRUE(mOther.Full());
    }
    EXPECT_FALSE(mOther.Full());
    mOther = mStack;
    EXPECT_TRUE(mOther.Full());
    mStack.Flush(Time(1, 1));
    EXPECT_FALSE(mOther.Full());
    EXPECT_TRUE(mOther.Pop());
}

TEST_F(HostileQueueTest, IsFullBeforeWhatWasReadFindsNoPlace) {
    UInt lSeq = 1;
    while (!mStack.Full()) {
        ASSERT_TRUE(Take(Packet().Seq(lSeq++).PayloadSize(1000)));
    }
    EXPECT_TRUE(Take(Packet().Seq(lSeq++).PayloadSize(1000)));
    EXPECT_EQ(0U, mStack.GetReception().mPacketsDropped);
}

TEST_F(HostileQueueTest, AStackAloneHoldsAsMuchAsASession) {
    EXPECT_EQ(sizeof(void*) < 8 ? std::size_t{256} << 20 : std::size_t{1} << 30, RTP::Backlog::kLimit);
    mStack.SetBacklog(new RTP::Backlog);
    for (UInt lSeq = 1; lSeq < 200; ++lSeq) {
        EXPECT_TRUE(TakeLarge(lSeq));
    }
    EXPECT_FALSE(mStack.Full());
}

}  // namespace
}  // namespace Player::Hostile
