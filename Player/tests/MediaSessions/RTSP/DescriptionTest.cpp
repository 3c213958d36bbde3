#include "MediaSessions/RTSP/Description.hpp"

#include <gtest/gtest.h>

#include "MediaSessions/RTSP/Peer.hpp"
#include "support/Throws.hpp"

namespace Player::MediaSessions {
namespace {

Description Parse(const std::string& aText) {
    return Description::Parse(Buffer(aText.data(), static_cast<UInt>(aText.size())));
}

TEST(DescriptionTest, HoldsSessionTracksAndTheRangeThatCanBePlayed) {
    const Description lDescription = Parse("v=0\na=range:npt=3-20\nm=video 0 RTP/AVP 96\nm=audio 0 RTP/AVP 97\n");
    EXPECT_TRUE(lDescription.IsComplete());
    ASSERT_EQ(2U, lDescription.mTrackProperties.size());
    EXPECT_EQ(Time(3, 1), lDescription.mAvailableStart);
    EXPECT_EQ(Time(20, 1), lDescription.mAvailableEnd);
    EXPECT_EQ(Time(0), lDescription.mPlayingStart);
    EXPECT_EQ(Time(0), lDescription.mPlayingEnd);
}

TEST(DescriptionTest, TheRangeIsTheFirstThatIsGiven) {
    const Description lDescription = Parse(
        "v=0\nm=video 0 RTP/AVP 96\nm=audio 0 RTP/AVP 97\na=range:npt=0-7\nm=text 0 RTP/AVP 98\na=range:npt=5-9\n");
    EXPECT_EQ(Time(0), lDescription.mAvailableStart);
    EXPECT_EQ(Time(7, 1), lDescription.mAvailableEnd);
}

TEST(DescriptionTest, WithoutMediaItIsNotComplete) {
    EXPECT_FALSE(Description().IsComplete());
    for (const char* lText : {"", "v=", "x=", "v=0", "v=0\na=range:npt=0-5\n"}) {
        EXPECT_FALSE(Parse(lText).IsComplete()) << lText;
    }
}

TEST(DescriptionTest, WhatIsNoDescriptionThrows) {
    EXPECT_EQ("18/1 ParseSDP(): Bad SDP syntax", TestSupport::Thrown([] { Parse("x=0"); }));
    EXPECT_EQ("18/16 ParseSDP(): Unsupported SDP version", TestSupport::Thrown([] { Parse("v=1"); }));
}

TEST(DescriptionTest, URLsAreBaseAndIdentifierAsTheyStand) {
    Description lDescription = Parse("v=0\nm=video 0 RTP/AVP 96\na=control:track1\nm=audio 0 RTP/AVP 97\n");
    lDescription.SetBase({"rtsp://h/base"}, Classic());
    EXPECT_EQ("rtsp://h/base", lDescription.mSessionProperties->Get("URL"));
    EXPECT_EQ("rtsp://h/basetrack1", lDescription.mTrackProperties.front()->Get("URL"));
    EXPECT_EQ("rtsp://h/base", lDescription.mTrackProperties.back()->Get("URL"));
}

TEST(DescriptionTest, OfSeveralTracksOfATypeTheFirstIsFound) {
    const Description lDescription =
        Parse("v=0\nm=audio 0 RTP/AVP 97\nm=video 0 RTP/AVP 96\na=control:a\nm=video 0 RTP/AVP 98\na=control:b\n");
    ASSERT_NE(nullptr, lDescription.FirstOfType("video"));
    EXPECT_EQ("a", lDescription.FirstOfType("video")->Get("Id"));
    EXPECT_EQ(nullptr, lDescription.FirstOfType("text"));
}

}  // namespace
}  // namespace Player::MediaSessions
