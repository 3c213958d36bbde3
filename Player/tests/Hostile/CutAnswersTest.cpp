// A connection that ends at any byte of any answer: what comes of it, and that the player can be used afterwards.
#include <stdexcept>

#include "Hostile/Dialogues.hpp"
#include "Hostile/Row.hpp"
#include "MediaSessions/RTSP/Peer.hpp"
#include "MediaSessions/SessionFixture.hpp"
#include "support/Throws.hpp"

namespace Player::Hostile {

using MediaSessions::Dialogue;
using MediaSessions::SessionTest;
using TestSupport::ScriptedServer;
using TestSupport::Thrown;

/// What comes of a connection that ends within a part of an answer.
struct Outcome {
    const char* mThrown;
    /// What the client does about it, as a script; the end of the connection goes before.
    const char* mThen;
    /// The client knows of a session then, and ends it.
    bool mHasSession = false;
};

struct Part {
    const char* mText;
    /// Of an end before the part is whole.
    Outcome mOutcome;
};

struct AnswerRow {
    const char* mName;
    /// The dialogue up to the request that is answered.
    std::string mBefore;
    /// A last line that is empty is whole with its CR.
    std::vector<Part> mAnswer;
    bool mHasSession = false;
    /// It is the answer to the end of playing, not to its beginning.
    bool mIsLast = false;
};

namespace {

const std::string kTeardown = kPlay + R"(
    < 200 4 | RTP-Info: url=r/video | Range: npt=0-20
    > TEARDOWN clip 5
)";

constexpr char kNothingMore[] = "";
/// What looks like a request is answered, on another connection where this one has ended.
constexpr char kAnswered[] = "ACCEPT\nC: RTSP/1.0 501 Not Implemented\nC:\nCLOSE\n";
/// The next request goes out on another connection, which ends, too.
constexpr char kAsksOn[] = "ACCEPT\nC...\nCLOSE\n";

constexpr char kNoInfo[] = "17/2 RTSP::RecvPlay(): Invalid PLAY response: RTP-Info missing";
constexpr char kDescribeFailed[] = "17/0 RTSP::DoDescribe(): DESCRIBE failed: 000 Unknown";
constexpr char kSetupFailed[] = "17/0 RTSP::DoPlay(): SETUP failed: 000 Unknown";
constexpr char kPlayFailed[] = "17/0 RTSP::DoPlay(): PLAY failed: 000 Unknown";

/// The beginning of every answer, for which nothing at all reads as `aFailed`.
std::vector<Part> Answer(const char* aFailed, const char* aCSeq, const std::vector<Part>& aRest) {
    std::vector<Part> lParts = {{"R", {aFailed, kNothingMore}},
                                {"TSP/", {aFailed, kAnswered}},
                                {"1.0 200 OK\r\nCSeq", {kNoCSeq, kNothingMore}},
                                {aCSeq, {kOtherCSeq, kNothingMore}}};
    lParts.insert(lParts.end(), aRest.begin(), aRest.end());
    return lParts;
}

const AnswerRow kAnswers[] = {
    {"Describe", kDescribe,
     Answer(kDescribeFailed, ": 1",
            {{"\r\nContent-Base: rtsp://127.0.0.1/clip/\r\nContent-Length: 6", {kNoSDP, kNothingMore}},
             {"8\r\n\r\nv=0\r\nm=video 0 RTP/AVP 96\r\na=rtpmap:96 H264/90000\r\na=control:video\r\n",
              {kBadLength, kNothingMore}}})},
    {"FirstSetup", kFirstSetup,
     Answer(
         kSetupFailed, ": 2",
         {{"\r\nSession", {kNoSession, kNothingMore}},
          {": 5", {kSetupFailed, kAsksOn}},
          {"\r\nTransport: RTP/AVP/TCP;unicast;interleaved=0-1;ssrc=12345678\r\n\r", {kSetupFailed, kAsksOn, true}}})},
    {"SecondSetup", kSecondSetup,
     Answer(kSetupFailed, ": 3",
            {{"\r\nSession: 5\r\nTransport: RTP/AVP/TCP;unicast;interleaved=2-3\r\n\r", {kPlayFailed, kAsksOn}}}),
     true},
    {"Play", kPlay,
     Answer(kPlayFailed, ": 4",
            {{"\r\nRTP-Info", {kNoInfo, kNothingMore}},
             {": url=rtsp://127.0.0.1/clip/video;seq=1;rtptime=0\r\nRange: npt=0-20\r\n\r", {kPlays, kNothingMore}}}),
     true},
    {"Teardown", kTeardown,
     Answer(kPlays, ": 5", {{"\r\nSession: 5\r\nConnection: close\r\n\r", {kPlays, kNothingMore}}}), false, true},
};

class HostileCutTest : public SessionTest, public testing::WithParamInterface<AnswerRow> {
protected:
    static const Outcome& OutcomeOf(std::size_t aCut) {
        std::size_t lEnd = 0;
        for (const Part& lPart : GetParam().mAnswer) {
            lEnd += std::string(lPart.mText).size();
            if (aCut < lEnd) { return lPart.mOutcome; }
        }
        throw std::out_of_range("not within the answer");
    }

