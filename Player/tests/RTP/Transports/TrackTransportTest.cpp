// What all transports do alike, on one whose packets are put straight into the stacks.
#include "RTP/Transports/TrackTransport.hpp"

#include <gtest/gtest.h>

#include "RTP/Transports/RecordingProcessor.hpp"
#include "support/Datagrams.hpp"

namespace Player::RTP::Transports {

using Testing::Bytes;
using Testing::Compound;
using Testing::Packet;
using Testing::RecordingProcessor;
using Testing::SizeOf;
using TestSupport::RtcpCompound;
using Events = std::vector<std::string>;

namespace {

struct FakeTrack : Track {
    bool mHasArrived = false;
    UInt mTakenIn = 0;
};

class FakeTransport : public TrackTransport<FakeTrack> {
public:
    TrackIdx AddTrack() override { return Add(ScopedPtr<FakeTrack>(new FakeTrack)); }
    void Preflight() override {}
    using TrackTransport::AnswerRTCP;
    using TrackTransport::At;

protected:
    bool TakeIn(FakeTrack& aTrack) override {
        aTrack.mTakenIn += 1;
        return aTrack.mHasArrived;
    }
};

class TrackTransportTest : public testing::Test {
protected:
    static constexpr UInt kTracks = 3;

    TrackTransportTest() {
        for (UInt i = 0; i < kTracks; ++i) {
            EXPECT_EQ(i, mTransport.AddTrack());
            mProcessors[i].Set(new RecordingProcessor);
            mTransport.AttachTrack(i, mProcessors[i]);
            mTransport.ModifyTrackRTPStack(i).SetTimeRes(1);
        }
    }

    /// Queues packets whose index and play time are these numbers.
    void Queue(TrackIdx aIdx, std::initializer_list<UInt> aNumbers) {
        Stack& lStack = mTransport.ModifyTrackRTPStack(aIdx);
        if (0 == lStack.GetAdjustedTimeBase()) {
            lStack.SetSeqBase(1);
            lStack.SetTimeBase(1);
        }
        for (const UInt lNumber : aNumbers) {
            const Bytes lBytes = Packet().Seq(lNumber + 1).Timestamp(lNumber + 1).Build();
            ASSERT_TRUE(lStack.HandleRTP(lBytes.data(), SizeOf(lBytes), Time::Now()));
        }
    }
    void Bye(TrackIdx aIdx) {
        const Bytes lBytes = Compound().RR().BYE().Build();
        Stack& lStack = mTransport.ModifyTrackRTPStack(aIdx);
        lStack.SetExpectedSSRC(0x11223344);
        ASSERT_TRUE(lStack.HandleRTCP(lBytes.data(), SizeOf(lBytes), Time::Now()));
    }
    Events EventsOf(TrackIdx aIdx) { return mProcessors[aIdx]->Events(); }
    UInt TakenIn(TrackIdx aIdx) { return mTransport.At(aIdx).mTakenIn; }

