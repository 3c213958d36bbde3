#include "Player/MediaTrack.hpp"

#include <gtest/gtest.h>

#include "support/ReportCapture.hpp"
#include "support/Throws.hpp"

namespace Player::Consumers {
namespace {

using PacketPtr = SharedPtr<Packet, SharedObject>;
using TrackPtr = SharedPtr<MediaTrack, SharedObject>;

class MediaTrackTest : public testing::Test {
protected:
    void Put(long long aPlayTime, long long aLatest) {
        EXPECT_FALSE(mTrack->Handle(PacketPtr(new Packets::Media(Time(aPlayTime))), Time(aLatest)));
    }

    const SharedPtr<Properties, SharedObject> mInfo{new Properties};
    const TrackPtr mTrack{new MediaTrack(mInfo)};
    TestSupport::ReportCapture mReports;
};

TEST_F(MediaTrackTest, StartsEmpty) {
    EXPECT_TRUE(mTrack->Empty());
    EXPECT_FALSE(mTrack->Ended());
    EXPECT_FALSE(mTrack->TimedOut());
    EXPECT_EQ(Time(0), mTrack->LatestTime());
    EXPECT_EQ(Time(0), mTrack->TimeAvailable());
    EXPECT_EQ(mInfo.Ptr(), mTrack->Info().Ptr());
    EXPECT_EQ(nullptr, mTrack->Pop().Ptr());
    EXPECT_EQ(Time(0), mTrack->TimeAvailable());
}

TEST_F(MediaTrackTest, HandsPacketsOutInTheOrderOfTheirArrival) {
    const PacketPtr lFirst(new Packets::Media(Time(30)));
    const PacketPtr lSecond(new Packets::Media(Time(10)));
    EXPECT_FALSE(mTrack->Handle(lFirst, Time(100)));
    EXPECT_FALSE(mTrack->Handle(lSecond, Time(50)));
    EXPECT_FALSE(mTrack->Empty());
    EXPECT_EQ(2U, lFirst->GetRefCount());
    EXPECT_EQ(Time(50), mTrack->LatestTime()) << "the last one told, not the greatest";
    EXPECT_EQ(Time(50), mTrack->TimeAvailable());

    EXPECT_EQ(lFirst.Ptr(), mTrack->Pop().Ptr());
    EXPECT_EQ(1U, lFirst->GetRefCount());
    EXPECT_EQ(Time(20), mTrack->TimeAvailable()) << "latest time minus the play time taken out";
    EXPECT_EQ(lSecond.Ptr(), mTrack->Pop().Ptr());
    EXPECT_EQ(Time(40), mTrack->TimeAvailable());
    EXPECT_TRUE(mTrack->Empty());
    EXPECT_EQ(nullptr, mTrack->Pop().Ptr());
    EXPECT_EQ(Time(40), mTrack->TimeAvailable()) << "an empty queue changes nothing";
}

TEST_F(MediaTrackTest, HandleAsksForNoMore) {
    EXPECT_FALSE(mTrack->Handle(PacketPtr(new Packets::Media(Time(1))), Time(1)));
}

TEST_F(MediaTrackTest, EndOfStreamTellsATimeOutApart) {
    mTrack->Param("EndOfStream", "Timeout");
    EXPECT_TRUE(mTrack->Ended());
    EXPECT_TRUE(mTrack->TimedOut());
    mTrack->Param("EndOfStream", "");
    EXPECT_TRUE(mTrack->Ended());
    EXPECT_FALSE(mTrack->TimedOut()) << "a later end clears it";
}

TEST_F(MediaTrackTest, OtherEndsAreNoTimeOut) {
    for (const char* lVal : {"EndTime", "Bye", "Unknown", "timeout", "Timeout "}) {
        const TrackPtr lTrack(new MediaTrack(mInfo));
        lTrack->Param("EndOfStream", lVal);
        EXPECT_TRUE(lTrack->Ended()) << lVal;
        EXPECT_FALSE(lTrack->TimedOut()) << lVal;
    }
}

TEST_F(MediaTrackTest, OtherParamsAreReportedAndIgnored) {
    mTrack->Param("endofstream", "Timeout");
    mTrack->Param("Other", "Timeout");
    EXPECT_FALSE(mTrack->Ended());
    EXPECT_FALSE(mTrack->TimedOut());
    ASSERT_EQ(2U, mReports.All().size());
    EXPECT_EQ(Severity::Debug, mReports.All()[1].first);
    EXPECT_EQ("Got param: 'Other' -> 'Timeout'", mReports.All()[1].second);
}

TEST_F(MediaTrackTest, EndOfStreamIsReportedAndKeepsTheQueue) {
    Put(1, 2);
    mTrack->Param("EndOfStream", "Bye");
    ASSERT_EQ(1U, mReports.All().size());
    EXPECT_EQ("Got param: 'EndOfStream' -> 'Bye'", mReports.All()[0].second);
    EXPECT_FALSE(mTrack->Empty());
}

TEST_F(MediaTrackTest, FlushForgetsAllButTheTimeOut) {
    Put(10, 100);
    Put(20, 100);
    mTrack->Pop();
    mTrack->Param("EndOfStream", "Timeout");
    mTrack->Flush();
    EXPECT_TRUE(mTrack->Empty());
    EXPECT_FALSE(mTrack->Ended());
    EXPECT_TRUE(mTrack->TimedOut());
    EXPECT_EQ(Time(0), mTrack->LatestTime());
    EXPECT_EQ(Time(0), mTrack->TimeAvailable());
}

TEST_F(MediaTrackTest, FlushReleasesThePackets) {
    const PacketPtr lPacket(new Packets::Media(Time(0)));
    mTrack->Handle(lPacket, Time(0));
    mTrack->Flush();
    EXPECT_EQ(1U, lPacket->GetRefCount());
}

TEST(Consumer, NothingMayBeAttached) {
    const SharedPtr<Processor, SharedObject> lTrack(new MediaTrack(SharedPtr<Properties, SharedObject>()));
    TestSupport::ExpectThrow<SystemErr>(2, "Consumer::Attach(): Should never be called",
                                        [&] { lTrack->Attach(SharedPtr<Processor, SharedObject>()); });
}

}  // namespace
}  // namespace Player::Consumers
