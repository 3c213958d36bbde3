#include "recording/Progress.hpp"

#include <gtest/gtest.h>

namespace Virertsp {
namespace {

using Player::Time;

TEST(ProgressTest, TimesAreForPeople) {
    struct Case {
        Time mTime;
        const char* mText;
    };
    for (const Case& lCase : {
             Case{Time(0), "00:00.0"},
             Case{Time(1949, 1000), "00:01.9"},
             Case{Time(1951, 1000), "00:02.0"},
             Case{Time(3599, 1), "59:59.0"},
             Case{Time(3600, 1), "1:00:00.0"},
             Case{Time(100 * 3600 + 61, 1), "100:01:01.0"},
         }) {
        EXPECT_EQ(lCase.mText, FormatTime(lCase.mTime));
    }
}

TEST(ProgressTest, ALineSaysItAll) {
    Totals lTotals;
    lTotals.mTime = Time(1234, 10);
    lTotals.mPackets = 812;
    lTotals.mLost = -1;
    lTotals.mBuffered = Time(284, 100);
    EXPECT_EQ("02:03.4  812 packets, -1 lost, 4012 kbit/s, 2.8 s buffered", FormatProgress(lTotals, 4012));
}

TEST(ProgressTest, TheTimeBeforeTheFirstSampleIsBuffering) {
    Totals lTotals;
    lTotals.mPackets = 12;
    lTotals.mBuffered = Time(15, 10);
    EXPECT_EQ("buffering  12 packets, 0 lost, 310 kbit/s, 1.5 s buffered", FormatProgress(lTotals, 310));
}

TEST(ProgressTest, NothingIsShownOutsideATerminal) {
    std::FILE* const lFile = std::tmpfile();
    Progress lProgress(lFile);
    const Player::MediaPlayer lPlayer;
    EXPECT_TRUE(lProgress.Update(lPlayer, Progress::Clock::now() + std::chrono::hours(1)));
    lProgress.Conclude(lPlayer, Progress::Clock::now());
    EXPECT_EQ(0, std::ftell(lFile));
    std::fclose(lFile);
}

}  // namespace
}  // namespace Virertsp
