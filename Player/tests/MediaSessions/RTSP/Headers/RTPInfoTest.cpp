#include "MediaSessions/RTSP/Headers/RTPInfo.hpp"

#include <gtest/gtest.h>

namespace Player::MediaSessions {
namespace {

TEST(RTPInfoTest, HasAnEntryPerTrack) {
    const auto lEntries = RTPInfo::Parse("url=rtsp://h/clip/video;seq=7;rtptime=8, url=rtsp://h/clip/audio;seq=9");
    ASSERT_EQ(2U, lEntries.size());
    EXPECT_EQ("rtsp://h/clip/video", lEntries[0].mURL);
    EXPECT_EQ("video", lEntries[0].mName);
    EXPECT_EQ(static_cast<unsigned short>(7), lEntries[0].mVars.mSeq);
    EXPECT_EQ(8U, lEntries[0].mVars.mRTPTime);
    EXPECT_EQ("audio", lEntries[1].mName);
    EXPECT_EQ(static_cast<unsigned short>(9), lEntries[1].mVars.mSeq);
    EXPECT_FALSE(lEntries[1].mVars.mRTPTime);
}

TEST(RTPInfoTest, TheNameIsWhatFollowsTheLastSlashOfTheFirstField) {
    struct Case {
        const char* mEntry;
        const char* mURL;
        const char* mName;
    };
    for (const Case& lCase : {
             Case{"url=video;seq=1/2", "video", nullptr},
             Case{"url=/", "/", ""},
             Case{" url=a/b ;seq=1", "a/b", "b"},
             Case{"seq=1;url=a/b", "", nullptr},
             Case{"a/b", "", "b"},
             Case{"url=rtsp://h/clip?a=/c=d", "rtsp://h/clip?a=/c=d", "c=d"},
             Case{";a/b", "", nullptr},
             Case{"URL=a/b", "", "b"},
         }) {
        const auto lEntries = RTPInfo::Parse(lCase.mEntry);
        ASSERT_EQ(1U, lEntries.size()) << lCase.mEntry;
        EXPECT_EQ(lCase.mURL, lEntries[0].mURL) << lCase.mEntry;
        EXPECT_EQ(nullptr != lCase.mName, lEntries[0].mName.has_value()) << lCase.mEntry;
        EXPECT_EQ(nullptr == lCase.mName ? "" : lCase.mName, lEntries[0].mName.value_or("")) << lCase.mEntry;
    }
}

TEST(RTPInfoTest, SoManyEntriesAreReadAndNoMore) {
    EXPECT_TRUE(RTPInfo::Parse("").empty());
    EXPECT_EQ(3U, RTPInfo::Parse(",,a,").size());
    EXPECT_EQ(16384U, RTPInfo::Parse(std::string(16384, ',')).size());
    EXPECT_EQ(16384U, RTPInfo::Parse(std::string(16385, ',')).size());
}

}  // namespace
}  // namespace Player::MediaSessions
