#include "MediaSessions/RTSP/Request.hpp"

#include <gtest/gtest.h>

#include "MediaSessions/RTSP/CommaLocale.hpp"

namespace Player::MediaSessions {
namespace {

using Lines = std::vector<std::string>;

constexpr char kUserAgent[] = "User-Agent: QuenraPlayer/x.x (Build/Unknown; Platform/Linux; Device/Generic; )";

TEST(RequestTest, BeginsWithMethodNumberAndAgent) {
    const Configuration lConfig;
    EXPECT_EQ((Lines{"PLAY rtsp://host/clip RTSP/1.0", "CSeq: 7", kUserAgent}),
              Request("PLAY", "rtsp://host/clip", 7, lConfig).Lines());
    EXPECT_EQ((Lines{"PAUSE  RTSP/1.0", "CSeq: 4294967295", kUserAgent}),
              Request("PAUSE", "", 4294967295U, lConfig).Lines());
}

TEST(RequestTest, AgentNamesProductVersionAndDevice) {
    Configuration lConfig;
    lConfig.mUseUserAgentNameStr = "Name";
    lConfig.mUseUserAgentVersionStr = "1.2";
    lConfig.mUseDeviceStr = "TV set";
    EXPECT_EQ("User-Agent: Name/1.2 (Build/Unknown; Platform/Linux; Device/TV set; )",
              Request("PLAY", "u", 1, lConfig).Lines().at(2));
}

TEST(RequestTest, LinesStandInTheOrderOfTheirCallsAndSharedHeadersLast) {
    Configuration lConfig;
    lConfig.mSendNetworkType = "wifi";
    lConfig.mSendReferrer = "there";
    lConfig.mSendWAPProfile = "wap";
    // The credentials are not for every request.
    lConfig.mSendProxyAuth = "secret";
    Request lRequest("PLAY", "u", 1, lConfig);
    lRequest.Line("A: 1").Optional("B", "").Optional("C", "3").RangeFrom(Time(1, 1)).Line("");
    EXPECT_EQ((Lines{"PLAY u RTSP/1.0", "CSeq: 1", kUserAgent, "A: 1", "C: 3", "Range: npt=1.000000-", "",
                     "X-Network-Type: wifi", "Referrer: there", "X-WAP-Profile: wap"}),
              lRequest.Lines());
}

TEST(RequestTest, SharedHeadersAreSentWhenTheyHaveAValue) {
    for (int lMask = 0; lMask < 8; ++lMask) {
        Configuration lConfig;
        Lines lExpected = {"PLAY u RTSP/1.0", "CSeq: 1", kUserAgent};
        if (0 != (lMask & 1)) {
            lConfig.mSendNetworkType = "n";
            lExpected.emplace_back("X-Network-Type: n");
        }
        if (0 != (lMask & 2)) {
            lConfig.mSendReferrer = "r";
            lExpected.emplace_back("Referrer: r");
        }
        if (0 != (lMask & 4)) {
            lConfig.mSendWAPProfile = "w";
            lExpected.emplace_back("X-WAP-Profile: w");
        }
        EXPECT_EQ(lExpected, Request("PLAY", "u", 1, lConfig).Lines()) << lMask;
    }
}

TEST(RequestTest, TextsAreTakenAsTheyAreHoweverLong) {
    const std::string lLong = "rtsp://host/%s%n%u/" + std::string(5000, 'x');
    Configuration lConfig;
    lConfig.mUseDeviceStr = lLong;
    lConfig.mSendReferrer = lLong;
    const Lines lLines = Request("PLAY", lLong, 1, lConfig).Lines();
    EXPECT_EQ("PLAY " + lLong + " RTSP/1.0", lLines.at(0));
    EXPECT_EQ("User-Agent: QuenraPlayer/x.x (Build/Unknown; Platform/Linux; Device/" + lLong + "; )", lLines.at(2));
    EXPECT_EQ("Referrer: " + lLong, lLines.at(3));
}

std::string Range(Time aFrom) {
    const Configuration lConfig;
    return Request("PLAY", "u", 1, lConfig).RangeFrom(aFrom).Lines().at(3);
}

TEST(RequestTest, RangeIsInSecondsWithSixDecimals) {
    struct Case {
        long long mRaw;
        const char* mLine;
    };
    for (const Case& lCase : {
             Case{0, "Range: npt=0.000000-"},
             Case{1, "Range: npt=0.000000-"},
             // Half a millionth and more is rounded up.
             Case{2148, "Range: npt=0.000001-"},
             Case{0x80000000LL, "Range: npt=0.500000-"},
             Case{0xFFFFFFFFLL, "Range: npt=1.000000-"},
             Case{25LL << 31, "Range: npt=12.500000-"},
             Case{1000LL << 32, "Range: npt=1000.000000-"},
             Case{1234567LL << 32, "Range: npt=1234567.000000-"},
             Case{0x7FFFFFFFLL << 32, "Range: npt=2147483647.000000-"},
             Case{-(1LL << 31), "Range: npt=-0.500000-"},
         }) {
        EXPECT_EQ(lCase.mLine, Range(Time(lCase.mRaw))) << lCase.mRaw;
    }
}

TEST(RequestTest, NumbersAreTheSameInEveryLocale) {
    const Testing::CommaLocale lLocale;
    EXPECT_EQ("Range: npt=12.500000-", Range(Time(25, 2)));
    EXPECT_EQ("Range: npt=1234567.000000-", Range(Time(1234567, 1)));
    const Configuration lConfig;
    EXPECT_EQ("CSeq: 1234567", Request("PLAY", "u", 1234567, lConfig).Lines().at(1));
    if (!Testing::CommaLocale::ReachesPrintf()) { GTEST_SKIP() << "localedef is not there: only streams were tried"; }
}

}  // namespace
}  // namespace Player::MediaSessions
