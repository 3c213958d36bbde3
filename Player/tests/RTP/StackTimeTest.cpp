// What a stack tells about time: of the packets, of the end, of figures for tools; and what a flush leaves.
#include "RTP/Stack.hpp"

#include <gtest/gtest.h>

#include "RTP/StackFixture.hpp"

namespace Player::RTP {

using Testing::Bytes;
using Testing::Packet;

namespace {

class StackTimeTest : public Testing::StackFixture {};

// ---------------------------------------------------------------- times

TEST_F(StackTimeTest, TellsWhatItHoldsInTime) {
    EXPECT_EQ(Time(0), mStack.SizeInTime());
    EXPECT_EQ(Time(0), mStack.CurrentTime());
    EXPECT_EQ(Time(0), mStack.LatestTime());

    mStack.SetTimeBase(1000);
    mStack.SetBeginTime(Time(10, 1));
    EXPECT_TRUE(Take(Packet().Seq(1).Timestamp(1000 + kRes)));
    EXPECT_EQ(Time(0), mStack.SizeInTime());
    EXPECT_EQ(Time(11, 1), mStack.LatestTime());
    EXPECT_TRUE(Take(Packet().Seq(2).Timestamp(1000 + 4 * kRes)));
    EXPECT_TRUE(Take(Packet().Seq(3).Timestamp(1000 + 3 * kRes)));
    EXPECT_EQ(Time(2, 1), mStack.SizeInTime()) << "by the back packet, not by the latest timestamp";
    EXPECT_EQ(Time(13, 1), mStack.LatestTime());
    EXPECT_EQ(Time(0), mStack.CurrentTime()) << "nothing was popped";

    mStack.Pop();
    EXPECT_EQ(Time(11, 1), mStack.CurrentTime());
    EXPECT_EQ(Time(-1, 1), mStack.SizeInTime());
    PopAll();
    EXPECT_EQ(Time(13, 1), mStack.CurrentTime());
    EXPECT_EQ(Time(13, 1), mStack.LatestTime()) << "of the packet popped last";
    EXPECT_EQ(Time(0), mStack.SizeInTime());
}

TEST_F(StackTimeTest, PlayTimesAreCutNotRounded) {
    mStack.SetTimeRes(3);
    mStack.SetTimeBase(100);
    EXPECT_TRUE(Take(Packet().Timestamp(102)));
    EXPECT_EQ(Time(2863311530), mStack.Pop()->PlayTime());
}

TEST_F(StackTimeTest, WithoutAClockRateAllTimesAreZero) {
    mStack.SetTimeRes(0);
    mStack.SetBeginTime(Time(10, 1));
    EXPECT_TRUE(TakeFrame(1));
    EXPECT_TRUE(TakeFrame(2));
    EXPECT_EQ(Time(0), mStack.LatestTime());
    EXPECT_EQ(Time(0), mStack.SizeInTime());
    EXPECT_EQ(Time(0), mStack.Pop()->PlayTime());
    EXPECT_EQ(Time(0), mStack.GetReception().mJitter);
}

// ---------------------------------------------------------------- the end

TEST_F(StackTimeTest, EndsWhenTheEndTimeIsReached) {
    mStack.SetTimeBase(1000);
    mStack.SetEndTime(Time(10, 1));
    mStack.Preflight(Time(100, 1));
    EXPECT_EQ(0U, mStack.Ended(Time(900, 1))) << "nothing was received";
    EXPECT_TRUE(Take(Packet().Timestamp(1000 + 8 * kRes), Time(200, 1)));
    EXPECT_EQ(0U, mStack.Ended(Time(200, 1)));
    EXPECT_EQ(0U, mStack.Ended(Time(202, 1) - Time(1)));
    EXPECT_EQ(2U, mStack.Ended(Time(202, 1))) << "8 s and 2 s of silence";
    EXPECT_EQ(2U, mStack.Ended(Time(0))) << "sticky";
}

TEST_F(StackTimeTest, ControlPacketsAloneCanReachTheEndTime) {
    mStack.SetExpectedSSRC(0x11223344);
    mStack.SetEndTime(Time(10, 1));
    mStack.Preflight(Time(100, 1));
    EXPECT_EQ(0U, mStack.Ended(Time(110, 1)));
    EXPECT_TRUE(Control(Testing::Compound().RR()));
    EXPECT_EQ(0U, mStack.Ended(Time(110, 1) - Time(1)));
    EXPECT_EQ(2U, mStack.Ended(Time(110, 1)));
}

TEST_F(StackTimeTest, TimesOutWhenBothAreSilent) {
    mStack.SetExpectedSSRC(0x11223344);
    mStack.SetTimeoutTime(Time(20, 1));
    mStack.Preflight(Time(100, 1));
    EXPECT_EQ(0U, mStack.Ended(Time(120, 1))) << "not yet beyond it";
    EXPECT_TRUE(Control(Testing::Compound().RR(), Time(110, 1)));
    EXPECT_EQ(0U, mStack.Ended(Time(130, 1)));
    EXPECT_TRUE(TakeFrame(1, Time(115, 1)));
    EXPECT_EQ(0U, mStack.Ended(Time(135, 1)));
    EXPECT_EQ(1U, mStack.Ended(Time(135, 1) + Time(1)));
    EXPECT_EQ(1U, mStack.Ended(Time(116, 1)));
}

TEST_F(StackTimeTest, WithoutAnRTPArrivalNothingHasElapsed) {
    mStack.SetTimeoutTime(Time(20, 1));
    EXPECT_EQ(0U, mStack.Ended(Time(1000000, 1)));
    mStack.Preflight(Time(1));
    EXPECT_EQ(1U, mStack.Ended(Time(1000000, 1)));
}

TEST_F(StackTimeTest, EndTimeGoesBeforeTheTimeOut) {
    mStack.SetEndTime(Time(10, 1));
    mStack.SetTimeoutTime(Time(5, 1));
    EXPECT_TRUE(TakeFrame(1, Time(100, 1)));
    EXPECT_EQ(2U, mStack.Ended(Time(200, 1)));
}

TEST_F(StackTimeTest, FirstReasonToEndStays) {
    mStack.SetTimeoutTime(Time(5, 1));
    EXPECT_TRUE(TakeFrame(1, Time(100, 1)));
    EXPECT_EQ(1U, mStack.Ended(Time(106, 1)));
    mStack.SetEndTime(Time(1, 1));
    EXPECT_EQ(1U, mStack.Ended(Time(106, 1))) << "beyond the end time as well";
    EXPECT_TRUE(Control(Testing::Compound().RR().BYE()));
    EXPECT_EQ(3U, mStack.Ended(Time(106, 1))) << "but a bye is a bye";
    EXPECT_EQ(3U, mStack.Ended(Time(206, 1)));
}

TEST_F(StackTimeTest, ZeroMeansNoEndAndNoTimeOut) {
    EXPECT_TRUE(TakeFrame(1, Time(100, 1)));
    EXPECT_EQ(0U, mStack.Ended(Time(1000000, 1)));
}

TEST_F(StackTimeTest, ByeEndsTheTrackWhilePacketsAreQueued) {
    EXPECT_TRUE(TakeFrame(1));
    EXPECT_TRUE(Control(Testing::Compound().RR().BYE()));
    EXPECT_EQ(3U, mStack.Ended(Time(1000, 1)));
    EXPECT_FALSE(mStack.Empty());
    EXPECT_TRUE(TakeFrame(2)) << "late packets still count";
    mStack.Preflight(Time(2000, 1));
    EXPECT_EQ(3U, mStack.Ended(Time(2000, 1)));
    mStack.Flush(Time(2000, 1));
    EXPECT_EQ(0U, mStack.Ended(Time(2000, 1)));
}

// ---------------------------------------------------------------- flush, reset, figures

TEST_F(StackTimeTest, FlushForgetsTheRunAndKeepsTheConfiguration) {
    mStack.SetSeqBase(100);
    mStack.SetTimeBase(5000);
    mStack.SetBeginTime(Time(50, 1));
    mStack.SetLocalSSRC(0x01020304);
    EXPECT_TRUE(Take(Packet().Seq(110).Timestamp(6000)));
    EXPECT_TRUE(Take(Packet().Seq(60).Timestamp(6000 + kRes).Seq(112)));
    EXPECT_TRUE(Control(Testing::Compound().SR(1000, 0, 6000)));
    mStack.Flush(Time(2000, 1));

    EXPECT_TRUE(mStack.Empty());
    EXPECT_EQ(0U, mStack.GetLastNTPTime());
    EXPECT_EQ(0U, mStack.GetLastRTPTimeExt());
    EXPECT_EQ(5000, mStack.GetAdjustedTimeBase());
    EXPECT_EQ(kRes, mStack.GetTimeRes());
    EXPECT_EQ(Time(0), mStack.CurrentTime());
    EXPECT_EQ(0U, mStack.GetReception().mPacketsReceived);
    EXPECT_EQ(0U, mStack.GetReception().mBytes);

    EXPECT_TRUE(Take(Packet().Seq(105).Timestamp(5900)));
    const Bytes lReport = Report();
    EXPECT_EQ((Bytes{1, 2, 3, 4, 0x11, 0x22, 0x33, 0x44}), Bytes(lReport.begin() + 4, lReport.begin() + 12));
    const auto lPacket = mStack.Pop();
    EXPECT_EQ(5U, lPacket->SeqNumberExt()) << "the base stays";
    EXPECT_EQ(900, lPacket->TimestampExt()) << "the begin time does not";
}

TEST_F(StackTimeTest, FlushKeepsTheLearntBase) {
    EXPECT_TRUE(Take(Packet().Seq(500).Timestamp(9000)));
    mStack.Flush(Time(1, 1));
    EXPECT_FALSE(Take(Packet().Seq(499).Timestamp(9000)));
    EXPECT_FALSE(Take(Packet().Seq(500).Timestamp(8999)));
    EXPECT_TRUE(Take(Packet().Seq(502).Timestamp(9000)));
    EXPECT_EQ(2U, mStack.Pop()->SeqNumberExt());
}

TEST_F(StackTimeTest, FlushStartsTheTimeOutAnew) {
    mStack.SetTimeoutTime(Time(20, 1));
    mStack.Preflight(Time(100, 1));
    mStack.Flush(Time(200, 1));
    EXPECT_EQ(0U, mStack.Ended(Time(220, 1)));
    EXPECT_EQ(1U, mStack.Ended(Time(221, 1)));
    mStack.Flush(Time(300, 1));
    EXPECT_EQ(0U, mStack.Ended(Time(320, 1))) << "no longer timed out";
}

TEST_F(StackTimeTest, ResetForgetsEverything) {
    mStack.SetExpectedPT(96);
    mStack.SetExpectedSSRC(1);
    mStack.SetLocalSSRC(2);
    mStack.SetSeqBase(100);
    mStack.SetTimeBase(200);
    mStack.SetEndTime(Time(1));
    mStack.SetTimeoutTime(Time(1));
    EXPECT_TRUE(Take(Packet().Ssrc(1).Seq(100).Timestamp(200)));
    mStack.Reset();

    EXPECT_TRUE(mStack.Empty());
    EXPECT_EQ(0U, mStack.GetTimeRes());
    EXPECT_EQ(0, mStack.GetAdjustedTimeBase());
    EXPECT_EQ(0U, mStack.Ended(Time(100000, 1)));
    EXPECT_TRUE(Take(Packet().Type(5).Ssrc(9).Seq(7).Timestamp(8)));
    EXPECT_EQ(0U, mStack.Ended(Time(200000, 1)));
    const Bytes lReport = Report();
    EXPECT_EQ((Bytes{0, 0, 0, 0, 0, 0, 0, 9}), Bytes(lReport.begin() + 4, lReport.begin() + 12));
    EXPECT_EQ(0U, mStack.Pop()->SeqNumberExt());
}

TEST_F(StackTimeTest, TellsToolsWhatItReceived) {
    mStack.SetTimeRes(8192);
    EXPECT_EQ(0, mStack.GetReception().mPacketsLost);
    const Time lStart(1000, 1);
    EXPECT_TRUE(Take(Packet().Seq(10).Timestamp(8192).PayloadSize(88), lStart));
    EXPECT_TRUE(Take(Packet().Seq(14).Timestamp(2 * 8192).PayloadSize(88), lStart + Time(1, 1) + Time(1, 32)));
    EXPECT_TRUE(Take(Packet().Seq(12).Timestamp(2 * 8192).PayloadSize(8), lStart + Time(1, 1) + Time(1, 32)));
    EXPECT_FALSE(Take(Packet().Seq(14).Timestamp(2 * 8192), lStart + Time(1, 1) + Time(1, 32)));
    mStack.Pop();
    mStack.Pop();

    const Reception lFigures = mStack.GetReception();
    EXPECT_EQ(4U, lFigures.mPacketsReceived);
    EXPECT_EQ(1, lFigures.mPacketsLost);
    EXPECT_EQ(1U, lFigures.mPacketsReordered);
    EXPECT_EQ(1U, lFigures.mPacketsDuplicate);
    EXPECT_EQ(100U + 100 + 20 + 13, lFigures.mBytes);
    // Times 16: 256; 256 - (264 >> 4) = 240; 240 - (248 >> 4) = 225; 14 ticks.
    EXPECT_EQ(Time(14, 8192), lFigures.mJitter);
    EXPECT_EQ(Time(1, 1), lFigures.mCurrentTime);
    EXPECT_EQ(Time(0), lFigures.mBufferedTime);
    EXPECT_EQ(Reception::End::kRunning, lFigures.mEnd);
    EXPECT_TRUE(Control(Testing::Compound().RR().BYE()));
    EXPECT_EQ(Reception::End::kBye, mStack.GetReception().mEnd);
}

// ---------------------------------------------------------------- losses over a resume

class ResumedLossTest : public StackTimeTest {
protected:
    /// The server goes on with this number.
    void Resume(UInt aSeq) {
        mStack.SetSeqBase(static_cast<unsigned short>(aSeq));
        mStack.SetTimeBase(aSeq * 3600);
    }
    void TakeFrames(UInt aFrom, UInt aTo) {
        for (UInt lSeq = aFrom; lSeq <= aTo; ++lSeq) {
            TakeFrame(lSeq);
        }
    }
    SInt Lost() const { return mStack.GetReception().mPacketsLost; }
};

TEST_F(ResumedLossTest, LossesOfFinishedRunsAddUp) {
    TakeFrames(100, 110);
    TakeFrames(113, 120);
    EXPECT_EQ(2, Lost());
    Resume(121);
    EXPECT_EQ(2, Lost()) << "nothing is missed of what is to come";
    TakeFrames(121, 130);
    EXPECT_EQ(2, Lost());
    TakeFrames(132, 140);
    EXPECT_EQ(3, Lost());
    for (const UInt lElsewhere : {40000U, 5U}) {
        Resume(lElsewhere);
        Resume(lElsewhere);
        TakeFrames(lElsewhere, lElsewhere + 9);
        EXPECT_EQ(3, Lost());
    }
    Resume(30000);
    TakeFrames(30001, 30010);
    EXPECT_EQ(4, Lost()) << "the first of a run is missed as well";
    EXPECT_EQ(11U + 8 + 10 + 9 + 2 * 10 + 10, mStack.GetReception().mPacketsReceived);
    mStack.Flush(Time(1, 1));
    EXPECT_EQ(0, Lost());
}

TEST_F(ResumedLossTest, WhatComesBeforeTheServersAnswerIsOfTheNewRun) {
    TakeFrames(100, 109);
    TakeFrames(111, 119);
    mStack.Preflight(Time(1000, 1));
    TakeFrames(120, 123);
    Resume(120);
    TakeFrames(124, 130);
    EXPECT_EQ(1, Lost());
}

TEST_F(ResumedLossTest, AServerMayUseNumbersAgain) {
    TakeFrames(100, 109);
    TakeFrames(111, 119);
    mStack.Preflight(Time(1000, 1));
    Resume(105);
    TakeFrames(105, 110);
    EXPECT_EQ(1, Lost());
}

TEST_F(ResumedLossTest, ARunMayBeginAFewNumbersBeforeTheOneThatIsNamed) {
    const struct {
        UInt mFirst;
        bool mIsTaken;
    } lCases[] = {{130, true}, {129, true}, {114, true}, {113, false}};
    const auto lBegin = [this] {
        mStack.SetSeqBase(0);
        mStack.SetTimeBase(0);
        mStack.Flush(Time(0));
        TakeFrames(100, 109);
    };
    for (const auto& lCase : lCases) {
        lBegin();
        mStack.SetSeqBase(130, 1);
        mStack.SetTimeBase(lCase.mFirst * 3600);
        EXPECT_EQ(lCase.mIsTaken, TakeFrame(lCase.mFirst)) << lCase.mFirst;
        if (!lCase.mIsTaken) { continue; }
        EXPECT_FALSE(TakeFrame(lCase.mFirst - 1)) << "only the first packet";
        EXPECT_EQ(0, Lost());
        UInt lIndex = mStack.Pop()->SeqNumberExt();
        while (!mStack.Empty()) {
            EXPECT_EQ(++lIndex, mStack.Pop()->SeqNumberExt());
        }
    }
    lBegin();
    mStack.SetSeqBase(130);
    EXPECT_FALSE(TakeFrame(129)) << "without a step";
}

}  // namespace
}  // namespace Player::RTP
