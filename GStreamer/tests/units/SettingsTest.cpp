#include "settings/Settings.hpp"

#include <gtest/gtest.h>

namespace ElementTest {

using nsGstVireRtspSrc::kLocation;
using nsGstVireRtspSrc::kReferrer;
using nsGstVireRtspSrc::kUseProxy;
using nsGstVireRtspSrc::Settings;

TEST(Settings, WhatWasHandedOutStaysGood) {
    Settings lSettings;
    lSettings.set_location("rtsp://first/location");
    const gchar* const lFirst = lSettings.get(kLocation);
    lSettings.set_location("rtsp://second/location");
    const gchar* const lSecond = lSettings.get(kLocation);
    lSettings.set(kLocation, nullptr);
    EXPECT_STREQ("rtsp://first/location", lFirst);
    EXPECT_STREQ("rtsp://second/location", lSecond);
    EXPECT_EQ(nullptr, lSettings.get(kLocation));
}

TEST(Settings, TheSameTextIsHandedOutOnce) {
    Settings lSettings;
    lSettings.set(kUseProxy, "proxy:554");
    const gchar* const lText = lSettings.get(kUseProxy);
    EXPECT_EQ(lText, lSettings.get(kUseProxy));
    lSettings.set(kUseProxy, "other:554");
    lSettings.set(kUseProxy, "proxy:554");
    EXPECT_EQ(lText, lSettings.get(kUseProxy)) << "who switches to and fro gathers no texts";
    EXPECT_EQ(nullptr, lSettings.get(kReferrer));
}

}  // namespace ElementTest
