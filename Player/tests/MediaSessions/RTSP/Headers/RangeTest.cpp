#include "MediaSessions/RTSP/Headers/Range.hpp"

#include <gtest/gtest.h>

namespace Player::MediaSessions {
namespace {

TEST(RangeTest, HasAStartAndAnEnd) {
    const auto lRange = Range::Parse("npt=12.5-20");
    ASSERT_TRUE(lRange);
    EXPECT_EQ(Time(125, 10), lRange->mStart);
    EXPECT_EQ(Time(20, 1), lRange->mEnd);
}

TEST(RangeTest, AnEndMayBeOpen) {
    struct Case {
        const char* mValue;
        bool mHasStart;
        bool mHasEnd;
    };
    for (const Case& lCase : {Case{"npt=1-", true, false}, Case{"npt=-2", false, true}, Case{"npt=-", false, false},
                              Case{"npt", false, false}, Case{"npt=1", true, false},
                              Case{" npt = 1 - 2 ;time=3", true, true}, Case{"smpte=0:10-;npt=1-2", true, true}}) {
        const auto lRange = Range::Parse(lCase.mValue);
        ASSERT_TRUE(lRange) << lCase.mValue;
        EXPECT_EQ(lCase.mHasStart, lRange->mStart.has_value()) << lCase.mValue;
        EXPECT_EQ(lCase.mHasEnd, lRange->mEnd.has_value()) << lCase.mValue;
    }
}

TEST(RangeTest, OtherKindsOfTimeSayNothing) {
    for (const char* lValue : {"", "clock=19961108T143720.25Z-", "smpte=10:07:00-", "NPT=1-2", "1-2"}) {
        EXPECT_FALSE(Range::Parse(lValue)) << lValue;
    }
}

}  // namespace
}  // namespace Player::MediaSessions
