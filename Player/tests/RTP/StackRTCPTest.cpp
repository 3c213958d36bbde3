// RTCP in and out of a stack, and what sender reports do to play times.
#include <gtest/gtest.h>

#include "RTP/Stack.hpp"
#include "RTP/StackFixture.hpp"

namespace Player::RTP {

using Testing::Bytes;
using Testing::Compound;
using Testing::Packet;
using Testing::Prefix;
using Testing::SizeOf;
using TestSupport::RtcpCompound;

namespace {

constexpr unsigned long long kSecond = 1ULL << 32;

class StackRTCPTest : public Testing::StackFixture {
protected:
    StackRTCPTest() { mStack.SetExpectedSSRC(0x11223344); }
};

// ---------------------------------------------------------------- compound packets

TEST_F(StackRTCPTest, TakesWellFormedCompounds) {
    const struct {
        const char* mName;
        RtcpCompound mCompound;
        bool mIsTaken;
    } kCases[] = {
        {"RR", Compound().RR(), true},
        {"SR", Compound().SR(1, 2, 3), true},
        {"SR and all others", Compound().SR(1, 2, 3).RR().SDES().APP().Raw(205, {1}).BYE(), true},
        {"packets of one word", Compound().RR().Raw(203, {}).Raw(202, {}), true},
        {"nothing", Compound(), false},
        {"one word", Compound().Raw(201, {}), false},
        {"SDES first", Compound().SDES().SR(1, 2, 3), false},
        {"BYE first", Compound().BYE(), false},
        {"type 199 first", Compound().Raw(199, {0x11223344}), false},
        {"type 202 first", Compound().Raw(202, {0x11223344}), false},
        {"another source", Compound(0x11223345).RR(), false},
        {"another source in a later packet", Compound().RR().Raw(203, {5}), true},
        {"version 1", Compound().Raw(201, {0x11223344}, 1), false},
        {"version 1 later", Compound().RR().Raw(203, {0x11223344}, 1), false},
    };
    for (const auto& lCase : kCases) {
        EXPECT_EQ(lCase.mIsTaken, Control(lCase.mCompound)) << lCase.mName;
    }
}

TEST_F(StackRTCPTest, LengthsLeadExactlyToTheEnd) {
    const Bytes lWhole = Compound().SR(1, 2, 3).SDES().BYE().Build();
    for (std::size_t lSize = 0; lSize <= lWhole.size(); ++lSize) {
        const Bytes lPrefix = Prefix(lWhole, lSize);
        const bool lIsBorder = 28 == lSize || 40 == lSize || 48 == lSize;
        EXPECT_EQ(lIsBorder, mStack.HandleRTCP(lPrefix.data(), SizeOf(lPrefix), Time(1, 1))) << lSize;
    }
}

TEST_F(StackRTCPTest, LengthBeyondTheEndIsRefused) {
    Bytes lBytes = Compound().RR().BYE().Build();
    lBytes[11] = 2;  // BYE claims one word more
    EXPECT_FALSE(mStack.HandleRTCP(lBytes.data(), SizeOf(lBytes), Time(1, 1)));
    lBytes[10] = lBytes[11] = 0xFF;
    EXPECT_FALSE(mStack.HandleRTCP(lBytes.data(), SizeOf(lBytes), Time(1, 1)));
    EXPECT_EQ(0U, mStack.Ended(Time(1, 1)));
}

TEST_F(StackRTCPTest, SourceMustMatchAlsoWhileItIsUnknown) {
    mStack.SetExpectedSSRC(0);
    EXPECT_FALSE(Control(Compound(7).RR()));
    EXPECT_TRUE(Control(Compound(0).RR()));
}

TEST_F(StackRTCPTest, ASuggestedSourceReportsBeforeItSends) {
    mStack.SuggestSSRC(7);
    EXPECT_FALSE(Control(Compound(8).RR()));
    EXPECT_TRUE(Control(Compound(7).RR().BYE()));
    EXPECT_EQ(3U, mStack.Ended(Time(1000, 1)));
}

TEST_F(StackRTCPTest, RefusedCompoundHasNoEffect) {
    mStack.SetEndTime(Time(1));
    mStack.Preflight(Time(1, 1));
    Bytes lBytes = Compound().SR(1, 2, 3).BYE().Build();
    lBytes.push_back(0);
    EXPECT_FALSE(mStack.HandleRTCP(lBytes.data(), SizeOf(lBytes), Time(1, 1)));
    EXPECT_EQ(0U, mStack.GetLastNTPTime());
    EXPECT_EQ(0U, mStack.Ended(Time(100, 1))) << "neither left nor counted as received";
}

TEST_F(StackRTCPTest, OthersAreIgnored) {
    EXPECT_TRUE(Control(Compound().RR().SDES().APP().Raw(205, {1, 2, 3, 4, 5, 6}).Raw(0, {1}).Raw(255, {})));
    EXPECT_EQ(0U, mStack.GetLastNTPTime());
    EXPECT_EQ(0U, mStack.Ended(Time(1, 1)));
}

TEST_F(StackRTCPTest, SenderReportAnywhereCounts) {
    EXPECT_TRUE(Control(Compound().RR().SR(5, 0, 3)));
    EXPECT_EQ(5 * kSecond, mStack.GetLastNTPTime());
}

TEST_F(StackRTCPTest, ShortSenderReportIsTakenAndNotRead) {
    for (UInt lWords = 1; lWords < 4; ++lWords) {
        const std::vector<UInt> lFields(lWords, 0x11223344);
        EXPECT_TRUE(Control(Compound().Raw(200, lFields))) << lWords;
        EXPECT_TRUE(Control(Compound().Raw(200, lFields).SDES().APP())) << lWords << ", others behind it";
        EXPECT_TRUE(Control(Compound().RR().Raw(200, {}).APP().APP())) << "not even its source";
    }
    EXPECT_EQ(0U, mStack.GetLastNTPTime());
    EXPECT_TRUE(Control(Compound().Raw(200, {0x11223344, 1, 2, 3})));
    EXPECT_EQ(kSecond + 2, mStack.GetLastNTPTime()) << "up to the RTP time is enough";
}

// ---------------------------------------------------------------- sender reports

TEST_F(StackRTCPTest, FirstNTPTimeCountsAndLaterOnesDoNot) {
    EXPECT_TRUE(Control(Compound().SR(0xE0001234, 0x80000000, 5000)));
    EXPECT_EQ(0xE000123480000000ULL, mStack.GetLastNTPTime());
    EXPECT_EQ(5000U, mStack.GetLastRTPTimeExt());

    EXPECT_TRUE(Control(Compound().SR(77, 88, 5000 + kRes)));
    EXPECT_EQ(0xE000123580000000ULL, mStack.GetLastNTPTime());
    EXPECT_EQ(5000U + kRes, mStack.GetLastRTPTimeExt());

    EXPECT_TRUE(Control(Compound().SR(77, 88, 5000)));
    EXPECT_EQ(0xE000123480000000ULL, mStack.GetLastNTPTime());
    EXPECT_EQ((1ULL << 32) + 5000, mStack.GetLastRTPTimeExt()) << "a step down is a wrap";
}

// ---------------------------------------------------------------- receiver reports

TEST_F(StackRTCPTest, ReportNeedsRoomAndAPacket) {
    Bytes lBytes(33, 0xEE);
    EXPECT_EQ(0U, mStack.AssembleRTCP_RR(lBytes.data(), 33, Time(1, 1)));
    EXPECT_TRUE(Control(Compound().RR()));
    EXPECT_EQ(0U, mStack.AssembleRTCP_RR(lBytes.data(), 33, Time(1, 1))) << "RTCP alone is not enough";
    EXPECT_TRUE(Take(Packet()));
    EXPECT_EQ(0U, mStack.AssembleRTCP_RR(lBytes.data(), 31, Time(1, 1)));
    EXPECT_EQ(Bytes(33, 0xEE), lBytes);
    EXPECT_EQ(32U, mStack.AssembleRTCP_RR(lBytes.data(), 33, Time(1, 1)));
    EXPECT_EQ(0xEE, lBytes[32]);
}

TEST_F(StackRTCPTest, ReportTellsTheStateOfReception) {
    mStack.SetLocalSSRC(0xCAFEBABE);
    mStack.SetTimeRes(8192);
    mStack.SetSeqBase(65530);
    EXPECT_TRUE(Take(Packet().Seq(65530).Timestamp(1), Time(1000, 1)));
    EXPECT_TRUE(Take(Packet().Seq(3).Timestamp(8193), Time(1001, 1) + Time(1, 32)));  // 256 ticks late
    EXPECT_TRUE(Control(Compound().SR(0xAAAA1234, 0x5678BBBB, 8193), Time(1002, 1)));
    // clang-format off
    const Bytes kExpected = {
        0x81, 201, 0x00, 0x07,   // version 2, one report; RR; length 7
        0xCA, 0xFE, 0xBA, 0xBE,  // local SSRC
        0x11, 0x22, 0x33, 0x44,  // source reported on
        204,                     // 8 of 10 lost
        0x00, 0x00, 0x08,
        0x00, 0x01,              // one wrap
        0x00, 0x03,              // highest sequence number
        0x00, 0x00, 0x00, 0x10,  // jitter 256 / 16
        0x12, 0x34, 0x56, 0x78,  // middle of the sender report's NTP time
        0x00, 0x01, 0x80, 0x00,  // 1.5 s ago
    };
    // clang-format on
    EXPECT_EQ(kExpected, Report(Time(2007, 2) /* 1003.5 s */));
}

TEST_F(StackRTCPTest, ReportWithoutASenderReport) {
    EXPECT_TRUE(Take(Packet().Seq(7)));
    // clang-format off
    const Bytes kExpected = {
        0x81, 201, 0x00, 0x07,
        0x00, 0x00, 0x00, 0x00,  // no local SSRC set
        0x11, 0x22, 0x33, 0x44,
        0x00, 0x00, 0x00, 0x00,
        0x00, 0x00, 0x00, 0x07,
        0x00, 0x00, 0x00, 0x00,
        0x00, 0x00, 0x00, 0x00,  // no sender report
        0x00, 0x03, 0x00, 0x00,  // the whole of now: 3 s
    };
    // clang-format on
    EXPECT_EQ(kExpected, Report(Time(3, 1)));
}

TEST_F(StackRTCPTest, FractionIsThatSinceTheLastReportAndTheCountThatOfAll) {
    EXPECT_TRUE(Take(Packet().Seq(1)));
    EXPECT_TRUE(Take(Packet().Seq(4)));
    Bytes lReport = Report();
    EXPECT_EQ((Bytes{128, 0, 0, 2}), Bytes(lReport.begin() + 12, lReport.begin() + 16));
    EXPECT_TRUE(Take(Packet().Seq(5)));
    lReport = Report();
    EXPECT_EQ((Bytes{0, 0, 0, 2}), Bytes(lReport.begin() + 12, lReport.begin() + 16));
    for (const UInt lSeq : {2U, 3U, 3U, 3U}) {
        Take(Packet().Seq(lSeq));
    }
    lReport = Report();
    EXPECT_EQ((Bytes{0, 0xFF, 0xFF, 0xFE}), Bytes(lReport.begin() + 12, lReport.begin() + 16))
        << "two duplicates more than losses";
}

TEST_F(StackRTCPTest, CumulativeLossSaturates) {
    // The largest steps forward that are not taken for steps back.
    for (UInt i = 0, lSeq = 1; i < 260; ++i, lSeq += 32767) {
        Take(Packet().Seq(lSeq));
    }
    const Bytes lReport = Report();
    EXPECT_EQ((Bytes{0x7F, 0xFF, 0xFF}), Bytes(lReport.begin() + 13, lReport.begin() + 16));
    EXPECT_GT(mStack.GetReception().mPacketsLost, 0x7FFFFF) << "tools see the whole of it";
}

TEST_F(StackRTCPTest, OffsetOfANewBaseDoesNotEnterTheReport) {
    EXPECT_TRUE(Take(Packet().Seq(100)));
    EXPECT_TRUE(Take(Packet().Seq(200)));
    mStack.SetSeqBase(500);
    EXPECT_TRUE(Take(Packet().Seq(503)));
    const Bytes lReport = Report();
    EXPECT_EQ((Bytes{0, 0, 1}), Bytes(lReport.begin() + 13, lReport.begin() + 16)) << "4 expected, 3 received";
    EXPECT_EQ((Bytes{0, 0, 1, 0xF7}), Bytes(lReport.begin() + 16, lReport.begin() + 20));
}

TEST_F(StackRTCPTest, FirstReportOfAResumedTrackTellsOfNoLoss) {
    for (UInt lSeq = 100; lSeq <= 600; ++lSeq) {
        EXPECT_TRUE(TakeFrame(lSeq));
    }
    EXPECT_EQ(0, Report()[12]);
    for (const UInt lBase : {601U, 64000U}) {
        PopAll();
        mStack.SetSeqBase(static_cast<unsigned short>(lBase));
        mStack.SetTimeBase(lBase * 3600);
        for (UInt lSeq = lBase; lSeq < lBase + 50; ++lSeq) {
            EXPECT_TRUE(TakeFrame(lSeq));
        }
        EXPECT_EQ(0, Report()[12]) << "resumed at " << lBase;
        EXPECT_TRUE(TakeFrame(lBase + 51));
        EXPECT_EQ(128, Report()[12]) << "a loss counts again";
    }
}

// ---------------------------------------------------------------- alignment of tracks

/// Two tracks with a sender report each. By RTP the first is 3 s and the second 2 s behind its time base;
/// by the server's clock the first report was 0.5 s later.
class SynchronizeTest : public StackRTCPTest {
protected:
    SynchronizeTest() {
        mStack.SetTimeRes(8000);
        mStack.SetTimeBase(5000);
        mOther.SetTimeRes(kRes);
        mOther.SetExpectedSSRC(0x11223344);
        mOther.SetTimeBase(1000);
    }
    void SendReports() {
        Control(Compound().SR(100, 0x80000000, 5000 + 3 * 8000));
        SendToOther(Compound().SR(100, 0, 1000 + 2 * kRes));
    }
    void SendToOther(const RtcpCompound& aCompound) {
        const Bytes lBytes = aCompound.Build();
        ASSERT_TRUE(mOther.HandleRTCP(lBytes.data(), SizeOf(lBytes), Time(1, 1)));
    }

