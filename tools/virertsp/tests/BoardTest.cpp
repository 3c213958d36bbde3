#include "watch/Board.hpp"

#include <gmock/gmock.h>

#include <algorithm>

namespace Virertsp {
namespace {

using ::testing::HasSubstr;
using ::testing::MatchesRegex;
using ::testing::StartsWith;

const WatchLine::Clock::time_point kStart = WatchLine::Clock::now();

Location::View Playing(unsigned aPackets, int aLost, unsigned aBytes, unsigned aSession = 1) {
    Location::View lView;
    lView.mState = Location::State::kPlaying;
    lView.mSession = aSession;
    lView.mTotals.mPackets = aPackets;
    lView.mTotals.mLost = aLost;
    lView.mTotals.mBytes = aBytes;
    return lView;
}

TEST(WatchLineTest, FiguresAreThoseSinceTheLookBefore) {
    WatchLine lLine("rtsp://host/a");
    lLine.Update(Playing(100, 0, 1000), kStart);
    lLine.Update(Playing(190, 10, 126000), kStart + std::chrono::seconds(1));
    EXPECT_EQ("rtsp://host/a  playing          1000.0  10.0%      10", lLine.Text(13));
    lLine.Update(Playing(290, 10, 126000), kStart + std::chrono::seconds(2));
    EXPECT_EQ("rtsp://h  playing             0.0   0.0%      10", lLine.Text(8));
    // Another session counts anew.
    lLine.Update(Playing(10, 0, 2500, 2), kStart + std::chrono::seconds(4));
    EXPECT_EQ("rtsp://h  playing            10.0   0.0%       0", lLine.Text(8));
    // Duplicates outnumber losses.
    lLine.Update(Playing(20, -5, 2500, 2), kStart + std::chrono::seconds(5));
    EXPECT_EQ("rtsp://h  playing             0.0   0.0%      -5", lLine.Text(8));
}

TEST(WatchLineTest, AFailureIsToldUntilTheNext) {
    Location lLocation;
    WatchLine lLine("rtsp://host/a");
    lLocation.Connecting();
    lLine.Update(lLocation.Look(), kStart);
    EXPECT_EQ("rtsp://host/a  connecting    ", lLine.Text(13));
    lLocation.Failed("It broke\x1b[2J.", kStart + std::chrono::seconds(4));
    lLine.Update(lLocation.Look(), kStart);
    EXPECT_THAT(lLine.Text(13), MatchesRegex("rtsp://host/a  waiting 4 s   "
                                             "[0-9][0-9]:[0-9][0-9]:[0-9][0-9] It broke\\?\\[2J\\."));
    lLocation.Connecting();
    lLine.Update(lLocation.Look(), kStart);
    EXPECT_THAT(lLine.Text(13), MatchesRegex("rtsp://host/a  connecting    [0-9:]* It broke\\?\\[2J\\."));
    EXPECT_EQ(2U, lLocation.Look().mSession);
}

TEST(WatchLineTest, AStateLastsUntilTheNext) {
    Location lLocation;
    WatchLine lLine("rtsp://host/a");
    const auto lShown = [&] {
        lLine.Update(lLocation.Look(), kStart);
        const std::string lText = lLine.Text(13).substr(15);
        return lText.substr(0, lText.find(' '));
    };
    for (int lSession = 0; lSession < 2; ++lSession) {
        lLocation.Connecting();
        EXPECT_EQ("connecting", lShown());
        Totals lTotals;
        lLocation.Received(lTotals);
        EXPECT_EQ("buffering", lShown());
        lTotals.mTime = Player::Time(1, 25);
        lLocation.Received(lTotals);
        EXPECT_EQ("playing", lShown());
        lLocation.Failed("It broke.", kStart);
        EXPECT_EQ("waiting", lShown());
    }
}

TEST(WatchLineTest, ColumnsAreThoseOfATerminal) {
    EXPECT_EQ("abc  ", Fitted("abc", 5));
    EXPECT_EQ("abcde", Fitted("abcdef", 5));
    EXPECT_EQ("\xc3\xa4\xc3\xa4", Fitted("\xc3\xa4\xc3\xa4\xc3\xa4", 2));
    // Each takes two columns.
    EXPECT_EQ("\xe6\xbc\xa2 ", Fitted("\xe6\xbc\xa2\xe5\xad\x97", 3));
    EXPECT_EQ("a?b", Fitted("a\nb", 3));
}

std::size_t Count(const std::string& aText, char aCh) {
    return static_cast<std::size_t>(std::count(aText.begin(), aText.end(), aCh));
}

TEST(BoardTest, ATerminalIsWrittenOver) {
    Board lBoard(Board::Kind::kTerminal, {"rtsp://host/a", "rtsp://host/b"});
    lBoard.Line(0).Update(Playing(1, 0, 100), kStart);
    const std::string lFirst = lBoard.Text(80, 24);
    EXPECT_THAT(lFirst, StartsWith("\rlocation       state "));
    EXPECT_THAT(lFirst, HasSubstr("\rrtsp://host/a  playing "));
    EXPECT_THAT(lFirst, HasSubstr("\rrtsp://host/b  connecting "));
    EXPECT_EQ(3U, Count(lFirst, '\n'));
    EXPECT_EQ("\033[3A" + lFirst, lBoard.Text(80, 24));
}

TEST(BoardTest, ATerminalIsNotWrittenBeyond) {
    std::vector<std::string> lURLs;
    for (unsigned i = 0; i < 30; ++i) {
        lURLs.push_back("rtsp://host/" + std::string(60, 'x') + std::to_string(i));
    }
    Board lBoard(Board::Kind::kTerminal, lURLs);
    for (const std::size_t lColumns : {1U, 20U, 80U, 200U}) {
        for (const std::size_t lRows : {1U, 4U, 24U}) {
            const std::string lText = lBoard.Text(lColumns, lRows);
            EXPECT_EQ(std::max<std::size_t>(lRows, 3) - 1, Count(lText, '\n'));
            for (std::size_t lAt = lText.find('\r'); std::string::npos != lAt; lAt = lText.find('\r', lAt + 1)) {
                EXPECT_EQ(lColumns - 1, lText.find("\033[K", lAt) - lAt - 1);
            }
        }
    }
    EXPECT_THAT(lBoard.Text(80, 24), HasSubstr("\rand 9 more "));
}

TEST(BoardTest, JsonIsOneLine) {
    Board lBoard(Board::Kind::kJson, {"rtsp://host/a", "rtsp://host/b"});
    lBoard.Line(0).Update(Playing(1, 0, 100), kStart);
    EXPECT_THAT(lBoard.Text(1, 1),
                MatchesRegex(R"(\{"time":[0-9]+,"locations":\[\{"url":"rtsp://host/a","state":"playing","session":1,)"
                             R"("kbit_per_s":0\.0,"loss_percent":0\.0,"packets":1,"lost":0,"failure":null,)"
                             R"("failed_at":null\},\{"url":"rtsp://host/b","state":"connecting",.*\}\]\})"
                             "\n"));
}

}  // namespace
}  // namespace Virertsp
