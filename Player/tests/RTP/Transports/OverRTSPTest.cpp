#include "RTP/Transports/OverRTSP.hpp"

#include <gtest/gtest.h>

#include <functional>
#include <vector>

#include "Player/Exception.hpp"
#include "RTP/Transports/RecordingProcessor.hpp"
#include "support/Datagrams.hpp"
#include "support/ReportCapture.hpp"

namespace Player::RTP::Transports {

using Testing::Bytes;
using Testing::Compound;
using Testing::Packet;
using Testing::RecordingProcessor;
using TestSupport::ReportCapture;
using Events = std::vector<std::string>;

namespace {

/// Does at each read what the test says, and keeps what is sent.
class FakeConnection final : public InterleavedConnection {
public:
    bool RecvInterleavedPackets() override {
        ++mReads;
        return mOnRead && mOnRead();
    }
    int Send_RR(const void* aData, UInt aSize) override {
        const Byte* const lData = static_cast<const Byte*>(aData);
        mSent.emplace_back(lData, lData + aSize);
        if (mFailsToSend) { throw NetworkErr(39, "broken"); }
        return static_cast<int>(aSize);
    }

    std::function<bool()> mOnRead;
    std::vector<Bytes> mSent;
    UInt mReads = 0;
    bool mFailsToSend = false;
};

class OverRTSPTest : public testing::Test {
protected:
    static constexpr UInt kTracks = 2;

    OverRTSPTest() : mTransport(&mConnection) {
        for (UInt i = 0; i < kTracks; ++i) {
            EXPECT_EQ(i, mTransport.AddTrack());
            mProcessors[i].Set(new RecordingProcessor);
            mTransport.AttachTrack(i, mProcessors[i]);
            mTransport.ModifyTrackRTPStack(i).SetTimeRes(1);
            mTransport.ModifyTrackRTPStack(i).SetLocalSSRC(0xA0A0A0A0);
        }
        mTransport.SetInterLeavedChannelIdentifier(0, "0-1");
        mTransport.SetInterLeavedChannelIdentifier(1, "2-3");
    }

    bool Deliver(unsigned char aChannel, Bytes aBytes) {
        return mTransport.HandlePacketData(aChannel, aBytes.data(), static_cast<unsigned short>(aBytes.size()));
    }
    Events EventsOf(TrackIdx aIdx) { return mProcessors[aIdx]->Events(); }

