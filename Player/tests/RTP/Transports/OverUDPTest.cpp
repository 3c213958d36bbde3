#include "RTP/Transports/OverUDP.hpp"

#include <fcntl.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "Player/Exception.hpp"
#include "RTP/PacketBuilder.hpp"
#include "RTP/Transports/CountedReports.hpp"
#include "RTP/Transports/RecordingProcessor.hpp"
#include "RTP/Transports/UDPPeer.hpp"

namespace Player::RTP::Transports {

using Testing::Bytes;
using Testing::Compound;
using Testing::CountedReports;
using Testing::Packet;
using Testing::RecordingProcessor;
using Testing::UDPPeer;
using Events = std::vector<std::string>;

namespace {

constexpr UInt kPortsBegin = 20000;
constexpr UInt kPortsEnd = 60000;

UInt LocalPort(const OverUDP& aTransport, TrackIdx aIdx) {
    unsigned int lRTP = 0;
    unsigned int lRTCP = 0;
    // NOLINTNEXTLINE(cert-err34-c): the text is our own
    EXPECT_EQ(2, std::sscanf(aTransport.GetTrackLocalPorts(aIdx).c_str(), "%u-%u", &lRTP, &lRTCP));
    EXPECT_EQ(lRTP + 1, lRTCP);
    return lRTP;
}

/// This process's socket on that port; others may have the same port on other addresses.
int DescriptorOf(UInt aPort) {
    for (int lDescriptor = 3; lDescriptor < 1024; ++lDescriptor) {
        if (aPort == UDPPeer::BoundPort(lDescriptor)) { return lDescriptor; }
    }
    ADD_FAILURE() << "no socket on port " << aPort;
    return -1;
}

/// The first of so many consecutive even ports that were free a moment ago.
UInt FreePorts(UInt aPairs) {
    for (UInt lBegin = kPortsBegin; lBegin < kPortsEnd; lBegin += 2 * aPairs) {
        try {
            std::vector<std::unique_ptr<UDPPeer>> lPeers;
            for (UInt i = 0; i < 2 * aPairs; ++i) {
                lPeers.push_back(std::make_unique<UDPPeer>(lBegin + i));
            }
            return lBegin;
        } catch (const std::runtime_error&) { continue; }
    }
    ADD_FAILURE() << "no free ports";
    return 0;
}

// ---------------------------------------------------------------- port pairs

TEST(OverUDPPortsTest, TracksGetEvenPortsWithinTheRange) {
    OverUDP lTransport(kPortsBegin, kPortsEnd, "");
    std::vector<UInt> lPorts;
    for (TrackIdx i = 0; i < 4; ++i) {
        EXPECT_EQ(i, lTransport.AddTrack());
        const UInt lPort = LocalPort(lTransport, i);
        EXPECT_EQ(0U, lPort % 2);
        EXPECT_LE(kPortsBegin, lPort);
        EXPECT_GT(kPortsEnd, lPort);
        EXPECT_EQ(std::to_string(lPort) + "-" + std::to_string(lPort + 1), lTransport.GetTrackLocalPorts(i));
        DescriptorOf(lPort);
        DescriptorOf(lPort + 1);
        for (const UInt lOther : lPorts) {
            EXPECT_NE(lOther, lPort);
        }
        lPorts.push_back(lPort);
    }
}

TEST(OverUDPPortsTest, SearchBeginsAtARandomPort) {
    OverUDP lTransport(kPortsBegin, kPortsEnd, "");
    UInt lAsDrawn = 0;
    for (TrackIdx i = 0; i < 10; ++i) {
        std::srand(1000 + i);
        const UInt lDrawn = static_cast<UInt>(std::rand()) * 2 % (kPortsEnd - kPortsBegin) + kPortsBegin;
        std::srand(1000 + i);
        lTransport.AddTrack();
        if (lDrawn == LocalPort(lTransport, i)) { ++lAsDrawn; }
    }
    EXPECT_LE(5U, lAsDrawn) << "the others were taken by somebody";
}

TEST(OverUDPPortsTest, OnePairIsTriedOnce) {
    const UInt lBegin = FreePorts(1);
    OverUDP lTransport(lBegin, lBegin + 2, "");
    EXPECT_EQ(0U, lTransport.AddTrack());
    EXPECT_EQ(lBegin, LocalPort(lTransport, 0));

    const CountedReports lReports;
    try {
        lTransport.AddTrack();
        FAIL() << "a second pair from a range of one";
    } catch (const RTPErr& lError) {
        EXPECT_EQ(19U << 16 | 1, lError.Code());
        EXPECT_STREQ("OverUDP::Track(): Failed to create UDP port pair", lError.Message());
    }
    EXPECT_EQ(1, lReports.Count(Severity::Error, "Socket::Bind()"));
    EXPECT_EQ(1, lReports.Count(Severity::Error, "OverUDP::Track(): Failed to create UDP port pair"));
    EXPECT_DEATH(lTransport.FillTrack(1), "aIdx < mTracks.size\\(\\)") << "no track was made";
}

TEST(OverUDPPortsTest, EveryPairOfTheRangeIsTriedOnce) {
    constexpr UInt kPairs = 4;
    const UInt lBegin = FreePorts(kPairs);
    const CountedReports lReports;
    for (UInt lFree = 0; lFree < kPairs; ++lFree) {
        std::vector<std::unique_ptr<UDPPeer>> lTaken;
        for (UInt i = 0; i < kPairs; ++i) {
            if (i != lFree) { lTaken.push_back(std::make_unique<UDPPeer>(lBegin + 2 * i)); }
        }
        for (UInt lSeed = 0; lSeed < 8; ++lSeed) {
            std::srand(lSeed);
            OverUDP lTransport(lBegin, lBegin + 2 * kPairs, "");
            lTransport.AddTrack();
            EXPECT_EQ(lBegin + 2 * lFree, LocalPort(lTransport, 0));
            const long lBefore = lReports.Count(Severity::Error, "Socket::Bind()");
            EXPECT_THROW(lTransport.AddTrack(), RTPErr);
            EXPECT_EQ(lBefore + kPairs, lReports.Count(Severity::Error, "Socket::Bind()"));
        }
    }
}

TEST(OverUDPPortsTest, TakenRTCPPortMovesThePairOn) {
    const UInt lBegin = FreePorts(2);
    const CountedReports lReports;
    const UDPPeer lTaken(lBegin + 1);
    for (UInt lSeed = 0; lSeed < 8; ++lSeed) {
        std::srand(lSeed);
        OverUDP lTransport(lBegin, lBegin + 4, "");
        lTransport.AddTrack();
        EXPECT_EQ(lBegin + 2, LocalPort(lTransport, 0));
        EXPECT_NO_THROW(UDPPeer{lBegin}) << "the half of the pair that was free is free again";
    }
}

TEST(OverUDPPortsTest, BindsToTheLocalAddress) {
    const UInt lBegin = FreePorts(1);
    const CountedReports lReports;
    OverUDP lFirst(lBegin, lBegin + 2, "127.0.0.1");
    OverUDP lSecond(lBegin, lBegin + 2, "127.0.0.2");
    EXPECT_EQ(0U, lFirst.AddTrack());
    EXPECT_EQ(0U, lSecond.AddTrack()) << "the same ports of another address";
    OverUDP lThird(lBegin, lBegin + 2, "127.0.0.1");
    EXPECT_THROW(lThird.AddTrack(), RTPErr);
    OverUDP lFourth(lBegin, lBegin + 2, "not an address");
    EXPECT_THROW(lFourth.AddTrack(), RTPErr);
}

TEST(OverUDPPortsTest, SocketsAreNonBlockingAndHaveTheirBuffers) {
    OverUDP lTransport(kPortsBegin, kPortsEnd, "");
    lTransport.AddTrack();
    const struct {
        UInt mPort;
        int mBuffer;
    } kCases[] = {{LocalPort(lTransport, 0), 300000}, {LocalPort(lTransport, 0) + 1, 6000}};
    for (const auto& lCase : kCases) {
        const int lSocket = DescriptorOf(lCase.mPort);
        EXPECT_EQ(O_NONBLOCK, ::fcntl(lSocket, F_GETFL) & O_NONBLOCK);
        const auto lBufferOf = [](int aSocket) {
            int lSize = 0;
            socklen_t lLength = sizeof(lSize);
            ::getsockopt(aSocket, SOL_SOCKET, SO_RCVBUF, &lSize, &lLength);
            return lSize;
        };
        // The system makes of the wish what it likes, but the same each time.
        const int lReference = ::socket(AF_INET, SOCK_DGRAM, 0);
        ::setsockopt(lReference, SOL_SOCKET, SO_RCVBUF, &lCase.mBuffer, sizeof(lCase.mBuffer));
        EXPECT_EQ(lBufferOf(lReference), lBufferOf(lSocket)) << lCase.mBuffer;
        ::close(lReference);
    }
}

TEST(OverUDPDeathTest, Mistakes) {
    const char* const kRange = "\\(0 == aPortsBeg % 2\\) && 0 == \\(aPortsEnd % 2\\) && aPortsEnd > aPortsBeg";
    EXPECT_DEATH(OverUDP(5001, 5004, "").AddTrack(), kRange);
    EXPECT_DEATH(OverUDP(5000, 5003, "").AddTrack(), kRange);
    EXPECT_DEATH(OverUDP(5002, 5000, "").AddTrack(), kRange);
    EXPECT_DEATH(OverUDP(5000, 5000, "").AddTrack(), kRange);

    OverUDP lTransport(kPortsBegin, kPortsEnd, "");
    const char* const kIndex = "aIdx < mTracks.size\\(\\)";
    EXPECT_DEATH(lTransport.GetTrackLocalPorts(0), kIndex);
    EXPECT_DEATH(lTransport.SetTrackRemoteIP(0, ""), kIndex);
    EXPECT_DEATH(lTransport.SetTrackRemotePorts(0, ""), kIndex);
    EXPECT_DEATH(lTransport.Preflight(), "0 != mTracks.size\\(\\)");
}

TEST(OverUDPPortsTest, SessionIsSmall) {
    EXPECT_GT(64U * 1024, sizeof(OverUDP)) << "one batch for all tracks";
    EXPECT_GT(4U * 1024, sizeof(OverUDP::Track));
}

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