    Stack mOther;
};

TEST_F(SynchronizeTest, ShiftsPlayTimesByTheDifferenceOfTheClocks) {
    SendReports();
    EXPECT_TRUE(Take(Packet().Timestamp(5000 + 8000)));
    EXPECT_TRUE(Take(Packet().Seq(2).Timestamp(5000 + 16000)));
    mStack.Synchronize(mOther);

    EXPECT_EQ(5000 + 4000, mStack.GetAdjustedTimeBase());
    EXPECT_EQ(Time(5, 2), mStack.AdjustedLatestTime());
    EXPECT_EQ(Time(2, 1), mStack.LatestTime());
    EXPECT_EQ(Time(3, 2), mStack.Pop()->PlayTime());
    EXPECT_EQ(Time(3, 2), mStack.AdjustedCurrentTime());
    EXPECT_EQ(Time(1, 1), mStack.CurrentTime());
    EXPECT_EQ(Time(3, 2), mStack.GetReception().mCurrentTime);
    mStack.Pop();
    EXPECT_EQ(Time(5, 2), mStack.AdjustedLatestTime()) << "of the packet popped last";
    EXPECT_EQ(1000, mOther.GetAdjustedTimeBase()) << "the other one stays";
}

TEST_F(SynchronizeTest, SecondTimeChangesNothing) {
    SendReports();
    mStack.Synchronize(mOther);
    mStack.Synchronize(mOther);
    EXPECT_EQ(5000 + 4000, mStack.GetAdjustedTimeBase());
    mOther.Synchronize(mStack);
    EXPECT_EQ(1000, mOther.GetAdjustedTimeBase()) << "already aligned";
}

TEST_F(SynchronizeTest, ShiftsBackAsWell) {
    SendReports();
    mOther.Synchronize(mStack);
    EXPECT_EQ(1000 - 45000, mOther.GetAdjustedTimeBase());
}

TEST_F(SynchronizeTest, RoundsToTheNearestTick) {
    Control(Compound().SR(100, 0, 5000));
    SendToOther(Compound().SR(100, 0, 1000 + 84));  // 7.47 ticks of 1 / 8000 s
    mStack.Synchronize(mOther);
    EXPECT_EQ(5000 - 7, mStack.GetAdjustedTimeBase());
    mOther.Flush(Time(1, 1));
    SendToOther(Compound().SR(100, 0, 1000 + 85));  // 7.56 ticks, of which 7 are there
    mStack.Synchronize(mOther);
    EXPECT_EQ(5000 - 8, mStack.GetAdjustedTimeBase());
}

TEST_F(SynchronizeTest, NeedsASenderReportOfBoth) {
    Control(Compound().SR(100, 0x80000000, 5000 + 3 * 8000));
    mStack.Synchronize(mOther);
    mOther.Synchronize(mStack);
    EXPECT_EQ(5000, mStack.GetAdjustedTimeBase());
    EXPECT_EQ(1000, mOther.GetAdjustedTimeBase());
}

TEST_F(SynchronizeTest, NeedsATimeBaseOrAPacketOfBoth) {
    mOther.SetTimeBase(0);
    SendReports();
    mStack.Synchronize(mOther);
    EXPECT_EQ(5000, mStack.GetAdjustedTimeBase());
    mOther.Synchronize(mStack);
    EXPECT_EQ(0, mOther.GetAdjustedTimeBase());

    const Bytes lBytes = Packet().Timestamp(0).Build();
    EXPECT_TRUE(mOther.HandleRTP(lBytes.data(), SizeOf(lBytes), Time(1, 1)));
    mStack.Synchronize(mOther);
    EXPECT_NE(5000, mStack.GetAdjustedTimeBase());
}

TEST_F(SynchronizeTest, NotWithItself) {
    SendReports();
    mStack.Synchronize(mStack);
    EXPECT_EQ(5000, mStack.GetAdjustedTimeBase());
}

TEST_F(SynchronizeTest, FlushForgetsTheShift) {
    SendReports();
    mStack.Synchronize(mOther);
    mStack.Flush(Time(1, 1));
    EXPECT_EQ(5000, mStack.GetAdjustedTimeBase());
}

}  // namespace
}  // namespace Player::RTP