    FakeConnection mConnection;
    OverRTSP mTransport;
    SharedPtr<RecordingProcessor, SharedObject> mProcessors[kTracks];
};

TEST_F(OverRTSPTest, ReadsNoMoreWhenNoTrackHasPlace) {
    const SharedPtr<Backlog, SharedObject> lBacklog(new Backlog(64000));
    for (TrackIdx i = 0; i < kTracks; ++i) {
        Stack& lStack = mTransport.ModifyTrackRTPStack(i);
        lStack.SetBacklog(lBacklog);
        lStack.SetTimeoutTime(Time(10, 1));
        ASSERT_TRUE(Deliver(static_cast<unsigned char>(2 * i), Packet().Seq(1).PayloadSize(250 + 63750 * i).Build()));
        lStack.Preflight(Time(1, 1));
    }
    ASSERT_TRUE(mTransport.GetTrackRTPStack(0).Full());
    const UInt lReads = mConnection.mReads;
    for (TrackIdx i = 0; i < kTracks; ++i) {
        EXPECT_FALSE(mTransport.FillTrack(i));
        EXPECT_EQ(0U, mTransport.ModifyTrackRTPStack(i).Ended(Time::Now())) << "where nothing is read it is not silent";
    }
    EXPECT_FALSE(mTransport.Fill());
    EXPECT_TRUE(mTransport.FillOrHave());
    EXPECT_EQ(lReads, mConnection.mReads);
    EXPECT_TRUE(mTransport.Produce()) << "plays what it has";
    EXPECT_EQ(lReads, mConnection.mReads);
    mTransport.FillTrack(0);
    EXPECT_LT(lReads, mConnection.mReads);
}

TEST_F(OverRTSPTest, ChannelsLeadToTheirTracks) {
    const struct {
        int mChannel;
        int mTrack;
    } kCases[] = {{0, 0}, {1, 0}, {2, 1}, {3, 1}, {4, -1}, {255, -1}, {-1, -1}};
    for (const auto& lCase : kCases) {
        EXPECT_EQ(lCase.mTrack, mTransport.GetTrackByChannelId(lCase.mChannel)) << lCase.mChannel;
    }
}

TEST_F(OverRTSPTest, RTPChannelGoesBeforeTheRTCPChannelOfAnother) {
    mTransport.SetInterLeavedChannelIdentifier(1, "1-2");
    EXPECT_EQ(1, mTransport.GetTrackByChannelId(1));
    EXPECT_EQ(1, mTransport.GetTrackByChannelId(2));
    mTransport.SetInterLeavedChannelIdentifier(1, "0-1");
    EXPECT_EQ(0, mTransport.GetTrackByChannelId(0)) << "the first of two";
}

TEST_F(OverRTSPTest, ChannelIsTheLeadingNumber) {
    const struct {
        const char* mText;
        int mChannel;
    } kCases[] = {{"6-7", 6}, {"8", 8}, {" 10-11", 10}, {"", 0}, {"x", 0}, {"12;mode", 12}};
    for (const auto& lCase : kCases) {
        mTransport.SetInterLeavedChannelIdentifier(0, "99");
        mTransport.SetInterLeavedChannelIdentifier(0, lCase.mText);
        EXPECT_EQ(0, mTransport.GetTrackByChannelId(lCase.mChannel)) << lCase.mText;
    }
    mTransport.SetInterLeavedChannelIdentifier(0, "99999999999999999999");
}

TEST_F(OverRTSPTest, NewTracksBeginOnChannelZero) {
    EXPECT_EQ(2U, mTransport.AddTrack());
    mTransport.SetInterLeavedChannelIdentifier(0, "4-5");
    EXPECT_EQ(2, mTransport.GetTrackByChannelId(0));
}

TEST_F(OverRTSPTest, EvenChannelsCarryRTP) {
    EXPECT_TRUE(Deliver(2, Packet().Build()));
    EXPECT_TRUE(mTransport.GetTrackRTPStack(0).Empty());
    EXPECT_FALSE(mTransport.GetTrackRTPStack(1).Empty());
    EXPECT_FALSE(Deliver(2, Packet().Version(1).Build()));
    EXPECT_FALSE(Deliver(2, Bytes()));
    EXPECT_FALSE(Deliver(8, Packet().Build())) << "a channel of nobody";
    EXPECT_TRUE(mConnection.mSent.empty());
}

TEST_F(OverRTSPTest, PacketsAreCopied) {
    Bytes lBytes = Packet().Payload({7}).Build();
    EXPECT_TRUE(mTransport.HandlePacketData(0, lBytes.data(), static_cast<unsigned short>(lBytes.size())));
    lBytes.back() = 9;
    EXPECT_EQ(7, *mTransport.ModifyTrackRTPStack(0).Pop()->Begin());
}

TEST_F(OverRTSPTest, RTCPIsAnsweredOnTheTracksIndexPlusOne) {
    EXPECT_TRUE(Deliver(0, Packet().Seq(7).Build()));
    EXPECT_TRUE(Deliver(2, Packet().Seq(8).Ssrc(0x55667788).Build()));
    EXPECT_FALSE(Deliver(1, Compound().RR().Build())) << "no media";
    EXPECT_FALSE(Deliver(3, Compound(0x55667788).SR(0x00001234, 0x56780000, 1).Build()));
    ASSERT_EQ(2U, mConnection.mSent.size());
    // clang-format off
    const Bytes kHeader = {
        '$', 1, 0x00, 0x20,
        0x81, 201, 0x00, 0x07,
        0xA0, 0xA0, 0xA0, 0xA0,
        0x11, 0x22, 0x33, 0x44,
        0x00, 0x00, 0x00, 0x00,
        0x00, 0x00, 0x00, 0x07,
        0x00, 0x00, 0x00, 0x00,
        0x00, 0x00, 0x00, 0x00,
    };
    // clang-format on
    EXPECT_EQ(kHeader, Testing::Prefix(mConnection.mSent[0], 32)) << "DLSR depends on the clock";
    EXPECT_EQ(36U, mConnection.mSent[0].size());
    EXPECT_EQ((Bytes{'$', 2, 0x00, 0x20, 0x81, 201}), Testing::Prefix(mConnection.mSent[1], 6));
    EXPECT_EQ((Bytes{0x12, 0x34, 0x56, 0x78}),
              Bytes(mConnection.mSent[1].begin() + 28, mConnection.mSent[1].begin() + 32));
}

TEST_F(OverRTSPTest, NoReportWithoutMediaOrForBadRTCP) {
    mTransport.ModifyTrackRTPStack(0).SetExpectedSSRC(0x11223344);
    EXPECT_FALSE(Deliver(1, Compound().RR().Build()));
    EXPECT_TRUE(Deliver(0, Packet().Build()));
    EXPECT_FALSE(Deliver(1, Compound().BYE().Build()));
    EXPECT_FALSE(Deliver(1, Bytes()));
    EXPECT_TRUE(mConnection.mSent.empty());
    EXPECT_FALSE(Deliver(1, Compound().RR().Build()));
    EXPECT_EQ(1U, mConnection.mSent.size());
}

TEST_F(OverRTSPTest, RTCPAlignsTheOtherTracks) {
    EXPECT_TRUE(Deliver(0, Packet().Timestamp(1).Build()));
    EXPECT_TRUE(Deliver(2, Packet().Timestamp(1).Build()));
    EXPECT_FALSE(Deliver(1, Compound().SR(100, 0, 11).Build()));
    EXPECT_FALSE(Deliver(3, Compound().SR(100, 0, 21).Build()));
    EXPECT_EQ(1 - 10, mTransport.GetTrackRTPStack(0).GetAdjustedTimeBase());
    EXPECT_EQ(1, mTransport.GetTrackRTPStack(1).GetAdjustedTimeBase());
}

TEST_F(OverRTSPTest, ReportThatCannotBeSentIsDropped) {
    const ReportCapture lReports;
    mConnection.mFailsToSend = true;
    EXPECT_TRUE(Deliver(0, Packet().Build()));
    EXPECT_NO_THROW(Deliver(1, Compound().RR().Build()));
    EXPECT_EQ(1U, mConnection.mSent.size());
    EXPECT_EQ(1U, lReports.CountBeginning(Severity::Warning));
}

TEST_F(OverRTSPTest, ReceiveTellsWhatTheSessionTells) {
    EXPECT_FALSE(mTransport.Receive());
    mConnection.mOnRead = [] { return true; };
    EXPECT_TRUE(mTransport.Receive());
    EXPECT_EQ(2U, mConnection.mReads);
}

TEST_F(OverRTSPTest, FailingSocketIsNoMoreData) {
    const ReportCapture lReports;
    const std::string lReport = "OverRTSP::Receive(): Nothing can be read: reset by peer";
    const auto lFails = []() -> bool { throw NetworkErr(38, "reset by peer"); };
    mConnection.mOnRead = lFails;
    EXPECT_FALSE(mTransport.Receive());
    EXPECT_FALSE(mTransport.Fill());
    EXPECT_FALSE(mTransport.Produce());
    EXPECT_EQ(1U, lReports.CountBeginning(Severity::Warning, lReport)) << "once";
    mConnection.mOnRead = [] { return false; };
    EXPECT_FALSE(mTransport.Receive());
    mConnection.mOnRead = lFails;
    EXPECT_FALSE(mTransport.Receive());
    EXPECT_EQ(2U, lReports.CountBeginning(Severity::Warning, lReport)) << "and again after it went well";
    mConnection.mOnRead = []() -> bool { throw RTSPErr(2, "Invalid request"); };
    EXPECT_THROW(mTransport.Receive(), RTSPErr) << "a broken dialogue is another matter";
}

TEST_F(OverRTSPTest, FillNeedsAFrameAndMediaOfTheTrack) {
    mConnection.mOnRead = [this] { return Deliver(0, Packet().Build()), true; };
    EXPECT_FALSE(mTransport.FillTrack(1)) << "the frame was another track's";
    EXPECT_TRUE(mTransport.FillTrack(0));
    mConnection.mOnRead = [] { return false; };
    EXPECT_FALSE(mTransport.FillTrack(0)) << "media is queued, but nothing came";
    EXPECT_TRUE(mTransport.FillOrHaveTrack(0));
    mConnection.mOnRead = [] { return true; };
    EXPECT_TRUE(mTransport.FillTrack(0));
}

TEST_F(OverRTSPTest, OperationsOnAllReadOnceMore) {
    EXPECT_FALSE(mTransport.Fill());
    EXPECT_EQ(2U, mConnection.mReads);
    EXPECT_FALSE(mTransport.FillOrHave());
    EXPECT_EQ(2U + 3, mConnection.mReads);
    EXPECT_FALSE(mTransport.Produce());
    EXPECT_EQ(2U + 3 + 3, mConnection.mReads);
    EXPECT_FALSE(mTransport.Fetch());
    EXPECT_EQ(2U + 3 + 3, mConnection.mReads);
}

TEST_F(OverRTSPTest, ProduceDeliversWhatTheFirstReadBrought) {
    UInt lReads = 0;
    mConnection.mOnRead = [&] { return 0 == lReads++ && (Deliver(0, Packet().Build()), true); };
    EXPECT_TRUE(mTransport.Produce());
    EXPECT_EQ(Events{"0@0"}, EventsOf(0));
}

TEST_F(OverRTSPTest, EndIsToldInsteadOfReading) {
    EXPECT_TRUE(Deliver(0, Packet().Build()));
    EXPECT_FALSE(Deliver(1, Compound().RR().BYE().Build()));
    EXPECT_FALSE(mTransport.FillTrack(0));
    EXPECT_EQ(1U, mConnection.mReads) << "still queued: it reads";
    EXPECT_TRUE(mTransport.FetchTrack(0));
    EventsOf(0);

    mConnection.mOnRead = [] { return true; };
    EXPECT_FALSE(mTransport.FillTrack(0));
    EXPECT_EQ(Events{"EndOfStream=Bye"}, EventsOf(0));
    EXPECT_EQ(1U, mConnection.mReads);
    EXPECT_FALSE(mTransport.FillTrack(0));
    EXPECT_EQ(Events{}, EventsOf(0));
    EXPECT_EQ(2U, mConnection.mReads) << "once told, it reads again";
}

TEST_F(OverRTSPTest, EndOfATrackWithoutAProcessorIsHarmless) {
    const TrackIdx lBare = mTransport.AddTrack();
    mTransport.SetInterLeavedChannelIdentifier(lBare, "4-5");
    EXPECT_TRUE(Deliver(4, Packet().Build()));
    EXPECT_FALSE(mTransport.FetchTrack(lBare));
    EXPECT_FALSE(Deliver(5, Compound().RR().BYE().Build()));
    mTransport.ModifyTrackRTPStack(lBare).Pop();
    EXPECT_FALSE(mTransport.FillTrack(lBare));
    EXPECT_EQ(0U, mConnection.mReads);
    mTransport.Flush();
}

TEST_F(OverRTSPTest, BufferSizeIsThatOfTheShortestTrack) {
    EXPECT_EQ(Time(0), mTransport.GetBufferSizeInTime());
    EXPECT_TRUE(Deliver(0, Packet().Seq(1).Timestamp(1).Build()));
    EXPECT_TRUE(Deliver(0, Packet().Seq(2).Timestamp(6).Build()));
    EXPECT_EQ(Time(0), mTransport.GetBufferSizeInTime());
    EXPECT_TRUE(Deliver(2, Packet().Seq(1).Timestamp(1).Build()));
    EXPECT_TRUE(Deliver(2, Packet().Seq(2).Timestamp(4).Build()));
    EXPECT_EQ(Time(3, 1), mTransport.GetBufferSizeInTime());
}

TEST_F(OverRTSPTest, PreflightLeavesTheStacksAlone) {
    mTransport.ModifyTrackRTPStack(0).SetTimeoutTime(Time(1, 1));
    mTransport.Preflight();
    EXPECT_EQ(0U, mTransport.ModifyTrackRTPStack(0).Ended(Time::Now() + Time(100, 1)))
        << "no arrival, so no time-out runs";
}

TEST_F(OverRTSPTest, ResetDeletesAllTracks) {
    EXPECT_TRUE(Deliver(0, Packet().Build()));
    mTransport.Reset();
    EXPECT_EQ(-1, mTransport.GetTrackByChannelId(0));
    EXPECT_FALSE(Deliver(0, Packet().Build()));
    EXPECT_EQ(1U, mProcessors[0]->GetRefCount());
    EXPECT_EQ(0U, mTransport.AddTrack());
}

TEST(OverRTSPDeathTest, Mistakes) {
    FakeConnection lConnection;
    OverRTSP lTransport(&lConnection);
    EXPECT_DEATH(lTransport.GetBufferSizeInTime(), "0 != mTracks.size\\(\\)");
    EXPECT_DEATH(lTransport.FillOrHave(), "0 != mTracks.size\\(\\)");
    EXPECT_DEATH(lTransport.Produce(), "0 != mTracks.size\\(\\)");
    EXPECT_DEATH(lTransport.SetInterLeavedChannelIdentifier(0, "0-1"), "aIdx < mTracks.size\\(\\)");
    lTransport.Preflight();  // asks for no tracks

    OverRTSP lWithoutSession(nullptr);
    EXPECT_DEATH(lWithoutSession.Preflight(), "Assertion failed: mRTSPSession");
}

}  // namespace
}  // namespace Player::RTP::Transports
