#include "RTP/Transports/OverUDP.hpp"

#include <fcntl.h>
#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <utility>
#include <vector>

#include "RTP/Transports/LocalPorts.hpp"
#include "RTP/Transports/RecordingProcessor.hpp"
#include "support/Datagrams.hpp"
#include "support/ReportCapture.hpp"
#include "support/UdpSocket.hpp"

namespace Player::RTP::Transports {

using Testing::Bytes;
using Testing::Compound;
using Testing::DescriptorOf;
using Testing::kPortsBegin;
using Testing::kPortsEnd;
using Testing::LocalPort;
using Testing::Packet;
using Testing::RecordingProcessor;
using TestSupport::ReportCapture;
using TestSupport::UdpSocket;
using Events = std::vector<std::string>;

namespace {

// ---------------------------------------------------------------- receiving

class OverUDPTest : public testing::Test {
protected:
    static constexpr UInt kTracks = 2;

    OverUDPTest() : mTransport(kPortsBegin, kPortsEnd, "127.0.0.1") {
        for (UInt i = 0; i < kTracks; ++i) {
            mTransport.AddTrack();
            mPorts[i] = LocalPort(mTransport, i);
            mProcessors[i].Set(new RecordingProcessor);
            mTransport.AttachTrack(i, mProcessors[i]);
            mTransport.ModifyTrackRTPStack(i).SetTimeRes(1);
            mTransport.ModifyTrackRTPStack(i).SetLocalSSRC(0xA0A0A0A0);
        }
    }

    /// Pumps until it is so. Datagrams need not have crossed the loopback when `sendto` returns.
    template <typename Condition>
    static bool Until(Condition aCondition) {
        const auto lDeadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
        while (!aCondition()) {
            if (lDeadline < std::chrono::steady_clock::now()) { return false; }
        }
        return true;
    }
    bool FillUntilReceived(TrackIdx aIdx, UInt aPackets) {
        return Until([&] {
            mTransport.FillTrack(aIdx);
            return aPackets <= mTransport.GetTrackRTPStack(aIdx).GetReception().mPacketsReceived;
        });
    }
    Events EventsOf(TrackIdx aIdx) { return mProcessors[aIdx]->Events(); }
    /// Puts a file that is no socket behind the descriptor: every call of the socket layer fails.
    static void Break(UInt aPort) {
        const int lNull = ::open("/dev/null", O_RDWR | O_NONBLOCK);
        ASSERT_LE(0, lNull);
        ASSERT_LE(0, ::dup2(lNull, DescriptorOf(aPort)));
        ::close(lNull);
    }

