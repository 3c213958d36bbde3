#include "MediaSessions/RTSP/Headers/URLResolution.hpp"

#include <gtest/gtest.h>

namespace Player::URL {
namespace {

TEST(URLResolutionTest, ReferencesAreResolved) {
    struct Case {
        const char* mBase;
        const char* mReference;
        const char* mURL;
    };
    for (const Case& lCase : {
             // A base that is a folder, as Content-Base should be.
             Case{"rtsp://h/clip/", "trackID=1", "rtsp://h/clip/trackID=1"},
             Case{"rtsp://h/clip/", "a/b", "rtsp://h/clip/a/b"},
             Case{"rtsp://h/clip/", "/other/1", "rtsp://h/other/1"},
             Case{"rtsp://h/clip/", "../1", "rtsp://h/1"},
             Case{"rtsp://h/clip/", "./1", "rtsp://h/clip/1"},
             Case{"rtsp://h/clip/", "track.1", "rtsp://h/clip/track.1"},
             // One that is a file.
             Case{"rtsp://h/clip", "trackID=1", "rtsp://h/trackID=1"},
             Case{"rtsp://h/a/clip", "trackID=1", "rtsp://h/a/trackID=1"},
             Case{"rtsp://h", "trackID=1", "rtsp://h/trackID=1"},
             Case{"rtsp://h:554", "/1", "rtsp://h:554/1"},
             // Whole URLs stand for themselves.
             Case{"rtsp://h/clip/", "rtsp://other:8554/x/1", "rtsp://other:8554/x/1"},
             Case{"rtsp://h/clip/", "RTSPU://h/1", "RTSPU://h/1"},
             Case{"rtsp://h/clip/", "//other/1", "rtsp://other/1"},
             // These mean the base.
             Case{"rtsp://h/clip", "*", "rtsp://h/clip"},
             Case{"rtsp://h/clip/", "", "rtsp://h/clip/"},
             Case{"rtsp://h/clip/", " * ", "rtsp://h/clip/"},
             // No scheme, though there is a colon.
             Case{"rtsp://h/clip/", "track:1", "rtsp://h/clip/track:1"},
             Case{"rtsp://h/clip/", "1x://h", "rtsp://h/clip/1x://h"},
             Case{"rtsp://h/clip/", " trackID=1\t", "rtsp://h/clip/trackID=1"},
             // The query is kept.
             Case{"rtsp://h/cam?channel=1&subtype=0", "trackID=1", "rtsp://h/trackID=1?channel=1&subtype=0"},
             Case{"rtsp://h/cam/?channel=1", "trackID=1", "rtsp://h/cam/trackID=1?channel=1"},
             Case{"rtsp://h/cam?channel=1", "trackID=1?x", "rtsp://h/trackID=1?x"},
             Case{"rtsp://h/cam?channel=1", "?ctype=video", "rtsp://h/cam?ctype=video"},
             Case{"rtsp://h/cam?channel=1", "*", "rtsp://h/cam?channel=1"},
             Case{"rtsp://h?channel=1", "trackID=1", "rtsp://h/trackID=1?channel=1"},
             // A slash after the query makes it part of a folder's name.
             Case{"rtsp://h/cam?channel=1&subtype=0/", "trackID=1", "rtsp://h/cam?channel=1&subtype=0/trackID=1"},
             Case{"rtsp://h/cam?channel=1/", "/1", "rtsp://h/1?channel=1/"},
             // RFC 3986 section 5.4, as far as it is about paths.
             Case{"http://a/b/c/d;p", "g;x=1/../y", "http://a/b/c/y"},
             Case{"http://a/b/c/d;p", "../../../g", "http://a/g"},
             Case{"http://a/b/c/d;p", "../..", "http://a/"},
             Case{"http://a/b/c/d;p", "..", "http://a/b/"},
             Case{"http://a/b/c/d;p", ".", "http://a/b/c/"},
             Case{"http://a/b/c/d;p", "g..", "http://a/b/c/g.."},
             Case{"http://a/b/c/d;p", ".g", "http://a/b/c/.g"},
             Case{"http://a/b/c/d;p", "./g/.", "http://a/b/c/g/"},
             // Nothing to resolve against.
             Case{"", "trackID=1", "/trackID=1"},
             Case{"clip", "trackID=1", "/trackID=1"},
             Case{"", "", ""},
         }) {
        EXPECT_EQ(lCase.mURL, Resolve(lCase.mBase, lCase.mReference)) << lCase.mBase << " and " << lCase.mReference;
    }
}

TEST(URLResolutionTest, BaseIsWhatTheServerGivesOrTheRequest) {
    struct Case {
        const char* mContentBase;
        const char* mContentLocation;
        const char* mBase;
    };
    for (const Case& lCase : {
             Case{"", "", "rtsp://h:8554/live/clip"},
             Case{"rtsp://h/b/", "rtsp://h/l/", "rtsp://h/b/"},
             Case{"", "rtsp://h/l/", "rtsp://h/l/"},
             Case{" rtsp://h/b/ ", "", "rtsp://h/b/"},
             Case{" ", "rtsp://h/l/", "rtsp://h/l/"},
             // Without a scheme.
             Case{"//h:8554/b/", "", "rtsp://h:8554/b/"},
             Case{"h:8554/b/", "", "rtsp://h:8554/b/"},
             Case{"h/b/", "", "rtsp://h/b/"},
             Case{"h", "", "rtsp://h"},
             Case{"/b/", "", "rtsp://h:8554/b/"},
             Case{"b/", "", "rtsp://h:8554/live/b/"},
             Case{"hh/b/", "", "rtsp://h:8554/live/hh/b/"},
         }) {
        EXPECT_EQ(lCase.mBase, BaseOf("rtsp://h:8554/live/clip", lCase.mContentBase, lCase.mContentLocation))
            << lCase.mContentBase << " and " << lCase.mContentLocation;
    }
}

TEST(URLResolutionTest, AppendedIsJoinedByOneSlash) {
    EXPECT_EQ("rtsp://h/clip/1", Append("rtsp://h/clip", "1"));
    EXPECT_EQ("rtsp://h/clip/1", Append("rtsp://h/clip/", "1"));
    EXPECT_EQ("rtsp://h/clip/1", Append("rtsp://h/clip", "/1"));
    EXPECT_EQ("rtsp://h/cam?channel=1/trackID=1", Append("rtsp://h/cam?channel=1", "trackID=1"));
    EXPECT_EQ("/", Append("", ""));
}

TEST(URLResolutionTest, UserInformationIsTakenOutOfTheAuthority) {
    struct Case {
        const char* mURL;
        const char* mName;
        const char* mPassword;
        const char* mRest;
    };
    for (const Case& lCase : {
             Case{"rtsp://h/clip", "", "", "rtsp://h/clip"},
             Case{"rtsp://me:secret@h:554/clip", "me", "secret", "rtsp://h:554/clip"},
             Case{"rtsp://me@h/clip", "me", "", "rtsp://h/clip"},
             Case{"rtsp://me:@h/clip", "me", "", "rtsp://h/clip"},
             Case{"rtsp://:secret@h/clip", "", "secret", "rtsp://h/clip"},
             Case{"rtsp://@h/clip", "", "", "rtsp://h/clip"},
             Case{"rtsp://me:a:b@h", "me", "a:b", "rtsp://h"},
             Case{"rtsp://m%65:%40%2f%25@h/clip", "me", "@/%", "rtsp://h/clip"},
             Case{"rtsp://me:%4%zz%@h/clip", "me", "%4%zz%", "rtsp://h/clip"},
             Case{"rtsp://me:p@ss@h/clip", "me", "p@ss", "rtsp://h/clip"},
             Case{"rtsp://me:secret@[::1]:554/clip", "me", "secret", "rtsp://[::1]:554/clip"},
             // Behind the authority an "@" is like any other character.
             Case{"rtsp://h/clip@1", "", "", "rtsp://h/clip@1"},
             Case{"rtsp://h/?x=//me:secret@h", "", "", "rtsp://h/?x=//me:secret@h"},
             // An authority by itself, and less.
             Case{"me:secret@h:554", "me", "secret", "h:554"},
             Case{"me:secret@", "me", "secret", ""},
             Case{"@", "", "", ""},
             Case{"//", "", "", "//"},
             Case{"", "", "", ""},
         }) {
        EXPECT_TRUE((UserInfo{lCase.mName, lCase.mPassword}) == UserInfoOf(lCase.mURL)) << lCase.mURL;
        EXPECT_EQ(lCase.mRest, WithoutUserInfo(lCase.mURL)) << lCase.mURL;
    }
}

TEST(URLResolutionTest, HostAndPortOfAnAuthority) {
    struct Case {
        const char* mAuthority;
        const char* mHost;
        const char* mPort;
    };
    for (const Case& lCase : {
             Case{"h", "h", "554"},
             Case{"h:8554", "h", "8554"},
             Case{"h:", "h", "554"},
             Case{"me:secret@h:8554", "h", "8554"},
             Case{"me:p@ss@h", "h", "554"},
             Case{"[::1]", "::1", "554"},
             Case{"[fe80::1%25eth0]:8554", "fe80::1%25eth0", "8554"},
             Case{"me:secret@[2001:db8::1]:8554", "2001:db8::1", "8554"},
             Case{"[::1", "[", ":1"},
             Case{"[]", "", "554"},
             Case{"", "", "554"},
             Case{":", "", "554"},
         }) {
        EXPECT_EQ(std::make_pair(std::string(lCase.mHost), std::string(lCase.mPort)),
                  HostAndPort(lCase.mAuthority, "554"))
            << lCase.mAuthority;
    }
}

TEST(URLResolutionTest, SchemesHaveNoCase) {
    EXPECT_EQ("rtsp", Scheme("rtsp://h"));
    EXPECT_EQ("rtsps", Scheme("RTSPS://h/clip"));
    EXPECT_EQ("", Scheme("h/clip"));
    EXPECT_EQ("", Scheme("://h"));
    EXPECT_EQ("", Scheme("9rtsp://h"));
    EXPECT_EQ("", Scheme("rt sp://h"));
}

}  // namespace
}  // namespace Player::URL
