#include "Dialogue.hpp"

#include <gtest/gtest.h>

namespace Virertsp {
namespace {

using Clock = Dialogue::Clock;
using std::chrono::milliseconds;

Clock::time_point At(int aMilliseconds) {
    return Clock::time_point(milliseconds(aMilliseconds));
}

TEST(DialogueTest, AnswersComeInTheOrderOfTheRequests) {
    Dialogue lDialogue;
    lDialogue.TakeRequest("DESCRIBE", "rtsp://host/clip", At(100));
    lDialogue.TakeResponse(0x200, "OK", "Test/1.0", At(105));
    lDialogue.TakeRequest("SETUP", "rtsp://host/clip/1", At(110));
    lDialogue.TakeRequest("PLAY", "rtsp://host/clip", At(111));
    lDialogue.TakeResponse(0x461, "Unsupported transport", "", At(120));
    lDialogue.TakeResponse(0x455, "Unknown", "", At(131));
    lDialogue.TakeRequest("TEARDOWN", "rtsp://host/clip", At(140));
    lDialogue.TakeResponse(0x200, "", "", At(142));
    // One that nobody asked for.
    lDialogue.TakeResponse(0x200, "OK", "", At(143));

    EXPECT_EQ("Test/1.0", lDialogue.Server());
    struct Case {
        const char* mMethod;
        const char* mURL;
        unsigned mStatus;
        const char* mReason;
        int mTook;
    };
    const auto& lExchanges = lDialogue.Exchanges();
    ASSERT_EQ(4U, lExchanges.size());
    std::size_t lIndex = 0;
    for (const Case& lCase : {
             Case{"DESCRIBE", "rtsp://host/clip", 200, "OK", 5},
             Case{"SETUP", "rtsp://host/clip/1", 461, "Unsupported transport", 10},
             Case{"PLAY", "rtsp://host/clip", 455, "Unknown", 20},
             Case{"TEARDOWN", "rtsp://host/clip", 200, "", 2},
         }) {
        const Dialogue::Exchange& lExchange = lExchanges[lIndex++];
        EXPECT_EQ(lCase.mMethod, lExchange.mMethod);
        EXPECT_EQ(lCase.mURL, lExchange.mURL);
        EXPECT_EQ(lCase.mStatus, lExchange.mStatus);
        EXPECT_EQ(lCase.mReason, lExchange.mReason);
        EXPECT_EQ(milliseconds(lCase.mTook), lExchange.mRoundTrip);
    }
}

TEST(DialogueTest, RequestsWithoutAnAnswer) {
    Dialogue lDialogue;
    lDialogue.TakeRequest("DESCRIBE", "a", At(0));
    lDialogue.TakeResponse(0x000, "Unknown", "", At(1));
    lDialogue.TakeRequest("PLAY", "b", At(2));
    lDialogue.GiveUp();
    lDialogue.TakeRequest("TEARDOWN", "c", At(3));
    lDialogue.TakeResponse(0x200, "OK", "", At(4));
    ASSERT_EQ(3U, lDialogue.Exchanges().size());
    EXPECT_EQ(0U, lDialogue.Exchanges()[0].mStatus);
    EXPECT_EQ(0U, lDialogue.Exchanges()[1].mStatus);
    EXPECT_EQ(200U, lDialogue.Exchanges()[2].mStatus);
}

}  // namespace
}  // namespace Virertsp
