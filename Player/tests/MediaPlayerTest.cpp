#include "Player/MediaPlayer.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/ReportCapture.hpp"

namespace Player {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using PropertiesPtr = SharedPtr<Properties, SharedObject>;
using ProcessorPtr = SharedPtr<Processor, SharedObject>;

PropertiesPtr Info(const std::vector<std::pair<const char*, const char*>>& aEntries) {
    const PropertiesPtr lInfo(new Properties);
    for (const auto& [lKey, lVal] : aEntries) {
        lInfo->Insert(lKey, lVal);
    }
    return lInfo;
}

/// A session without a server: it counts the pump calls and delivers what a test tells it to.
class FakeSession : public MediaSession {
public:
    void Configure(const Properties& /*aConfig*/) override {}
    void Play(MediaHandler& /*aHandler*/, const std::string& /*aURL*/, Time /*aStart*/) override {}
    void Seek(MediaHandler& /*aHandler*/, Time /*aTo*/) override {}
    void Pause(MediaHandler& /*aHandler*/) override {}
    void Resume(MediaHandler& /*aHandler*/) override {}
    void Stop(MediaHandler& /*aHandler*/) override {}
    void Close(MediaHandler& /*aHandler*/) override {}
    bool Fill(UInt /*aTrack*/) override { return false; }
    bool Fetch(UInt /*aTrack*/) override { return false; }
    bool Produce(UInt aTrack) override {
        mProduced.push_back(aTrack);
        if (mOnProduce) { mOnProduce(); }
        return false;
    }
    Reception TrackReception(UInt aTrack) const override {
        Reception lFigures;
        lFigures.mPacketsReceived = 40 + aTrack;
        return lFigures;
    }

    std::vector<UInt> mProduced;
    std::function<void()> mOnProduce;
};

class TestPlayer : public MediaPlayer {
public:
    using MediaPlayer::SetSession;
};

class MediaPlayerTest : public testing::Test {
protected:
    MediaPlayerTest() { mPlayer.SetSession(mSession); }

    /// A track that is played, and where its chain ends.
    ProcessorPtr AddTrack() { return mPlayer.AcceptTrack(Info({{"Transport", "Sample"}})); }
    static void Put(const ProcessorPtr& aTrack, unsigned aPlayTime, unsigned aLatest) {
        aTrack->Handle(SharedPtr<Packet, SharedObject>(new Packet(Time(aPlayTime, 1))), Time(aLatest, 1));
    }