    UDPPeer mPeer;
    OverUDP mTransport;
    UInt mPorts[kTracks] = {};
    SharedPtr<RecordingProcessor, SharedObject> mProcessors[kTracks];
};

TEST_F(OverUDPTest, TakesPacketsFromAnySender) {
    const UDPPeer lOther;
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
    const UDPPeer lControl;
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
    UDPPeer().Send(Bytes{1}, mPeer.Port());
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
    const CountedReports lReports;
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
}

TEST_F(OverUDPTest, FailingRTCPSocketDoesNotHideMedia) {
    const CountedReports lReports;
    Break(mPorts[0] + 1);
    mPeer.Send(Packet().Build(), mPorts[0]);
    EXPECT_TRUE(Until([&] { return mTransport.FillTrack(0); }));
}

TEST_F(OverUDPTest, ReportThatCannotBeSentIsDropped) {
    const CountedReports lReports;
    mPeer.Send(Packet().Build(), mPorts[0]);
    EXPECT_TRUE(FillUntilReceived(0, 1));
    ::shutdown(DescriptorOf(mPorts[0] + 1), SHUT_WR);
    mPeer.Send(Compound().SR(1, 0, 1).Build(), mPorts[0] + 1);
    mPeer.Send(Compound().SR(1, 0, 2).Build(), mPorts[0] + 1);
    EXPECT_TRUE(Until([&] {
        mTransport.FillTrack(0);
        return 2 == mTransport.GetTrackRTPStack(0).GetLastRTPTimeExt();
    })) << "the packet behind is read as well";
    EXPECT_EQ(2, lReports.Count(Severity::Warning, "OverUDP::SendReport(): UDP::WriteTo()"));
}

// ---------------------------------------------------------------- opening the way

TEST_F(OverUDPTest, PreflightPunchesAHoleFromEitherSocket) {
    const CountedReports lReports;
    const UDPPeer lControl;
    mTransport.SetTrackRemoteIP(0, "127.0.0.1");
    mTransport.SetTrackRemotePorts(0, std::to_string(mPeer.Port()) + " - " + std::to_string(lControl.Port()));
    mTransport.Preflight();
    EXPECT_EQ(std::make_pair(Bytes(8, 0), mPorts[0]), mPeer.Receive());
    EXPECT_EQ(std::make_pair(Bytes(8, 0), mPorts[0] + 1), lControl.Receive());
    for (const UInt lPort : {mPeer.Port(), lControl.Port()}) {
        EXPECT_EQ(1,
                  lReports.Count(Severity::Info, "Punching a hole to IP: 127.0.0.1, Port: " + std::to_string(lPort)));
    }
    EXPECT_EQ(2, lReports.Count(Severity::Info)) << "the other track has no remote address";
}

TEST_F(OverUDPTest, SinglePortIsPunchedFromTheRTPSocket) {
    const CountedReports lReports;
    for (const char* lTail : {"", "-"}) {
        mTransport.SetTrackRemoteIP(1, "127.0.0.1");
        mTransport.SetTrackRemotePorts(1, std::to_string(mPeer.Port()) + lTail);
        mTransport.Preflight();
        EXPECT_EQ(std::make_pair(Bytes(8, 0), mPorts[1]), mPeer.Receive());
    }
    EXPECT_EQ(2, lReports.Count(Severity::Info)) << "one each";
}

TEST_F(OverUDPTest, NoHoleWithoutAddressOrPorts) {
    const CountedReports lReports;
    mTransport.SetTrackRemoteIP(0, "127.0.0.1");
    mTransport.SetTrackRemotePorts(1, "5000-5001");
    mTransport.Preflight();
    EXPECT_EQ(0, lReports.Count(Severity::Info));
}

TEST_F(OverUDPTest, HoleThatCannotBePunchedIsHarmless) {
    const CountedReports lReports;
    mTransport.SetTrackRemoteIP(0, "127.0.0.1");
    mTransport.SetTrackRemotePorts(0, "no-port");
    mTransport.SetTrackRemoteIP(1, "127.0.0.1");
    mTransport.SetTrackRemotePorts(1, "0-" + std::to_string(mPeer.Port()));
    mTransport.Preflight();
    EXPECT_EQ(std::make_pair(Bytes(8, 0), mPorts[1] + 1), mPeer.Receive()) << "the one behind three failing ones";
    EXPECT_EQ(3, lReports.Count(Severity::Warning, "OverUDP::PunchHole(): "));
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
    const CountedReports lReports;
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
