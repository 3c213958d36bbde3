#include "MediaSessions/RTSP/Configuration.hpp"

#include <gtest/gtest.h>

#include <initializer_list>
#include <utility>

namespace Player::MediaSessions {
namespace {

Configuration Configured(std::initializer_list<std::pair<const char*, const char*>> aSettings) {
    Properties lProperties;
    for (const auto& lSetting : aSettings) {
        lProperties.Insert(lSetting.first, lSetting.second);
    }
    return Configuration(lProperties);
}

void ExpectDefaults(const Configuration& aConfig) {
    EXPECT_EQ("", aConfig.mUseLocalIP);
    EXPECT_EQ(10U, aConfig.mTimeOutAfter);
    EXPECT_EQ("Generic", aConfig.mUseDeviceStr);
    EXPECT_EQ("QuenraPlayer", aConfig.mUseUserAgentNameStr);
    EXPECT_EQ("x.x", aConfig.mUseUserAgentVersionStr);
    EXPECT_EQ("", aConfig.mUseProxy);
    EXPECT_EQ("", aConfig.mSendProxyAuth);
    EXPECT_EQ("", aConfig.mSendNetworkType);
    EXPECT_EQ("", aConfig.mSendReferrer);
    EXPECT_EQ("", aConfig.mSendWAPProfile);
    EXPECT_EQ(49152U, aConfig.mUseUDPPortsFrom);
    EXPECT_EQ(65536U, aConfig.mUseUDPPortsTo);
    EXPECT_EQ(3U, aConfig.mTargetRTPBuffer);
    EXPECT_EQ(20LL << 32, aConfig.mTimeOutRTPAfter.Get());
    EXPECT_FALSE(aConfig.mUseInterleavedRTP);
    EXPECT_STREQ("classic", aConfig.mDialect->Name());
    EXPECT_EQ("", aConfig.mUserName);
    EXPECT_EQ("", aConfig.mPassword);
    EXPECT_TRUE((Transports{true, false} == aConfig.mTransports));
    EXPECT_EQ(0U, aConfig.mUDPBuffer);
}

TEST(ConfigurationTest, AbsentAndEmptySettingsHaveDefaults) {
    ExpectDefaults(Configuration());
    ExpectDefaults(Configured({}));
    ExpectDefaults(Configured({{"RTSP:UseLocalIP", ""},
                               {"RTSP:TimeOutAfter", ""},
                               {"RTSP:UseDeviceStr", ""},
                               {"RTSP:UseUserAgentNameStr", ""},
                               {"RTSP:UseUserAgentVersionStr", ""},
                               {"RTSP:UseProxy", ""},
                               {"RTSP:SendProxyAuth", ""},
                               {"RTSP:SendNetworkType", ""},
                               {"RTSP:SendReferrer", ""},
                               {"RTSP:SendWAPProfile", ""},
                               {"RTSP:UseUDPPortsFrom", ""},
                               {"RTSP:UseUDPPortsTo", ""},
                               {"RTSP:TargetRTPBuffer", ""},
                               {"RTSP:TimeOutRTPAfter", ""},
                               {"RTSP:UseInterleavedRTP", ""},
                               {"RTSP:Profile", ""},
                               {"RTSP:UserName", ""},
                               {"RTSP:Password", ""},
                               {"RTSP:Transports", ""},
                               {"RTSP:UDPBuffer", ""}}));
    ExpectDefaults(Configured({{"RTSP:Profile", "classic"}}));
}

TEST(ConfigurationTest, EverySettingHasItsKey) {
    const Configuration lConfig = Configured({{"RTSP:UseLocalIP", "127.0.0.2"},
                                              {"RTSP:TimeOutAfter", "7"},
                                              {"RTSP:UseDeviceStr", "TV"},
                                              {"RTSP:UseUserAgentNameStr", "Name"},
                                              {"RTSP:UseUserAgentVersionStr", "1.2"},
                                              {"RTSP:UseProxy", "proxy:8080"},
                                              {"RTSP:SendProxyAuth", "Basic abc"},
                                              {"RTSP:SendNetworkType", "wifi"},
                                              {"RTSP:SendReferrer", "there"},
                                              {"RTSP:SendWAPProfile", "wap"},
                                              {"RTSP:UseUDPPortsFrom", "5000"},
                                              {"RTSP:UseUDPPortsTo", "6000"},
                                              {"RTSP:TargetRTPBuffer", "4"},
                                              {"RTSP:TimeOutRTPAfter", "9"},
                                              {"RTSP:UseInterleavedRTP", "1"},
                                              {"RTSP:Profile", "modern"},
                                              {"RTSP:UserName", "me"},
                                              {"RTSP:Password", "secret"},
                                              {"RTSP:Transports", "udp"},
                                              {"RTSP:UDPBuffer", "1000000"}});
    EXPECT_EQ("127.0.0.2", lConfig.mUseLocalIP);
    EXPECT_EQ(7U, lConfig.mTimeOutAfter);
    EXPECT_EQ("TV", lConfig.mUseDeviceStr);
    EXPECT_EQ("Name", lConfig.mUseUserAgentNameStr);
    EXPECT_EQ("1.2", lConfig.mUseUserAgentVersionStr);
    EXPECT_EQ("proxy:8080", lConfig.mUseProxy);
    EXPECT_EQ("Basic abc", lConfig.mSendProxyAuth);
    EXPECT_EQ("wifi", lConfig.mSendNetworkType);
    EXPECT_EQ("there", lConfig.mSendReferrer);
    EXPECT_EQ("wap", lConfig.mSendWAPProfile);
    EXPECT_EQ(5000U, lConfig.mUseUDPPortsFrom);
    EXPECT_EQ(6000U, lConfig.mUseUDPPortsTo);
    EXPECT_EQ(4U, lConfig.mTargetRTPBuffer);
    EXPECT_EQ(9LL << 32, lConfig.mTimeOutRTPAfter.Get());
    EXPECT_TRUE(lConfig.mUseInterleavedRTP);
    EXPECT_STREQ("modern", lConfig.mDialect->Name());
    EXPECT_EQ("me", lConfig.mUserName);
    EXPECT_EQ("secret", lConfig.mPassword);
    EXPECT_TRUE((Transports{true, false} == lConfig.mTransports));
    EXPECT_EQ(1000000U, lConfig.mUDPBuffer);
}

TEST(ConfigurationTest, TransportsAreThoseGivenOrThoseOfInterleavingOrOfTheProfile) {
    struct Case {
        const char* mTransports;
        const char* mInterleaved;
        const char* mProfile;
        Transports mResult;
    };
    for (const Case& lCase : {
             Case{"", "", "", {true, false}},
             Case{"", "1", "", {false, true}},
             Case{"", "", "modern", {true, true}},
             Case{"", "1", "modern", {false, true}},
             Case{"udp,tcp", "", "", {true, true}},
             Case{"tcp", "", "", {false, true}},
             Case{"udp", "1", "modern", {true, false}},
             Case{"none", "", "modern", {true, true}},
         }) {
        const Configuration lConfig = Configured({{"RTSP:Transports", lCase.mTransports},
                                                  {"RTSP:UseInterleavedRTP", lCase.mInterleaved},
                                                  {"RTSP:Profile", lCase.mProfile}});
        EXPECT_TRUE(lCase.mResult == lConfig.mTransports) << lCase.mTransports << lCase.mInterleaved << lCase.mProfile;
    }
}

// The element sets these two; only the exact spelling counts.
TEST(ConfigurationTest, KeysAreCaseSensitive) {
    ExpectDefaults(Configured({{"RTSP:TimeoutAfter", "7"}, {"RTSP:TimeoutRTPAfter", "7"}, {"rtsp:useproxy", "p"}}));
}

TEST(ConfigurationTest, PortRangesAreWidenedToEvenBounds) {
    struct Case {
        const char* mFrom;
        const char* mTo;
        UInt mEvenFrom;
        UInt mEvenTo;
    };
    for (const Case& lCase : {
             Case{"5001", "6001", 5000, 6002},
             Case{"5000", "6002", 5000, 6002},
             Case{"65535", "", 65534, 65536},
             Case{"65534", "65535", 65534, 65536},
             Case{"0", "1", 0, 2},
             Case{"1", "2", 0, 2},
             Case{"none", "2", 0, 2},
         }) {
        const Configuration lConfig =
            Configured({{"RTSP:UseUDPPortsFrom", lCase.mFrom}, {"RTSP:UseUDPPortsTo", lCase.mTo}});
        EXPECT_EQ(lCase.mEvenFrom, lConfig.mUseUDPPortsFrom) << lCase.mFrom;
        EXPECT_EQ(lCase.mEvenTo, lConfig.mUseUDPPortsTo) << lCase.mTo;
    }
}

TEST(ConfigurationTest, InterleavedIsAnyNumberButZero) {
    struct Case {
        const char* mText;
        bool mInterleaved;
    };
    for (const Case& lCase : {Case{"0", false}, Case{"1", true}, Case{"2", true}, Case{"-1", true}, Case{" 3x", true},
                              Case{"yes", false}, Case{"true", false}, Case{"x1", false}, Case{"0.9", false}}) {
        EXPECT_EQ(lCase.mInterleaved, Configured({{"RTSP:UseInterleavedRTP", lCase.mText}}).mUseInterleavedRTP)
            << lCase.mText;
    }
}

TEST(ConfigurationTest, NumbersAreReadAsFarAsTheyGo) {
    EXPECT_EQ(12U, Configured({{"RTSP:TimeOutAfter", " 12 seconds"}}).mTimeOutAfter);
    EXPECT_EQ(0U, Configured({{"RTSP:TargetRTPBuffer", "0"}}).mTargetRTPBuffer);
    EXPECT_EQ(0U, Configured({{"RTSP:TargetRTPBuffer", "much"}}).mTargetRTPBuffer);
    EXPECT_EQ(0, Configured({{"RTSP:TimeOutRTPAfter", "0"}}).mTimeOutRTPAfter.Get());
    // Decimal, whatever the leading zero or the 'x' may suggest.
    EXPECT_EQ(10U, Configured({{"RTSP:TargetRTPBuffer", "010"}}).mTargetRTPBuffer);
    EXPECT_EQ(0U, Configured({{"RTSP:TargetRTPBuffer", "0x10"}}).mTargetRTPBuffer);
}

using ConfigurationDeathTest = ::testing::Test;

TEST(ConfigurationDeathTest, ATimeOutOfZeroIsAMistakeOfTheApplication) {
    for (const char* lText : {"0", "soon"}) {
        EXPECT_DEATH(Configured({{"RTSP:TimeOutAfter", lText}}), "Assertion failed: 0 != mTimeOutAfter\n");
    }
}

TEST(ConfigurationDeathTest, APortRangeOutOfBoundsIsAMistakeOfTheApplication) {
    constexpr char kFrom[] = "Assertion failed: mUseUDPPortsFrom < 65536\n";
    constexpr char kTo[] = "Assertion failed: mUseUDPPortsTo <= 65536 && mUseUDPPortsTo > mUseUDPPortsFrom\n";
    struct Case {
        const char* mFrom;
        const char* mTo;
        const char* mExpression;
    };
    for (const Case& lCase : {
             Case{"65536", "", kFrom},
             Case{"65537", "", kFrom},
             Case{"-1", "", kFrom},
             Case{"", "65537", kTo},
             Case{"", "65538", kTo},
             Case{"5000", "5000", kTo},
             Case{"5001", "5000", kTo},
             Case{"5002", "5001", kTo},
             Case{"", "49152", kTo},
             // Rounding up wraps round.
             Case{"", "4294967295", kTo},
         }) {
        EXPECT_DEATH(Configured({{"RTSP:UseUDPPortsFrom", lCase.mFrom}, {"RTSP:UseUDPPortsTo", lCase.mTo}}),
                     lCase.mExpression)
            << lCase.mFrom << " " << lCase.mTo;
    }
}

}  // namespace
}  // namespace Player::MediaSessions
