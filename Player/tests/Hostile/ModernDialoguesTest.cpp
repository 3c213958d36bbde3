// What a hostile server can make of the questions and redirections that the modern profile follows.
#include "Crypto/Crypto.hpp"
#include "Hostile/Dialogues.hpp"
#include "Hostile/Row.hpp"
#include "MediaSessions/SessionFixture.hpp"
#include "support/Throws.hpp"

namespace Player::Hostile {

using MediaSessions::SessionTest;
using TestSupport::Thrown;

struct ModernRow {
    const char* mName;
    std::string mDialogue;
    /// What playing throws.
    std::string mThrown;
};

namespace {

const std::string kRefused = "17/1025 RTSP::DoDescribe(): DESCRIBE failed: 401 Unauthorized";

std::string Number(unsigned aNumber) {
    return std::to_string(aNumber);
}

/// A question, with the parameters of a Digest.
std::string Question(unsigned aCSeq, const std::string& aParameters) {
    return "< 401 " + Number(aCSeq) + " | WWW-Authenticate: Digest " + aParameters + "\n";
}

/// The same, whose answer is old already.
std::string OldQuestion(unsigned aCSeq) {
    return Question(aCSeq, "realm=\"cam\", nonce=\"" + Number(aCSeq) + "\", stale=true");
}

/// A request asked for as often as it is sent.
std::string Endless(const std::string& aRequest, unsigned aCSeq) {
    std::string lScript;
    for (unsigned i = 0; i < 3; ++i) {
        lScript += "> " + aRequest + " " + Number(aCSeq + i) + "\n" + OldQuestion(aCSeq + i);
    }
    return lScript;
}

/// Redirected at each SETUP, or at each PLAY, to where it comes from.
std::string Loop(bool aIsPlay) {
    std::string lScript;
    unsigned lCSeq = 0;
    const auto lAsk = [&](const std::string& aRequest, const std::string& aAnswer, const std::string& aMore) {
        const std::string lNumber = Number(++lCSeq);
        lScript += "> " + aRequest + " " + lNumber + "\n< " + aAnswer + " " + lNumber + aMore + "\n";
    };
    const std::string lLocation = " | Location: rtsp://127.0.0.1:{port}/clip";
    for (unsigned lHop = 0; lHop < 6; ++lHop) {
        lAsk("DESCRIBE clip", "200", " | SDP clip/ video");
        if (!aIsPlay) {
            lAsk("SETUP clip/video", "302", lLocation);
            continue;
        }
        lAsk("SETUP clip/video", "200", " | Session: 5 | TCP 0");
        lAsk("PLAY clip/", "302", lLocation);
        if (lHop < 5) { lAsk("TEARDOWN clip/", "200", ""); }
    }
    return lScript;
}

const std::string kOneTrack = kDescribe + "< 200 1 | SDP clip/ video\n";
const std::string kSetUpOneTrack = kOneTrack + "> SETUP clip/video 2\n";

/// All requests at once, with that number for the first of them.
std::string Pipelined(unsigned aCSeq) {
    return "> SETUP clip/video " + Number(aCSeq) + "\n> PLAY clip/ " + Number(aCSeq + 1) + "\n";
}

std::string EndlessPipelined() {
    std::string lScript = kDescribe + "< 200 1 | Supported: 3gpp-pipelined | SDP clip/ video\n";
    for (unsigned lCSeq = 2; lCSeq < 8; lCSeq += 2) {
        lScript += Pipelined(lCSeq) + OldQuestion(lCSeq) + OldQuestion(lCSeq + 1);
    }
    return lScript;
}

const ModernRow kRows[] = {
    {"ANonceOfAMiB", kDescribe + Question(1, "realm=\"cam\", nonce=\"" + std::string(1 << 20, 'n') + "\""), kRefused},
    {"ARealmOfAMiB", kDescribe + Question(1, "nonce=\"n\", realm=\"" + std::string(1 << 20, 'r') + "\""), kRefused},
    // It goes back as it came.
    {"ARealmWithQuotesAndBackslashes", kDescribe + Question(1, R"(realm="a \"b\" \\ c\\", nonce="n")") + R"(
        C: DESCRIBE rtsp://127.0.0.1:{port}/clip RTSP/1.0
        C: CSeq: 2
        C: User-Agent: {*}
        C: Authorization: Digest username="me", realm="a \"b\" \\ c\\", nonce="n", uri="rtsp://127.0.0.1:{port}/clip", response="{*}"
        C...
        < 404 2
     )",
     "17/1028 RTSP::DoDescribe(): DESCRIBE failed: 404 Not Found"},
    {"ARealmThatDoesNotEnd", kDescribe + Question(1, R"(nonce="n", realm="a\\\)"), kRefused},
    {"ARealmThatEndsInABackslash", kDescribe + Question(1, R"(realm="a\", nonce="n")"), kRefused},
    {"AQuestionOfOneLineAfterTheOther", kDescribe + Question(1, "realm=\"a\",\nS:  nonce=\"\",\nS:  qop=\"auth\""),
     kRefused},
    {"EndlessQuestionsToTheDescribe", Endless("DESCRIBE clip", 1), kRefused},
    {"EndlessQuestionsToASetup", kOneTrack + Endless("SETUP clip/video", 2),
     "17/1025 RTSP::DoPlay(): SETUP failed: 401 Unauthorized"},
    {"EndlessQuestionsToThePlay", kSetUpOneTrack + "< 200 2 | Session: 5 | TCP 0\n" + Endless("PLAY clip/", 3),
     "17/1025 RTSP::DoPlay(): PLAY failed: 401 Unauthorized"},
    {"EndlessQuestionsToAllRequestsAtOnce", EndlessPipelined(),
     "17/1025 RTSP::DoPlay(): Pipelined SETUP failed: 401 Unauthorized"},
    {"ALoopOfSetups", Loop(false), "17/770 RTSP::DoPlay(): SETUP failed: 302 Found"},
    {"ALoopOfPlays", Loop(true), "17/770 RTSP::DoPlay(): PLAY failed: 302 Found"},
    {"ALocationOfAMiB", kSetUpOneTrack + "< 302 2 | Location: /" + std::string(1 << 20, 'l') + "\n",
     "17/770 RTSP::DoPlay(): SETUP failed: 302 Found"},
    {"ALocationOfFormats", kSetUpOneTrack + "< 302 2 | Location: /%s%n%1000000s\n> DESCRIBE %s%n%1000000s 3\n< 404 3\n",
     "17/1028 RTSP::DoDescribe(): DESCRIBE failed: 404 Not Found"},
    {"ALocationWithoutEnd",
     kSetUpOneTrack + "S: RTSP/1.0 302 Found\nS: CSeq: 2\nS~ Location: rtsp://127.0.0.1/" +
         std::string(std::size_t{5} << 20, 'l') + "\n",
     "17/2 RTSP::FillBuf(): Invalid response: Message too long"},
};

class HostileModernTest : public SessionTest, public testing::WithParamInterface<ModernRow> {};

TEST_P(HostileModernTest, HasItsOutcome) {
    const bool lAsks = std::string::npos != GetParam().mDialogue.find("Authenticate: Digest");
    if (lAsks && !Crypto::IsAvailable()) { GTEST_SKIP() << "built without GnuTLS"; }
    Serve(GetParam().mDialogue);
    mPlayer.SetConfigParam("RTSP:Profile", "modern");
    mPlayer.SetConfigParam("RTSP:Transports", "tcp");
    mPlayer.SetConfigParam("RTSP:UserName", "me");
    mPlayer.SetConfigParam("RTSP:Password", "secret");
    EXPECT_EQ(GetParam().mThrown, Thrown([this] { Play(); }));
}

INSTANTIATE_TEST_SUITE_P(Rows, HostileModernTest, testing::ValuesIn(kRows), NameOfRow());

}  // namespace
}  // namespace Player::Hostile