    TestSupport::ReportCapture mReports;
    const SharedPtr<FakeSession, SharedObject> mSession{new FakeSession};
    TestPlayer mPlayer;
};

TEST_F(MediaPlayerTest, StartsWithNothing) {
    EXPECT_FALSE(mPlayer.MediaWaits());
    EXPECT_FALSE(MediaPlayer().MediaWaits()) << "no session";
    EXPECT_EQ(nullptr, mPlayer.GetCommonInfo().Ptr());
    EXPECT_EQ(0U, mPlayer.GetTrackCount());
    Time lBegin(1);
    Time lEnd(1);
    mPlayer.GetAvailableRange(lBegin, lEnd);
    EXPECT_EQ(Time(0), lBegin);
    EXPECT_EQ(Time(0), lEnd);
    lBegin = lEnd = Time(1);
    mPlayer.GetPlayingRange(lBegin, lEnd);
    EXPECT_EQ(Time(0), lBegin);
    EXPECT_EQ(Time(0), lEnd);
    EXPECT_TRUE(mPlayer.IsEnded());
    EXPECT_TRUE(mPlayer.HasTimedOut());
}

TEST_F(MediaPlayerTest, SelectTracksReportsTheDescriptionAndKeepsIt) {
    const PropertiesPtr lSession = Info({{"SessionName", "%s"}, {"Empty", ""}});
    std::list<PropertiesPtr> lTracks = {Info({{"Id", "a"}, {"Format", "H264"}}), Info({}), Info({{"Id", "b"}})};
    mPlayer.SelectTracks(lSession, lTracks);
    EXPECT_THAT(mReports.Messages(Severity::Debug),
                ElementsAre("Common:", "    SessionName = %s", "    Empty = ", "Track 0:", "    Id = a",
                            "    Format = H264", "Track 1:", "Track 2:", "    Id = b"));
    EXPECT_EQ(9U, mReports.All().size());
    EXPECT_EQ(lSession.Ptr(), mPlayer.GetCommonInfo().Ptr());
    EXPECT_EQ(3U, lTracks.size());
    EXPECT_EQ(0U, mPlayer.GetTrackCount()) << "no track is played yet";
}

TEST_F(MediaPlayerTest, OnlyTracksOfSamplesAreAccepted) {
    EXPECT_EQ(nullptr, mPlayer.AcceptTrack(Info({{"Transport", "RTP/AVP"}})).Ptr());
    EXPECT_EQ(nullptr, mPlayer.AcceptTrack(Info({{"Transport", "sample"}})).Ptr());
    EXPECT_EQ(nullptr, mPlayer.AcceptTrack(Info({})).Ptr());
    const PropertiesPtr lFirst = Info({{"Transport", "Sample"}, {"Id", "a"}});
    const PropertiesPtr lSecond = Info({{"Transport", "Sample"}, {"Id", "b"}});
    EXPECT_NE(nullptr, mPlayer.AcceptTrack(lFirst).Ptr());
    EXPECT_EQ(nullptr, mPlayer.AcceptTrack(Info({{"Transport", ""}})).Ptr());
    EXPECT_NE(nullptr, mPlayer.AcceptTrack(lSecond).Ptr());
    ASSERT_EQ(2U, mPlayer.GetTrackCount()) << "indices stay dense";
    EXPECT_EQ(lFirst.Ptr(), mPlayer.GetTrackInfo(0).Ptr());
    EXPECT_EQ(lSecond.Ptr(), mPlayer.GetTrackInfo(1).Ptr());
}

TEST_F(MediaPlayerTest, ResetDiscardsTracksAndDescriptionButNoRange) {
    std::list<PropertiesPtr> lNone;
    mPlayer.SelectTracks(Info({}), lNone);
    AddTrack();
    mPlayer.AvailableRange(Time(1), Time(2));
    mPlayer.Reset();
    EXPECT_EQ(nullptr, mPlayer.GetCommonInfo().Ptr());
    EXPECT_EQ(0U, mPlayer.GetTrackCount());
    EXPECT_EQ(Time(1), mPlayer.GetAvailableDuration());
}

TEST_F(MediaPlayerTest, RangesAndDurations) {
    struct Case {
        int mBegin;
        int mEnd;
        int mDuration;
    };
    for (const Case& lCase : {Case{5, 10, 5}, Case{10, 5, 0}, Case{5, 5, 0}, Case{0, 0, 0}, Case{0, 7, 7}}) {
        const Time lBegin(lCase.mBegin, 1);
        const Time lEnd(lCase.mEnd, 1);
        const Time lDuration(lCase.mDuration, 1);
        Time lReadBegin;
        Time lReadEnd;

        mPlayer.PlayingRange(Time(1), Time(3));
        mPlayer.AvailableRange(lBegin, lEnd);
        EXPECT_EQ(lDuration, mPlayer.GetAvailableDuration());
        EXPECT_EQ(Time(2), mPlayer.GetPlayingDuration());
        mPlayer.GetAvailableRange(lReadBegin, lReadEnd);
        EXPECT_EQ(lBegin, lReadBegin);
        EXPECT_EQ(lEnd, lReadEnd);

        mPlayer.AvailableRange(Time(1), Time(4));
        mPlayer.PlayingRange(lBegin, lEnd);
        EXPECT_EQ(lDuration, mPlayer.GetPlayingDuration());
        EXPECT_EQ(Time(3), mPlayer.GetAvailableDuration());
        mPlayer.GetPlayingRange(lReadBegin, lReadEnd);
        EXPECT_EQ(lBegin, lReadBegin);
        EXPECT_EQ(lEnd, lReadEnd);
    }
}

TEST_F(MediaPlayerTest, ATrackThatIsNotThereHasEndedAndHoldsNothing) {
    AddTrack();
    for (const UInt lIdx : {1U, 2U, 0xFFFFFFFFU}) {
        EXPECT_TRUE(mPlayer.HasTrackTimedOut(lIdx));
        EXPECT_TRUE(mPlayer.IsTrackEnded(lIdx));
        EXPECT_EQ(Time(0), mPlayer.TrackTimeAvailable(lIdx));
        EXPECT_EQ(Time(0), mPlayer.TrackLatestTime(lIdx));
        EXPECT_FALSE(mPlayer.TrackHasPacket(lIdx));
        EXPECT_EQ(nullptr, mPlayer.GetTrackPacket(lIdx).Ptr());
        EXPECT_EQ(0U, mPlayer.GetTrackReception(lIdx).mPacketsReceived);
    }
    EXPECT_THAT(mSession->mProduced, IsEmpty()) << "nothing is read for them";
    EXPECT_FALSE(mPlayer.IsTrackEnded(0));
    EXPECT_FALSE(mPlayer.HasTrackTimedOut(0));
}

TEST_F(MediaPlayerTest, FiguresComeFromTheSession) {
    AddTrack();
    AddTrack();
    EXPECT_EQ(41U, mPlayer.GetTrackReception(1).mPacketsReceived);
    const TestPlayer lWithout;
    EXPECT_EQ(0U, lWithout.GetTrackReception(0).mPacketsReceived);
}

TEST_F(MediaPlayerTest, ThePresentationHasEndedWhenAllTracksHave) {
    const ProcessorPtr lFirst = AddTrack();
    const ProcessorPtr lSecond = AddTrack();
    EXPECT_FALSE(mPlayer.IsEnded());
    lFirst->Param("EndOfStream", "Timeout");
    EXPECT_TRUE(mPlayer.IsTrackEnded(0));
    EXPECT_TRUE(mPlayer.HasTrackTimedOut(0));
    EXPECT_FALSE(mPlayer.IsTrackEnded(1));
    EXPECT_FALSE(mPlayer.IsEnded());
    EXPECT_FALSE(mPlayer.HasTimedOut());
    lSecond->Param("EndOfStream", "Bye");
    EXPECT_TRUE(mPlayer.IsEnded());
    EXPECT_FALSE(mPlayer.HasTimedOut());
    lSecond->Param("EndOfStream", "Timeout");
    EXPECT_TRUE(mPlayer.HasTimedOut());
}

TEST_F(MediaPlayerTest, TimesOfATrack) {
    AddTrack();
    const ProcessorPtr lTrack = AddTrack();
    Put(lTrack, 3, 10);
    EXPECT_EQ(Time(10, 1), mPlayer.TrackLatestTime(1));
    EXPECT_EQ(Time(10, 1), mPlayer.TrackTimeAvailable(1));
    mPlayer.GetTrackPacket(1);
    EXPECT_EQ(Time(7, 1), mPlayer.TrackTimeAvailable(1));
    EXPECT_EQ(Time(0), mPlayer.TrackLatestTime(0));
}

TEST_F(MediaPlayerTest, OnlyForAnEmptyQueueIsMediaProducedAndOnlyOnce) {
    AddTrack();
    const ProcessorPtr lTrack = AddTrack();
    EXPECT_FALSE(mPlayer.TrackHasPacket(1));
    EXPECT_THAT(mSession->mProduced, ElementsAre(1));
    EXPECT_EQ(nullptr, mPlayer.GetTrackPacket(1).Ptr());
    EXPECT_THAT(mSession->mProduced, ElementsAre(1, 1));

    // What comes counts, whatever the call says.
    mSession->mOnProduce = [&] { Put(lTrack, 5, 5); };
    EXPECT_TRUE(mPlayer.TrackHasPacket(1));
    EXPECT_TRUE(mPlayer.TrackHasPacket(1));
    EXPECT_THAT(mSession->mProduced, ElementsAre(1, 1, 1));
    EXPECT_EQ(Time(5, 1), mPlayer.GetTrackPacket(1)->PlayTime());
    EXPECT_THAT(mSession->mProduced, ElementsAre(1, 1, 1));
    EXPECT_EQ(Time(5, 1), mPlayer.GetTrackPacket(1)->PlayTime());
    EXPECT_THAT(mSession->mProduced, ElementsAre(1, 1, 1, 1));
}

TEST_F(MediaPlayerTest, TracksMayGoWhileMediaIsProduced) {
    AddTrack();
    mSession->mOnProduce = [this] { mPlayer.Reset(); };
    EXPECT_FALSE(mPlayer.TrackHasPacket(0));
    AddTrack();
    EXPECT_EQ(nullptr, mPlayer.GetTrackPacket(0).Ptr());
}

using MediaPlayerDeathTest = MediaPlayerTest;

TEST_F(MediaPlayerDeathTest, InfoOfATrackThatIsNotThereIsAMistake) {
    AddTrack();
    EXPECT_DEATH(mPlayer.GetTrackInfo(1), "aIdx < mTracks.size\\(\\)");
}

}  // namespace
}  // namespace Player
