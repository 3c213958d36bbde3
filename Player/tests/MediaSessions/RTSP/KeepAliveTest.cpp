#include "MediaSessions/RTSP/KeepAlive.hpp"

#include <gtest/gtest.h>

namespace Player::MediaSessions {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

/// The seconds after which it is due.
long DueAfter(const std::string& aSession) {
    KeepAlive lKeepAlive;
    lKeepAlive.LearnFrom({{"Session", aSession}});
    const KeepAlive::Clock::time_point lStart{seconds(1000)};
    lKeepAlive.Sent(lStart);
    for (long lMilliseconds = 0; lMilliseconds <= 43200000; lMilliseconds += 500) {
        if (lKeepAlive.IsDue(lStart + milliseconds(lMilliseconds))) { return lMilliseconds; }
    }
    return -1;
}

TEST(KeepAliveTest, IsDueAtHalfOfTheTimeOut) {
    EXPECT_EQ(30000, DueAfter("5"));
    EXPECT_EQ(30000, DueAfter("5;timeout=60"));
    EXPECT_EQ(5000, DueAfter("5;timeout=10"));
    EXPECT_EQ(5000, DueAfter("5 ; Timeout=10 ;x"));
    EXPECT_EQ(500, DueAfter("5;timeout=1"));
    for (const char* lText : {"", "5;timeout", "5;timeout=", "5;timeout=0", "5;timeout=-1", "5;timeout=x"}) {
        EXPECT_EQ(30000, DueAfter(lText)) << lText;
    }
    EXPECT_EQ(43200000, DueAfter("5;timeout=99999999999999999999"));
}

TEST(KeepAliveTest, TheMethodIsOneThatTheServerKnows) {
    KeepAlive lKeepAlive;
    EXPECT_STREQ("OPTIONS", lKeepAlive.Method());
    lKeepAlive.LearnFrom({{"Public", "OPTIONS, DESCRIBE, GET_PARAMETER,PLAY"}});
    EXPECT_STREQ("GET_PARAMETER", lKeepAlive.Method());
    lKeepAlive.LearnFrom({{"Session", "5"}});
    EXPECT_STREQ("GET_PARAMETER", lKeepAlive.Method()) << "nothing is said";
    lKeepAlive.LearnFrom({{"Public", "SET_PARAMETER, GET_PARAMETERS"}});
    EXPECT_STREQ("OPTIONS", lKeepAlive.Method());
}

}  // namespace
}  // namespace Player::MediaSessions
