#include "MediaSessions/RTSP/Authenticator.hpp"

#include <gtest/gtest.h>

namespace Player::MediaSessions {
namespace {

using Headers = std::vector<std::string>;

std::string RFC7616Random(UInt /*aBytes*/) {
    return "f2/wE4q74E6zIJEtWaHKaf5wv/H5QzzpXusqGemxURZJ";
}

std::string RFC2617Random(UInt /*aBytes*/) {
    return "0a4f113b";
}

class AuthenticatorTest : public testing::Test {
protected:
    void SetUp() override {
        if (!Crypto::IsAvailable()) { GTEST_SKIP() << "built without GnuTLS"; }
    }

    /// What is answered to these challenges; empty for nothing.
    static std::string AnswerTo(const Headers& aChallenges, const URL::UserInfo& aWho = {"me", "secret"}) {
        Authenticator lAuthenticator(RFC2617Random);
        lAuthenticator.SetCredentials(aWho);
        if (!lAuthenticator.Accept(aChallenges, 0)) { return std::string(); }
        return lAuthenticator.Answer("DESCRIBE", "rtsp://h/clip");
    }
};

TEST_F(AuthenticatorTest, BasicIsNameAndPasswordInBase64) {
    EXPECT_EQ("Basic QWxhZGRpbjpvcGVuIHNlc2FtZQ==", AnswerTo({"Basic realm=\"x\""}, {"Aladdin", "open sesame"}));
    EXPECT_EQ("Basic YTo=", AnswerTo({"basic"}, {"a", ""}));
    EXPECT_EQ("Basic YTpi", AnswerTo({"BASIC realm=x"}, {"a", "b"}));
    EXPECT_EQ("Basic YTpiYw==", AnswerTo({"Basic realm=\"x\", charset=\"UTF-8\""}, {"a", "bc"}));
    EXPECT_EQ("Basic YTr/", AnswerTo({"Basic realm=\"x\""}, {"a", "\xFF"}));
}

TEST_F(AuthenticatorTest, DigestOfTheExamplesInTheRFCs) {
    Authenticator lOld(RFC2617Random);
    lOld.SetCredentials({"Mufasa", "Circle Of Life"});
    ASSERT_TRUE(lOld.Accept({"Digest realm=\"testrealm@host.com\", qop=\"auth,auth-int\", "
                             "nonce=\"dcd98b7102dd2f0e8b11d0f600bfb0c093\", "
                             "opaque=\"5ccc069c403ebaf9f0171e9517f40e41\""},
                            0));
    EXPECT_EQ(
        "Digest username=\"Mufasa\", realm=\"testrealm@host.com\", nonce=\"dcd98b7102dd2f0e8b11d0f600bfb0c093\", "
        "uri=\"/dir/index.html\", response=\"6629fae49393a05397450978507c4ef1\", "
        "opaque=\"5ccc069c403ebaf9f0171e9517f40e41\", qop=auth, nc=00000001, cnonce=\"0a4f113b\"",
        lOld.Answer("GET", "/dir/index.html"));

    struct Case {
        const char* mAlgorithm;
        const char* mResponse;
    };
    for (const Case& lCase : {
             Case{"MD5", "8ca523f5e9506fed4657c9700eebdbec"},
             Case{"MD5-sess", "e783283f46242139c486a698fec7211d"},
             Case{"SHA-256", "753927fa0e85d155564e2e272a28d1802ca10daf4496794697cf8db5856cb6c1"},
             Case{"SHA-256-sess", "2fd51b3a77ad75bad6afad6003e818d767133c46d9e2749e7f5232ae1ea3efd7"},
         }) {
        Authenticator lNew(RFC7616Random);
        lNew.SetCredentials({"Mufasa", "Circle of Life"});
        ASSERT_TRUE(
            lNew.Accept({"Digest realm=\"http-auth@example.org\", qop=\"auth, auth-int\", algorithm=" +
                         std::string(lCase.mAlgorithm) + ", nonce=\"7ypf/xlj9XXwfDPEoM4URrv/xwf94BcCAzFZH4GiTo0v\""},
                        0));
        EXPECT_NE(std::string::npos, lNew.Answer("GET", "/dir/index.html").find(lCase.mResponse)) << lCase.mAlgorithm;
    }
}

TEST_F(AuthenticatorTest, DigestWithoutQopAndWithQuotesInItsRealm) {
    EXPECT_EQ(
        "Digest username=\"me\", realm=\"cam\", nonce=\"abc\", uri=\"rtsp://h/clip\", "
        "response=\"324ab82c8655c1f857ab9d42a6fe1f27\"",
        AnswerTo({"Digest realm=\"cam\",nonce=\"abc\""}));
    EXPECT_EQ(
        "Digest username=\"me\", realm=\"a \\\"b\\\"\", nonce=\"abc\", uri=\"rtsp://h/clip\", "
        "response=\"4a345c5a912f6b2e6e113c31e89d4cd0\"",
        AnswerTo({R"(Digest realm="a \"b\"", nonce="abc")"}));
}

TEST_F(AuthenticatorTest, TheBestChallengeIsAnswered) {
    const std::string lBasic = "Basic realm=\"cam\"";
    const std::string lMD5 = "Digest realm=\"cam\", nonce=\"m\", algorithm=MD5";
    const std::string lSHA = "Digest realm=\"cam\", nonce=\"s\", algorithm=SHA-256";
    const auto lBegin = [](const std::string& aText) { return aText.substr(0, aText.find(", uri")); };
    const std::string lByMD5 = "Digest username=\"me\", realm=\"cam\", nonce=\"m\"";
    const std::string lBySHA = "Digest username=\"me\", realm=\"cam\", nonce=\"s\"";
    EXPECT_EQ(lByMD5, lBegin(AnswerTo({lBasic, lMD5})));
    EXPECT_EQ(lByMD5, lBegin(AnswerTo({lMD5, lBasic})));
    EXPECT_EQ(lBySHA, lBegin(AnswerTo({lMD5, lSHA, lBasic})));
    // The same in one header.
    EXPECT_EQ(lBySHA, lBegin(AnswerTo({lSHA + ", " + lBasic + ", " + lMD5})));
}

TEST_F(AuthenticatorTest, WhatCanNotBeAnsweredIsNot) {
    const std::string lLong(4097, 'x');
    for (const std::string& lChallenge : {
             std::string(),
             std::string("Negotiate"),
             std::string("Bearer realm=\"x\""),
             std::string("Digest realm=\"x\""),
             std::string("Digest realm=\"x\", nonce=\"\""),
             std::string("Digest realm=\"x\", nonce=\"n\", algorithm=SHA-512-256"),
             std::string("Digest realm=\"x\", nonce=\"n\", qop=\"auth-int\""),
             "Digest realm=\"x\", nonce=\"" + lLong + "\"",
             "Digest realm=\"" + lLong + "\", nonce=\"n\"",
             "Digest realm=\"x\", nonce=\"n\", opaque=\"" + lLong + "\"",
             "Digest realm=\"x\", nonce=\"" + std::string(1 << 20, 'n') + "\"",
             std::string("Digest realm=\"x\", nonce=\"a\tb\""),
             std::string("Digest realm=\"x\", nonce=\"a\\"),
             std::string("realm=\"x\", nonce=\"n\""),
             std::string(",,,=,\"\"=Digest"),
         }) {
        EXPECT_EQ("", AnswerTo({lChallenge})) << lChallenge.substr(0, 80);
    }
    EXPECT_NE("", AnswerTo({"Digest realm=\"x\", nonce=\"" + std::string(4096, 'x') + "\""}));
    // The name would end the line.
    EXPECT_EQ("", AnswerTo({"Digest realm=\"x\", nonce=\"n\""}, {"me\r\nX: y", "secret"}));
    EXPECT_EQ("", AnswerTo({"Digest realm=\"x\", nonce=\"n\""}, {}));
}

TEST_F(AuthenticatorTest, QuotesInANameAreEscaped) {
    const std::string lAnswer = AnswerTo({"Digest realm=\"x\", nonce=\"n\""}, {"a\"b\\c", "secret"});
    EXPECT_EQ("Digest username=\"a\\\"b\\\\c\", realm", lAnswer.substr(0, lAnswer.find("=\"x")));
}

TEST_F(AuthenticatorTest, UsesOfANonceAreCounted) {
    Authenticator lAuthenticator(RFC2617Random);
    lAuthenticator.SetCredentials({"me", "secret"});
    EXPECT_EQ("", lAuthenticator.Answer("PLAY", "u"));
    ASSERT_TRUE(lAuthenticator.Accept({"Digest realm=\"x\", nonce=\"n\", qop=\"auth\""}, 0));
    EXPECT_NE(std::string::npos, lAuthenticator.Answer("PLAY", "u").find("nc=00000001"));
    EXPECT_NE(std::string::npos, lAuthenticator.Answer("PLAY", "u").find("nc=00000002"));
    ASSERT_TRUE(lAuthenticator.Accept({"Digest realm=\"x\", nonce=\"o\", qop=\"auth\", stale=TRUE"}, 1));
    EXPECT_NE(std::string::npos, lAuthenticator.Answer("PLAY", "u").find("nc=00000001"));
}

TEST_F(AuthenticatorTest, ARefusedAnswerIsNotGivenAgain) {
    const Headers lFirst = {"Digest realm=\"x\", nonce=\"1\""};
    const Headers lSecond = {"Digest realm=\"x\", nonce=\"2\""};
    const Headers lStale = {"Digest realm=\"x\", nonce=\"3\", stale=true"};
    Authenticator lAuthenticator;
    lAuthenticator.SetCredentials({"me", "secret"});
    EXPECT_TRUE(lAuthenticator.Accept(lFirst, 0));
    EXPECT_FALSE(lAuthenticator.Accept(lFirst, 1)) << "the password is wrong";
    EXPECT_FALSE(lAuthenticator.Accept(lSecond, 1)) << "and stays wrong";
    EXPECT_FALSE(lAuthenticator.Accept(lFirst, 0)) << "for later requests, too";
    EXPECT_TRUE(lAuthenticator.Accept(lSecond, 0)) << "a later request may meet a nonce that has grown old";
    EXPECT_TRUE(lAuthenticator.Accept(lStale, 1));
    EXPECT_FALSE(lAuthenticator.Accept(lStale, 1)) << "stale, and yet the same";
    EXPECT_FALSE(lAuthenticator.Accept({"Digest realm=\"x\", nonce=\"4\", stale=true"}, 2)) << "without end";
}

TEST_F(AuthenticatorTest, BasicIsTriedOnce) {
    Authenticator lAuthenticator;
    lAuthenticator.SetCredentials({"me", "secret"});
    EXPECT_TRUE(lAuthenticator.Accept({"Basic realm=\"x\""}, 0));
    EXPECT_FALSE(lAuthenticator.Accept({"Basic realm=\"x\""}, 1));
    EXPECT_FALSE(lAuthenticator.Accept({"Basic realm=\"y\""}, 0));
}

TEST_F(AuthenticatorTest, OtherCredentialsBeginAnew) {
    Authenticator lAuthenticator;
    lAuthenticator.SetCredentials({"me", "wrong"});
    ASSERT_TRUE(lAuthenticator.Accept({"Basic realm=\"x\""}, 0));
    lAuthenticator.SetCredentials({"me", "wrong"});
    EXPECT_TRUE(lAuthenticator.IsArmed());
    lAuthenticator.SetCredentials({"me", "right"});
    EXPECT_FALSE(lAuthenticator.IsArmed());
    EXPECT_TRUE(lAuthenticator.Accept({"Basic realm=\"x\""}, 0));
}

TEST(ChallengeTest, EntriesAreToldApart) {
    const auto lAll = Challenge::Parse(
        R"(Negotiate, Digest realm = "a, b", nonce="n,Basic x", stale=true , opaque="",Basic realm="c=d", Basic)");
    ASSERT_EQ(3U, lAll.size());
    EXPECT_EQ("a, b", lAll[0].mRealm);
    EXPECT_EQ("n,Basic x", lAll[0].mNonce);
    EXPECT_TRUE(lAll[0].mIsStale);
    EXPECT_TRUE(lAll[0].mHasOpaque);
    EXPECT_EQ("c=d", lAll[1].mRealm);
    EXPECT_EQ("", lAll[2].mRealm);
}

TEST(ChallengeTest, ThereAreLimits) {
    std::string lMany;
    for (int i = 0; i < 1000; ++i) {
        lMany += "Basic,";
    }
    EXPECT_EQ(16U, Challenge::Parse(lMany).size());
    std::string lLong = "Digest ";
    for (int i = 0; i < 1000; ++i) {
        lLong += "p" + std::to_string(i) + "=1,";
    }
    EXPECT_TRUE(Challenge::Parse(lLong + "nonce=x").empty());
}

}  // namespace
}  // namespace Player::MediaSessions
