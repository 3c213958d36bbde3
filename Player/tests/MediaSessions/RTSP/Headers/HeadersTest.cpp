#include "MediaSessions/RTSP/Headers/Headers.hpp"

#include <gtest/gtest.h>

namespace Player::MediaSessions {
namespace {

TEST(HeadersTest, NamesAreOneInAnyCase) {
    Headers lHeaders;
    lHeaders["CSeq"] = "1";
    lHeaders["cseq"] = "2";
    lHeaders["CSEQ"] = "3";
    EXPECT_EQ(1U, lHeaders.size());
    EXPECT_EQ("3", HeaderValue(lHeaders, "cSeQ"));
    EXPECT_EQ("", HeaderValue(lHeaders, "CSe"));
    EXPECT_EQ("", HeaderValue(lHeaders, "CSeq "));
    EXPECT_EQ(1U, lHeaders.size());
}

TEST(HeadersTest, NamesAreOrderedWithoutTheirCase) {
    const LTI lLess;
    EXPECT_TRUE(lLess("a", "B"));
    EXPECT_FALSE(lLess("B", "a"));
    EXPECT_TRUE(lLess("A", "b"));
    EXPECT_FALSE(lLess("Range", "RANGE"));
    EXPECT_FALSE(lLess("RANGE", "Range"));
    EXPECT_TRUE(lLess("", "a"));
    // '_' lies between the upper and the lower case letters.
    EXPECT_TRUE(lLess("_", "A"));
}

TEST(HeadersTest, AConnectionHeaderThatBeginsWithCloseCloses) {
    struct Case {
        const char* mValue;
        bool mCloses;
    };
    for (const Case& lCase :
         {Case{"Close", true}, Case{"close", true}, Case{"CLOSED", true}, Case{"close, x", true}, Case{"Clos", false},
          Case{" close", false}, Case{"keep-alive, close", false}, Case{"", false}}) {
        EXPECT_EQ(lCase.mCloses, ClosesConnection({{"connection", lCase.mValue}})) << lCase.mValue;
    }
    EXPECT_FALSE(ClosesConnection({}));
    EXPECT_FALSE(ClosesConnection({{"Connect", "Close"}}));
}

}  // namespace
}  // namespace Player::MediaSessions