    UdpSocket mPeer;
    OverUDP mTransport;
    UInt mPorts[kTracks] = {};
    SharedPtr<RecordingProcessor, SharedObject> mProcessors[kTracks];
};

TEST_F(OverUDPTest, WhatHasNoPlaceStaysInTheSocket) {
    constexpr UInt kLimit = 64000;
    const SharedPtr<Backlog, SharedObject> lBacklog(new Backlog(kLimit));
    for (TrackIdx i = 0; i < kTracks; ++i) {
        mTransport.ModifyTrackRTPStack(i).SetBacklog(lBacklog);
    }
    Stack& lStack = mTransport.ModifyTrackRTPStack(0);
    UInt lSent = 0;
    while (!lStack.Full()) {
        mPeer.Send(Packet().Seq(++lSent).PayloadSize(1000).Build(), mPorts[0]);
        ASSERT_TRUE(FillUntilReceived(0, lSent));
    }
    mPeer.Send(Packet().Seq(lSent + 1).PayloadSize(1000).Build(), mPorts[0]);
    mPeer.Send(Packet().Seq(1).Build(), mPorts[1]);
    ASSERT_TRUE(FillUntilReceived(1, 1)) << "another track holds little";
    lStack.SetTimeoutTime(Time(10, 1));
    lStack.Preflight(Time(1, 1));
    EXPECT_FALSE(mTransport.FillTrack(0));
    EXPECT_EQ(0U, lStack.Ended(Time::Now())) << "where nothing is read it is not silent";
    EXPECT_EQ(lSent, lStack.GetReception().mPacketsReceived);
    EXPECT_EQ(0U, lStack.GetReception().mPacketsDropped);

    lStack.Pop();
    lStack.Pop();
    ASSERT_TRUE(FillUntilReceived(0, lSent + 1));
}

TEST_F(OverUDPTest, TakesPacketsFromAnySender) {
    const UdpSocket lOther;
    mPeer.Send(Packet().Seq(1).Build(), mPorts[0]);
    lOther.Send(Packet().Seq(2).Build(), mPorts[0]);
    mPeer.Send(Packet().Seq(9).Build(), mPorts[1]);
    EXPECT_TRUE(FillUntilReceived(0, 2));
    EXPECT_TRUE(mTransport.GetTrackRTPStack(1).Empty()) << "each track its own socket";
    EXPECT_TRUE(FillUntilReceived(1, 1));
    EXPECT_TRUE(mTransport.Fetch());
    EXPECT_EQ((Events{"0@0", "1@0"}), EventsOf(0));
    EXPECT_EQ(Events{"0@0"}, EventsOf(1));
}

TEST_F(OverUDPTest, WhereTheServerIsIsKeptToItself) {
    mTransport.SetTrackRemoteIP(0, "127.0.0.1");
    mTransport.SetTrackRemotePorts(0, "6000-6001");
    EXPECT_EQ("", mTransport.GetTrackRemoteIP(0));
    EXPECT_EQ("", mTransport.GetTrackRemotePorts(0));
    EXPECT_EQ("", mTransport.GetTrackLocalIP(0));
}

TEST_F(OverUDPTest, FillTellsWhetherAnyPacketWasAccepted) {
    EXPECT_FALSE(mTransport.FillTrack(0));
    mPeer.Send(Packet().Build(), mPorts[0]);
    mPeer.Send(Packet().Version(1).Build(), mPorts[0]);
    EXPECT_TRUE(Until([&] { return mTransport.FillTrack(0); })) << "a bad one behind it changes nothing";
    EXPECT_FALSE(mTransport.FillTrack(0));
    EXPECT_TRUE(mTransport.FillOrHaveTrack(0));
    mPeer.Send(Packet().Version(1).Build(), mPorts[0]);
    mPeer.Send(Bytes(8), mPorts[0] + 1);
    mPeer.Send(Packet().Seq(2).Build(), mPorts[1]);
    EXPECT_TRUE(FillUntilReceived(1, 1));
    EXPECT_FALSE(mTransport.FillTrack(0));
    EXPECT_EQ(1U, mTransport.GetTrackRTPStack(0).GetReception().mPacketsReceived);
}

TEST_F(OverUDPTest, OneCallDrainsTheSocket) {
    // Should the loopback be slow, one of the rounds sees all packets there at once.
    constexpr UInt kPackets = 100;
    const bool lDrained = Until([&, lSeq = 0U]() mutable {
        for (UInt i = 0; i < kPackets; ++i) {
            mPeer.Send(Packet().Seq(++lSeq).PayloadSize(1300).Build(), mPorts[0]);
        }
        const UInt lBefore = mTransport.GetTrackRTPStack(0).GetReception().mPacketsReceived;
        mTransport.FillTrack(0);
        const UInt lTaken = mTransport.GetTrackRTPStack(0).GetReception().mPacketsReceived - lBefore;
        FillUntilReceived(0, lBefore + kPackets);
        return kPackets == lTaken;
    });
    EXPECT_TRUE(lDrained);
}

TEST_F(OverUDPTest, EmptyDatagramsEndNothing) {
    mTransport.ModifyTrackRTPStack(0).SetExpectedSSRC(0x11223344);
    const bool lInOneCall = Until([&, lRTPTime = 0U]() mutable {
        mPeer.Send(Bytes(), mPorts[0] + 1);
        mPeer.Send(Compound().SR(1, 0, ++lRTPTime).Build(), mPorts[0] + 1);
        const auto lIsRead = [&] { return lRTPTime == mTransport.GetTrackRTPStack(0).GetLastRTPTimeExt(); };
        mTransport.FillTrack(0);
        const bool lAtOnce = lIsRead();
        EXPECT_TRUE(Until([&] { return mTransport.FillTrack(0), lIsRead(); }));
        return lAtOnce;
    });
    EXPECT_TRUE(lInOneCall);
    mPeer.Send(Bytes(), mPorts[0]);
    mPeer.Send(Packet().Build(), mPorts[0]);
    EXPECT_TRUE(FillUntilReceived(0, 1));
}

TEST_F(OverUDPTest, LongDatagramsAreCut) {
    mPeer.Send(Packet().PayloadSize(1488).Seq(1).Build(), mPorts[0]);
    mPeer.Send(Packet().PayloadSize(1489).Seq(2).Build(), mPorts[0]);
    mPeer.Send(Packet().PayloadSize(60000).Seq(3).Build(), mPorts[0]);
    EXPECT_TRUE(FillUntilReceived(0, 3));
    Stack& lStack = mTransport.ModifyTrackRTPStack(0);
    while (!lStack.Empty()) {
        EXPECT_EQ(1488U, lStack.Pop()->Size());
    }
}

TEST_F(OverUDPTest, EveryPacketHasItsOwnArrival) {
    mTransport.ModifyTrackRTPStack(0).SetTimeoutTime(Time(3600, 1));
    mPeer.Send(Packet().Build(), mPorts[0]);
    const Time lBefore = Time::Now();
    EXPECT_TRUE(FillUntilReceived(0, 1));
    const Time lAfter = Time::Now();
    Stack& lStack = mTransport.ModifyTrackRTPStack(0);
    lStack.SetEndTime(Time(3600, 1));
    EXPECT_EQ(0U, lStack.Ended(lBefore + Time(3600, 1) - Time(1)));
    EXPECT_EQ(2U, lStack.Ended(lAfter + Time(3600, 1)));
}

TEST_F(OverUDPTest, RTCPIsAnsweredToItsSender) {
    const UdpSocket lControl;
    mPeer.Send(Packet().Seq(7).Build(), mPorts[0]);
    EXPECT_TRUE(FillUntilReceived(0, 1));
    lControl.Send(Compound().SR(0x00001234, 0x56780000, 5).Build(), mPorts[0] + 1);
    EXPECT_TRUE(Until([&] {
        mTransport.FillTrack(0);
        return 0 != mTransport.GetTrackRTPStack(0).GetLastNTPTime();
    }));
    const auto [lReport, lFrom] = lControl.Receive();
    EXPECT_EQ(mPorts[0] + 1, lFrom);
    ASSERT_EQ(32U, lReport.size());
    // clang-format off
    const Bytes kExpected = {
        0x81, 201, 0x00, 0x07,
        0xA0, 0xA0, 0xA0, 0xA0,
        0x11, 0x22, 0x33, 0x44,
        0x00, 0x00, 0x00, 0x00,
        0x00, 0x00, 0x00, 0x07,
        0x00, 0x00, 0x00, 0x00,
        0x12, 0x34, 0x56, 0x78,
    };
    // clang-format on
    EXPECT_EQ(kExpected, Testing::Prefix(lReport, 28)) << "DLSR depends on the clock";
}

TEST_F(OverUDPTest, NothingIsSentWithoutMediaOrForBadRTCP) {
    mTransport.ModifyTrackRTPStack(0).SetExpectedSSRC(0x11223344);
    mPeer.Send(Compound().SR(1, 0, 0).Build(), mPorts[0] + 1);
    EXPECT_TRUE(Until([&] {
        mTransport.FillTrack(0);
        return 0 != mTransport.GetTrackRTPStack(0).GetLastNTPTime();
    }));
    mPeer.Send(Packet().Build(), mPorts[0]);
    EXPECT_TRUE(FillUntilReceived(0, 1));
    mPeer.Send(Compound(5).RR().Build(), mPorts[0] + 1);
    mPeer.Send(Compound().SR(1, 0, 90).Build(), mPorts[0] + 1);
    EXPECT_TRUE(Until([&] {
        mTransport.FillTrack(0);
        return 90 == mTransport.GetTrackRTPStack(0).GetLastRTPTimeExt();
    }));
    EXPECT_EQ(32U, mPeer.Receive().first.size());
    UdpSocket().Send(Bytes{1}, mPeer.Port());
    EXPECT_EQ(Bytes{1}, mPeer.Receive().first) << "that was the only report";
}

TEST_F(OverUDPTest, RTCPAlignsTheOtherTracks) {
    for (UInt i = 0; i < kTracks; ++i) {
        mPeer.Send(Packet().Timestamp(1).Build(), mPorts[i]);
        EXPECT_TRUE(FillUntilReceived(i, 1));
    }
    for (UInt i = 0; i < kTracks; ++i) {
        mPeer.Send(Compound().SR(100, 0, 11 + 10 * i).Build(), mPorts[i] + 1);
        EXPECT_TRUE(Until([&] {
            mTransport.FillTrack(i);
            return 0 != mTransport.GetTrackRTPStack(i).GetLastNTPTime();
        }));
    }
    EXPECT_EQ(1 - 10, mTransport.GetTrackRTPStack(0).GetAdjustedTimeBase());
    EXPECT_EQ(1, mTransport.GetTrackRTPStack(1).GetAdjustedTimeBase());
}

// ---------------------------------------------------------------- failures

TEST_F(OverUDPTest, FailingRTPSocketDoesNotEndTheOthers) {
    const ReportCapture lReports;
    mPeer.Send(Packet().Build(), mPorts[0]);
    EXPECT_TRUE(FillUntilReceived(0, 1));
    Break(mPorts[0]);
    mPeer.Send(Compound().SR(1, 0, 0).Build(), mPorts[0] + 1);
    EXPECT_TRUE(Until([&] {
        EXPECT_FALSE(mTransport.FillTrack(0));
        return 0 != mTransport.GetTrackRTPStack(0).GetLastNTPTime();
    }));
    mPeer.Send(Packet().Build(), mPorts[1]);
    EXPECT_TRUE(Until([&] { return mTransport.Fill(); }));
    EXPECT_FALSE(mTransport.FillTrack(0));
    EXPECT_EQ(1U, lReports.CountBeginning(Severity::Warning, "OverUDP::FillTrack(): Nothing can be read from port " +
                                                                 std::to_string(mPorts[0]) + ": "));
    EXPECT_EQ(1U, lReports.CountBeginning(Severity::Warning));
}

TEST_F(OverUDPTest, FailingRTCPSocketDoesNotHideMedia) {
    const ReportCapture lReports;
    Break(mPorts[0] + 1);
    mPeer.Send(Packet().Build(), mPorts[0]);
    EXPECT_TRUE(Until([&] { return mTransport.FillTrack(0); }));
    mTransport.FillTrack(0);
    EXPECT_EQ(1U, lReports.CountBeginning(Severity::Warning, "OverUDP::FillTrack(): Nothing can be read from port " +
                                                                 std::to_string(mPorts[0] + 1) + ": "));
    EXPECT_EQ(1U, lReports.CountBeginning(Severity::Warning));
}

TEST_F(OverUDPTest, NothingToReadIsNoFailure) {
    const ReportCapture lReports;
    EXPECT_FALSE(mTransport.Fill());
    EXPECT_TRUE(lReports.All().empty());
}

TEST_F(OverUDPTest, ReportThatCannotBeSentIsDropped) {
    const ReportCapture lReports;
    mPeer.Send(Packet().Build(), mPorts[0]);
    EXPECT_TRUE(FillUntilReceived(0, 1));
    ::shutdown(DescriptorOf(mPorts[0] + 1), SHUT_WR);
    mPeer.Send(Compound().SR(1, 0, 1).Build(), mPorts[0] + 1);
    mPeer.Send(Compound().SR(1, 0, 2).Build(), mPorts[0] + 1);
    EXPECT_TRUE(Until([&] {
        mTransport.FillTrack(0);
        return 2 == mTransport.GetTrackRTPStack(0).GetLastRTPTimeExt();
    })) << "the packet behind is read as well";
    EXPECT_EQ(2U, lReports.CountBeginning(Severity::Warning, "OverUDP::SendReport(): UDP::WriteTo()"));
}

// ---------------------------------------------------------------- opening the way

TEST_F(OverUDPTest, PreflightPunchesAHoleFromEitherSocket) {
    const ReportCapture lReports;
    const UdpSocket lControl;
    mTransport.SetTrackRemoteIP(0, "127.0.0.1");
    mTransport.SetTrackRemotePorts(0, std::to_string(mPeer.Port()) + " - " + std::to_string(lControl.Port()));
    mTransport.Preflight();
    EXPECT_EQ(std::make_pair(Bytes(8, 0), mPorts[0]), mPeer.Receive());
    EXPECT_EQ(std::make_pair(Bytes(8, 0), mPorts[0] + 1), lControl.Receive());
    for (const UInt lPort : {mPeer.Port(), lControl.Port()}) {
        EXPECT_EQ(1, lReports.CountBeginning(Severity::Info,
                                             "Punching a hole to IP: 127.0.0.1, Port: " + std::to_string(lPort)));
    }
    EXPECT_EQ(2U, lReports.CountBeginning(Severity::Info)) << "the other track has no remote address";
}

TEST_F(OverUDPTest, SinglePortIsPunchedFromTheRTPSocket) {
    const ReportCapture lReports;
    for (const char* lTail : {"", "-"}) {
        mTransport.SetTrackRemoteIP(1, "127.0.0.1");
        mTransport.SetTrackRemotePorts(1, std::to_string(mPeer.Port()) + lTail);
        mTransport.Preflight();
        EXPECT_EQ(std::make_pair(Bytes(8, 0), mPorts[1]), mPeer.Receive());
    }
    EXPECT_EQ(2U, lReports.CountBeginning(Severity::Info)) << "one each";
}

TEST_F(OverUDPTest, NoHoleWithoutAddressOrPorts) {
    const ReportCapture lReports;
    mTransport.SetTrackRemoteIP(0, "127.0.0.1");
    mTransport.SetTrackRemotePorts(1, "5000-5001");
    mTransport.Preflight();
    EXPECT_EQ(0U, lReports.CountBeginning(Severity::Info));
}

TEST_F(OverUDPTest, HoleThatCannotBePunchedIsHarmless) {
    const ReportCapture lReports;
    mTransport.SetTrackRemoteIP(0, "127.0.0.1");
    mTransport.SetTrackRemotePorts(0, "no-port");
    mTransport.SetTrackRemoteIP(1, "127.0.0.1");
    mTransport.SetTrackRemotePorts(1, "0-" + std::to_string(mPeer.Port()));
    mTransport.Preflight();
    EXPECT_EQ(std::make_pair(Bytes(8, 0), mPorts[1] + 1), mPeer.Receive()) << "the one behind three failing ones";
    EXPECT_EQ(3U, lReports.CountBeginning(Severity::Warning, "OverUDP::PunchHole(): "));
}

TEST_F(OverUDPTest, MoreThanTwoRemotePortsAreAMistake) {
    mTransport.SetTrackRemoteIP(0, "127.0.0.1");
    mTransport.SetTrackRemotePorts(0, "5000-5001-5002");
    EXPECT_DEATH(mTransport.Preflight(), "2 >= lPorts.size\\(\\)");
}

TEST_F(OverUDPTest, PreflightStartsTheTimeOutsAnew) {
    Stack& lStack = mTransport.ModifyTrackRTPStack(0);
    lStack.SetTimeoutTime(Time(20, 1));
    lStack.Preflight(Time(1, 1));
    mTransport.Preflight();
    EXPECT_EQ(0U, lStack.Ended(Time::Now()));
    EXPECT_EQ(1U, lStack.Ended(Time::Now() + Time(21, 1)));
}

// ---------------------------------------------------------------- the end

TEST_F(OverUDPTest, EndIsToldOnceWhenTheQueueIsDrained) {
    const ReportCapture lReports;
    mTransport.ModifyTrackRTPStack(0).SetTimeoutTime(Time(1));
    mPeer.Send(Packet().Build(), mPorts[0]);
    EXPECT_TRUE(FillUntilReceived(0, 1));
    EXPECT_TRUE(Until([&] { return 1 == mTransport.ModifyTrackRTPStack(0).Ended(Time::Now()); }));
    EXPECT_FALSE(mTransport.FillTrack(0));
    EXPECT_EQ(Events{}, EventsOf(0)) << "timed out, but still queued";
    EXPECT_TRUE(mTransport.FetchTrack(0));
    EXPECT_EQ(Events{"0@0"}, EventsOf(0));
    EXPECT_FALSE(mTransport.FillTrack(0));
    EXPECT_EQ(Events{"EndOfStream=Timeout"}, EventsOf(0));
    EXPECT_FALSE(mTransport.FillTrack(0));
    EXPECT_EQ(Events{}, EventsOf(0));
    mTransport.Preflight();
    EXPECT_FALSE(mTransport.FillTrack(0));
    EXPECT_EQ(Events{"EndOfStream=Timeout"}, EventsOf(0)) << "once more for the next play";
}

TEST_F(OverUDPTest, EndIsNotToldWhileMediaComes) {
    mPeer.Send(Packet().Build(), mPorts[0]);
    EXPECT_TRUE(FillUntilReceived(0, 1));
    mTransport.ModifyTrackRTPStack(0).Pop();
    mPeer.Send(Compound().RR().BYE().Build(), mPorts[0] + 1);
    EXPECT_TRUE(Until([&] {
        mTransport.FillTrack(0);
        return 3 == mTransport.ModifyTrackRTPStack(0).Ended(Time(0));
    }));
    EXPECT_EQ(Events{"EndOfStream=Bye"}, EventsOf(0)) << "in the call that read it";
    mTransport.FlushTrack(0);
    EventsOf(0);

    // Nor is it looked for: the end time shows only in the call after.
    mTransport.ModifyTrackRTPStack(1).SetTimeBase(1);
    mTransport.ModifyTrackRTPStack(1).SetEndTime(Time(5, 1));
    mPeer.Send(Packet().Timestamp(1 + 7).Build(), mPorts[1]);
    EXPECT_TRUE(FillUntilReceived(1, 1));
    EXPECT_EQ(Reception::End::kRunning, mTransport.GetTrackRTPStack(1).GetReception().mEnd);
    EXPECT_FALSE(mTransport.FillTrack(1));
    EXPECT_EQ(Reception::End::kEndTime, mTransport.GetTrackRTPStack(1).GetReception().mEnd);

    // The bye is known when the next packet comes: that call delivers media and tells nothing.
    mPeer.Send(Packet().Seq(2).Build(), mPorts[0]);
    EXPECT_TRUE(FillUntilReceived(0, 1));
    const Bytes lBye = Compound().RR().BYE().Build();
    ASSERT_TRUE(mTransport.ModifyTrackRTPStack(0).HandleRTCP(lBye.data(), Testing::SizeOf(lBye), Time(1)));
    mPeer.Send(Packet().Seq(3).Build(), mPorts[0]);
    EXPECT_TRUE(FillUntilReceived(0, 2));
    EXPECT_EQ(Events{}, EventsOf(0));
}

}  // namespace
}  // namespace Player::RTP::Transports
