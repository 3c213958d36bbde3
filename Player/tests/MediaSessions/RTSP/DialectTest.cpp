#include "MediaSessions/RTSP/Dialect.hpp"

#include <gtest/gtest.h>

#include "support/ReportCapture.hpp"

namespace Player::MediaSessions {
namespace {

TEST(DialectTest, ClassicIsTheDefaultAndWhatUnknownNamesComeTo) {
    TestSupport::ReportCapture lReports;
    EXPECT_STREQ("classic", Dialect::Named("").Name());
    EXPECT_STREQ("classic", Dialect::Named("classic").Name());
    EXPECT_STREQ("modern", Dialect::Named("modern").Name());
    EXPECT_TRUE(lReports.All().empty());
    for (const char* lName : {"Modern", "modern ", "new", "0"}) {
        EXPECT_STREQ("classic", Dialect::Named(lName).Name()) << lName;
        EXPECT_EQ(
            1U, lReports.Count(Severity::Warning, "Unknown profile \"" + std::string(lName) + "\", using \"classic\""));
    }
}

TEST(DialectTest, ModernTriesUDPAndThenTCP) {
    EXPECT_TRUE((Transports{true, false} == Classic().DefaultTransports()));
    EXPECT_TRUE((Transports{true, true} == Modern().DefaultTransports()));
}

TEST(DialectTest, ModernGivesVideoALargerBuffer) {
    EXPECT_EQ(300000U, Classic().UDPBuffer("video"));
    EXPECT_EQ(2U << 20, Modern().UDPBuffer("video"));
    for (const char* lType : {"audio", "application", ""}) {
        EXPECT_EQ(300000U, Classic().UDPBuffer(lType)) << lType;
        EXPECT_EQ(300000U, Modern().UDPBuffer(lType)) << lType;
    }
}

TEST(TransportsTest, AreReadFromTheirNames) {
    struct Case {
        const char* mText;
        Transports mTransports;
    };
    for (const Case& lCase : {
             Case{"udp,tcp", {true, true}},
             Case{"tcp,udp", {true, true}},
             Case{"udp+tcp", {true, true}},
             Case{"udp", {true, false}},
             Case{"tcp", {false, true}},
             Case{" TCP , Udp ", {true, true}},
             Case{"tcp,tcp", {false, true}},
             Case{"tcp,multicast", {false, true}},
             Case{"", {false, false}},
             Case{",", {false, false}},
             Case{"udptcp", {false, false}},
             Case{"both", {false, false}},
         }) {
        EXPECT_TRUE(lCase.mTransports == Transports::Parse(lCase.mText)) << lCase.mText;
    }
}

}  // namespace
}  // namespace Player::MediaSessions
