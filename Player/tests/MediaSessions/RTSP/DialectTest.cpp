#include "MediaSessions/RTSP/Dialect.hpp"

#include <gtest/gtest.h>

#include "Processors/RTP/EarlyMarkers.hpp"

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

TEST(DialectTest, OnlyModernTriesAnotherURL) {
    EXPECT_EQ("", Classic().OtherTrackURL(0x404, {"rtsp://h/clip"}, "1"));
    const Modern lModern;
    EXPECT_EQ("rtsp://h/clip/1", lModern.OtherTrackURL(0x404, {"rtsp://h/clip"}, "1"));
    EXPECT_EQ("", lModern.OtherTrackURL(0x461, {"rtsp://h/clip"}, "1")) << "it is not about the URL";
    EXPECT_EQ("", lModern.OtherTrackURL(0x404, {"rtsp://h/clip/"}, "1")) << "it would be the same";
    EXPECT_EQ("", lModern.OtherTrackURL(0x404, {"rtsp://h/clip"}, "*"));
    EXPECT_EQ("", lModern.OtherTrackURL(0x404, {"rtsp://h/clip"}, "rtsp://h/1"));
}

TEST(DialectTest, WhereNoBaseIsNamedTracksAreBelowTheRequest) {
    const std::string lRequest = "rtsp://h/live/clip";
    for (const char* lHeader : {"Content-Base", "Content-Location"}) {
        EXPECT_TRUE(Modern().Base(lRequest, {{lHeader, "rtsp://h/x"}}).mIsNamed) << lHeader;
        EXPECT_FALSE(Modern().Base(lRequest, {{lHeader, " "}}).mIsNamed) << lHeader;
    }
    const BaseURL lBase = Modern().Base(lRequest, {});
    EXPECT_FALSE(lBase.mIsNamed);
    struct Case {
        BaseURL mBase;
        const char* mId;
        const char* mFirst;
        const char* mSecond;
    };
    for (const Case& lCase : {
             Case{lBase, "1", "rtsp://h/live/clip/1", "rtsp://h/live/1"},
             Case{lBase, " 1", "rtsp://h/live/clip/1", "rtsp://h/live/1"},
             Case{lBase, "/1", "rtsp://h/1", "rtsp://h/live/clip/1"},
             Case{lBase, "//other/1", "rtsp://other/1", "rtsp://h/live/clip//other/1"},
             Case{lBase, "?1", "rtsp://h/live/clip?1", "rtsp://h/live/clip/?1"},
             Case{lBase, "", "rtsp://h/live/clip", ""},
             Case{lBase, "*", "rtsp://h/live/clip", ""},
             Case{lBase, "rtsp://h/1", "rtsp://h/1", ""},
             Case{{"rtsp://h/live/", false}, "1", "rtsp://h/live/1", ""},
             Case{{"rtsp://h/live?a=b", false}, "1", "rtsp://h/live?a=b/1", "rtsp://h/1?a=b"},
             Case{{"rtsp://h", false}, "1", "rtsp://h/1", ""},
             Case{{"rtsp://h/live/clip", true}, "1", "rtsp://h/live/1", "rtsp://h/live/clip/1"},
         }) {
        EXPECT_EQ(lCase.mFirst, Modern().TrackURL(lCase.mBase, lCase.mId)) << lCase.mBase.mURL << " " << lCase.mId;
        EXPECT_EQ(lCase.mSecond, Modern().OtherTrackURL(0x404, lCase.mBase, lCase.mId))
            << lCase.mBase.mURL << " " << lCase.mId;
        EXPECT_EQ(lCase.mBase.mURL + lCase.mId, Classic().TrackURL(lCase.mBase, lCase.mId));
    }
}

TEST(DialectTest, RTPInfoIsMatchedByNameOrByPath) {
    const RTPInfo::Entry lWhole = RTPInfo::Parse("url=rtsp://10.0.0.1/clip/video;seq=1").at(0);
    const RTPInfo::Entry lRelative = RTPInfo::Parse("url=video;seq=1").at(0);
    const RTPInfo::Entry lNone = RTPInfo::Parse("seq=1").at(0);
    const BaseURL lBase{"rtsp://h:554/clip/"};
    EXPECT_EQ("video", Classic().KeyOf(lWhole, lBase));
    EXPECT_EQ(std::nullopt, Classic().KeyOf(lRelative, lBase));
    EXPECT_EQ("id", Classic().KeyOf("rtsp://h:554/clip/video", "id"));
    EXPECT_EQ("/clip/video", Modern().KeyOf(lWhole, lBase));
    EXPECT_EQ("/clip/video", Modern().KeyOf(lRelative, lBase));
    EXPECT_EQ("/clip/video", Modern().KeyOf(lRelative, {"rtsp://h:554/clip", false})) << "as the track";
    EXPECT_EQ(std::nullopt, Modern().KeyOf(lNone, lBase));
    EXPECT_EQ("/clip/video", Modern().KeyOf("rtsp://h:554/clip/video", "id"));
}

TEST(DialectTest, MulticastIsRefusedInModernOnly) {
    EXPECT_FALSE(Classic().RefusesMulticast());
    EXPECT_TRUE(Modern().RefusesMulticast());
}

TEST(DialectTest, DescriptionsWithoutAVersion) {
    const std::string lTrack = "m=video 0 RTP/AVP 96\r\n";
    const auto lPrepared = [](const Dialect& aDialect, const std::string& aText) {
        Buffer lText(reinterpret_cast<const Byte*>(aText.data()), static_cast<UInt>(aText.size()));
        aDialect.Prepare(lText);
        return std::string(lText.Begin(), lText.End());
    };
    EXPECT_EQ(lTrack, lPrepared(Classic(), lTrack));
    EXPECT_EQ("v=0\r\n" + lTrack, lPrepared(Modern(), lTrack));
    EXPECT_EQ("s=x\r\n" + lTrack, lPrepared(Modern(), "s=x\r\n" + lTrack)) << "of that nothing is known";
    EXPECT_EQ("", lPrepared(Modern(), ""));
}

TEST(DialectTest, HostsBehindUserInformation) {
    EXPECT_EQ("@h", Classic().Address("me:secret@h:1", false).first);
    EXPECT_EQ("h", Modern().Address("me:secret@h:1", false).first);
    EXPECT_EQ("554", Modern().Address("h", false).second);
    EXPECT_EQ("322", Modern().Address("h", true).second);
    EXPECT_EQ("554", Classic().Address("h", true).second);
    EXPECT_EQ("::1", Modern().Address("[::1]:1", false).first);
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

TEST(DialectTest, FramesAreCompletedInModernOnly) {
    const auto lCompletes = [](const Dialect& aDialect) {
        Properties lTrack;
        lTrack.Insert("Transport", "RTP/AVP");
        lTrack.Insert("Format", "MP4V-ES");
        return nullptr != dynamic_cast<const Processors::RTP::EarlyMarkers*>(aDialect.CreateDepacketizer(lTrack).Ptr());
    };
    EXPECT_FALSE(lCompletes(Dialect::Named("classic")));
    EXPECT_TRUE(lCompletes(Dialect::Named("modern")));
}

}  // namespace
}  // namespace Player::MediaSessions