    /// The connection ends after what was sent; in the end the client asks for something else.
    static std::string Script(const std::string& aSent) {
        const Outcome& lOutcome = OutcomeOf(aSent.size());
        std::string lScript = Dialogue("ACCEPT\n" + GetParam().mBefore) + "S# " +
                              TestSupport::Hex(TestSupport::AsBytes(aSent)) + "\nCLOSE\n" + lOutcome.mThen;
        if (GetParam().mHasSession || lOutcome.mHasSession) {
            const std::string lNumber = "CSeq: {n" + std::to_string(aSent.size()) + "}";
            lScript +=
                "ACCEPT\nC: TEARDOWN {*}\nC: " + lNumber + "\nC...\nS: RTSP/1.0 200 OK\nS: " + lNumber + "\nS:\n";
        }
        return lScript + Dialogue("ACCEPT\n> DESCRIBE again 1\n< 404 1");
    }

    void Play(const Outcome& aOutcome) {
        MediaPlayer lPlayer;
        lPlayer.SetConfigParam("RTSP:UseInterleavedRTP", "1");
        const std::string lPlayed = Thrown([&] { lPlayer.Play(URL(), Time(0)); });
        EXPECT_EQ(GetParam().mIsLast ? kPlays : aOutcome.mThrown, lPlayed);
        EXPECT_FALSE(lPlayer.TrackHasPacket(0));
        const std::string lClosed = Thrown([&] { lPlayer.Close(); });
        EXPECT_EQ(GetParam().mIsLast ? aOutcome.mThrown : kPlays, lClosed);
        const std::string lRefused = "17/1028 RTSP::DoDescribe(): DESCRIBE failed: 404 Not Found";
        EXPECT_EQ(lRefused, Thrown([&] { lPlayer.Play(URL("again"), Time(0)); }));
    }
};

TEST_P(HostileCutTest, EveryByteHasItsOutcome) {
    std::string lText;
    for (const Part& lPart : GetParam().mAnswer) {
        lText += lPart.mText;
    }
    std::string lScript;
    for (std::size_t lCut = 0; lCut < lText.size(); ++lCut) {
        lScript += Script(lText.substr(0, lCut));
    }
    mServer = std::make_unique<ScriptedServer>(lScript);
    for (std::size_t lCut = 0; lCut < lText.size() && !HasFailure(); ++lCut) {
        SCOPED_TRACE(TestSupport::Quoted(lText.substr(0, lCut)));
        Play(OutcomeOf(lCut));
    }
}

INSTANTIATE_TEST_SUITE_P(Answers, HostileCutTest, testing::ValuesIn(kAnswers), NameOfRow());

}  // namespace
}  // namespace Player::Hostile