    FakeTransport mTransport;
    SharedPtr<RecordingProcessor, SharedObject> mProcessors[kTracks];
};

TEST_F(TrackTransportTest, StacksBelongToTheirTracks) {
    mTransport.ModifyTrackRTPStack(1).SetTimeBase(77);
    EXPECT_EQ(0, mTransport.GetTrackRTPStack(0).GetAdjustedTimeBase());
    EXPECT_EQ(77, mTransport.GetTrackRTPStack(1).GetAdjustedTimeBase());
}

TEST_F(TrackTransportTest, NoticesReachTheirChains) {
    mTransport.NotifyTrack(1, "A", "b");
    EXPECT_EQ(Events{}, EventsOf(0));
    EXPECT_EQ(Events{"A=b"}, EventsOf(1));
    mTransport.Notify("State", "Playing");
    for (UInt i = 0; i < kTracks; ++i) {
        EXPECT_EQ(Events{"State=Playing"}, EventsOf(i));
    }
}

TEST_F(TrackTransportTest, FetchHandsOutAllThatTheChainTakes) {
    Queue(0, {0, 2, 5});
    EXPECT_TRUE(mTransport.FetchTrack(0));
    EXPECT_EQ((Events{"0@5", "2@5", "5@5"}), EventsOf(0));
    EXPECT_TRUE(mTransport.GetTrackRTPStack(0).Empty());
    EXPECT_FALSE(mTransport.FetchTrack(0));
    EXPECT_EQ(Events{}, EventsOf(0));
    EXPECT_EQ(0U, TakenIn(0)) << "nothing is read for it";
}

TEST_F(TrackTransportTest, FetchStopsWhenTheChainRefusesMore) {
    Queue(0, {0, 2, 5});
    mProcessors[0]->mRefuseAfter = 2;
    EXPECT_TRUE(mTransport.FetchTrack(0));
    EXPECT_EQ((Events{"0@5", "2@5"}), EventsOf(0)) << "the refusing packet is delivered";
    EXPECT_FALSE(mTransport.GetTrackRTPStack(0).Empty());
    mProcessors[0]->mRefuseAfter = 1;
    EXPECT_TRUE(mTransport.FetchTrack(0));
    EXPECT_EQ(Events{"5@5"}, EventsOf(0));
}

TEST_F(TrackTransportTest, FetchTellsTheLatestTimeOnTheCommonTimeLine) {
    Stack& lStack = mTransport.ModifyTrackRTPStack(0);
    Queue(0, {3});
    Stack lOther;
    lOther.SetTimeRes(1);
    lOther.SetTimeBase(1);
    lOther.SetExpectedSSRC(0x11223344);
    const Bytes lOwnReport = Compound().SR(100, 0, 31).Build();  // 30 s behind its base
    const Bytes lOtherReport = Compound().SR(100, 0, 11).Build();
    ASSERT_TRUE(lStack.HandleRTCP(lOwnReport.data(), SizeOf(lOwnReport), Time(1, 1)));
    ASSERT_TRUE(lOther.HandleRTCP(lOtherReport.data(), SizeOf(lOtherReport), Time(1, 1)));
    lStack.Synchronize(lOther);
    EXPECT_TRUE(mTransport.FetchTrack(0));
    EXPECT_EQ(Events{"3@23"}, EventsOf(0));
}

TEST_F(TrackTransportTest, FillOrHaveIsAlsoTrueForQueuedMedia) {
    EXPECT_FALSE(mTransport.FillOrHaveTrack(0));
    Queue(0, {0});
    EXPECT_FALSE(mTransport.FillTrack(0));
    EXPECT_TRUE(mTransport.FillOrHaveTrack(0));
    EXPECT_EQ(3U, TakenIn(0)) << "it reads in any case";
    mTransport.At(1).mHasArrived = true;
    EXPECT_TRUE(mTransport.FillTrack(1));
    EXPECT_TRUE(mTransport.FillOrHaveTrack(1));
}

TEST_F(TrackTransportTest, ProduceReadsThenFetches) {
    EXPECT_FALSE(mTransport.ProduceTrack(0));
    Queue(0, {4});
    EXPECT_TRUE(mTransport.ProduceTrack(0));
    EXPECT_EQ(Events{"4@4"}, EventsOf(0));
    EXPECT_EQ(2U, TakenIn(0));
    mTransport.At(0).mHasArrived = true;
    EXPECT_FALSE(mTransport.ProduceTrack(0)) << "nothing was passed on";
}

TEST_F(TrackTransportTest, OperationsOnAllVisitEveryTrack) {
    EXPECT_FALSE(mTransport.Fill());
    EXPECT_FALSE(mTransport.FillOrHave());
    EXPECT_FALSE(mTransport.Fetch());
    EXPECT_FALSE(mTransport.Produce());

    for (UInt i = 0; i < kTracks; ++i) {
        SCOPED_TRACE(i);
        mTransport.At(i).mHasArrived = true;
        EXPECT_TRUE(mTransport.Fill());
        EXPECT_TRUE(mTransport.FillOrHave());
        mTransport.At(i).mHasArrived = false;
        Queue(i, {1, 2});
        EXPECT_FALSE(mTransport.Fill());
        EXPECT_TRUE(mTransport.FillOrHave());
        mProcessors[i]->mRefuseAfter = 1;
        EXPECT_TRUE(mTransport.Fetch());
        EXPECT_TRUE(mTransport.Produce());
        EXPECT_EQ((Events{"1@2", "2@2"}), EventsOf(i));
        EXPECT_FALSE(mTransport.Produce());
    }
    EXPECT_EQ(3U + 6 * kTracks, TakenIn(0));
    EXPECT_EQ(TakenIn(0), TakenIn(2)) << "also after a true one";
    for (UInt i = 0; i < kTracks; ++i) {
        Queue(i, {7});
    }
    EXPECT_TRUE(mTransport.Fetch());
    for (UInt i = 0; i < kTracks; ++i) {
        EXPECT_EQ(Events{"7@7"}, EventsOf(i));
    }
}

TEST_F(TrackTransportTest, FlushEmptiesStackAndChain) {
    for (UInt i = 0; i < kTracks; ++i) {
        Queue(i, {1});
    }
    mTransport.FlushTrack(1);
    EXPECT_EQ(Events{}, EventsOf(0));
    EXPECT_EQ(Events{"Flush"}, EventsOf(1));
    EXPECT_FALSE(mTransport.GetTrackRTPStack(0).Empty());
    EXPECT_TRUE(mTransport.GetTrackRTPStack(1).Empty());
    mTransport.Flush();
    for (UInt i = 0; i < kTracks; ++i) {
        EXPECT_EQ(Events{"Flush"}, EventsOf(i));
        EXPECT_TRUE(mTransport.GetTrackRTPStack(i).Empty());
    }
}

TEST_F(TrackTransportTest, EndIsToldOncePerPlayAndWhenNothingIsQueued) {
    Queue(0, {1});
    Bye(0);
    FakeTrack& lTrack = mTransport.At(0);
    EXPECT_FALSE(lTrack.NotifyEnd(Time::Now()));
    EXPECT_EQ(Events{}, EventsOf(0));
    EXPECT_TRUE(mTransport.FetchTrack(0));
    EventsOf(0);
    EXPECT_TRUE(lTrack.NotifyEnd(Time::Now()));
    EXPECT_EQ(Events{"EndOfStream=Bye"}, EventsOf(0));
    EXPECT_FALSE(lTrack.NotifyEnd(Time::Now()));
    EXPECT_EQ(Events{}, EventsOf(0));

    mTransport.FlushTrack(0);
    EventsOf(0);
    EXPECT_FALSE(lTrack.NotifyEnd(Time::Now())) << "it runs again";
    Bye(0);
    EXPECT_TRUE(lTrack.NotifyEnd(Time::Now()));
    EXPECT_EQ(Events{"EndOfStream=Bye"}, EventsOf(0));
}

TEST_F(TrackTransportTest, EndTellsItsReason) {
    Stack& lStack = mTransport.ModifyTrackRTPStack(0);
    lStack.SetTimeoutTime(Time(20, 1));
    lStack.Preflight(Time(100, 1));
    EXPECT_FALSE(mTransport.At(0).NotifyEnd(Time(120, 1)));
    EXPECT_TRUE(mTransport.At(0).NotifyEnd(Time(121, 1)));
    EXPECT_EQ(Events{"EndOfStream=Timeout"}, EventsOf(0));

    Queue(1, {5});
    mTransport.ModifyTrackRTPStack(1).SetEndTime(Time(5, 1));
    mTransport.FetchTrack(1);
    EventsOf(1);
    EXPECT_TRUE(mTransport.At(1).NotifyEnd(Time::Now()));
    EXPECT_EQ(Events{"EndOfStream=EndTime"}, EventsOf(1));
}

TEST_F(TrackTransportTest, TrackWithoutAProcessorIsHarmless) {
    const TrackIdx lBare = mTransport.AddTrack();
    mTransport.ModifyTrackRTPStack(lBare).SetTimeRes(1);
    Queue(lBare, {1});
    mTransport.NotifyTrack(lBare, "A", "b");
    EXPECT_FALSE(mTransport.FetchTrack(lBare));
    EXPECT_FALSE(mTransport.ProduceTrack(lBare));
    EXPECT_TRUE(mTransport.FillOrHaveTrack(lBare)) << "the packet waits for a processor";
    mTransport.FlushTrack(lBare);
    EXPECT_TRUE(mTransport.GetTrackRTPStack(lBare).Empty());
    Bye(lBare);
    EXPECT_TRUE(mTransport.At(lBare).NotifyEnd(Time::Now()));
}

TEST_F(TrackTransportTest, AnsweredRTCPAlignsAllOtherTracks) {
    Byte lReport[32];
    const auto lAnswer = [&](TrackIdx aIdx, const RtcpCompound& aCompound) {
        const Bytes lBytes = aCompound.Build();
        return mTransport.AnswerRTCP(mTransport.At(aIdx), lBytes.data(), SizeOf(lBytes), lReport, 32);
    };
    for (UInt i = 0; i < kTracks; ++i) {
        Queue(i, {1});
    }
    EXPECT_EQ(0U, lAnswer(0, Compound(5).RR())) << "another source";
    EXPECT_EQ(32U, lAnswer(0, Compound().SR(100, 0, 11)));
    EXPECT_EQ(32U, lAnswer(1, Compound().SR(100, 0, 21)));
    EXPECT_EQ(1 - 10, mTransport.GetTrackRTPStack(0).GetAdjustedTimeBase()) << "moved to the one that reported";
    EXPECT_EQ(32U, lAnswer(2, Compound().SR(103, 0, 41)));
    // Behind its time base by RTP and at the server's clock: 40 s at 103, 20 s at 100, 20 s at 100.
    EXPECT_EQ(1 - 10 - 17, mTransport.GetTrackRTPStack(0).GetAdjustedTimeBase());
    EXPECT_EQ(1 - 17, mTransport.GetTrackRTPStack(1).GetAdjustedTimeBase());
    EXPECT_EQ(1, mTransport.GetTrackRTPStack(2).GetAdjustedTimeBase());
    EXPECT_EQ(201, lReport[1]);
}

TEST(TrackTransportDeathTest, IndexOutOfRangeIsAMistake) {
    FakeTransport lTransport;
    lTransport.AddTrack();
    const SharedPtr<Processor, SharedObject> lNone;
    const char* const kText = "aIdx < mTracks.size\\(\\)";
    EXPECT_DEATH(lTransport.AttachTrack(1, lNone), kText);
    EXPECT_DEATH(lTransport.ModifyTrackRTPStack(1), kText);
    EXPECT_DEATH(lTransport.GetTrackRTPStack(1), kText);
    EXPECT_DEATH(lTransport.NotifyTrack(1, "", ""), kText);
    EXPECT_DEATH(lTransport.FlushTrack(1), kText);
    EXPECT_DEATH(lTransport.FillTrack(1), kText);
    EXPECT_DEATH(lTransport.FillOrHaveTrack(1), kText);
    EXPECT_DEATH(lTransport.FetchTrack(1), kText);
    EXPECT_DEATH(lTransport.ProduceTrack(0xFFFFFFFF), kText);
}

TEST(TrackTransportDeathTest, AllOfNoTracksIsAMistake) {
    FakeTransport lTransport;
    const char* const kText = "0 != mTracks.size\\(\\)";
    EXPECT_DEATH(lTransport.Notify("", ""), kText);
    EXPECT_DEATH(lTransport.Flush(), kText);
    EXPECT_DEATH(lTransport.Fill(), kText);
    EXPECT_DEATH(lTransport.FillOrHave(), kText);
    EXPECT_DEATH(lTransport.Fetch(), kText);
    EXPECT_DEATH(lTransport.Produce(), kText);
}

TEST(TransportTest, OptionalOperationsDoNothing) {
    FakeTransport lTransport;
    lTransport.SetTrackLocalIP(9, "a");
    lTransport.SetTrackLocalPorts(9, "a");
    lTransport.SetTrackRemoteIP(9, "a");
    lTransport.SetTrackRemotePorts(9, "a");
    lTransport.SetInterLeavedChannelIdentifier(9, "a");
    EXPECT_EQ("", lTransport.GetTrackLocalIP(9));
    EXPECT_EQ("", lTransport.GetTrackLocalPorts(9));
    EXPECT_EQ("", lTransport.GetTrackRemoteIP(9));
    EXPECT_EQ("", lTransport.GetTrackRemotePorts(9));
    EXPECT_EQ(0, lTransport.GetChannelIndexByChannelIdentifier(9));
}

}  // namespace
}  // namespace Player::RTP::Transports
