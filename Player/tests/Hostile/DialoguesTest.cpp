// Whole dialogues: what a start-up comes to.
#include <atomic>
#include <chrono>
#include <thread>

#include "Hostile/Dialogues.hpp"
#include "Hostile/Row.hpp"
#include "MediaSessions/RTSP/Peer.hpp"
#include "MediaSessions/SessionFixture.hpp"
#include "RTP/Stack.hpp"
#include "support/Throws.hpp"

namespace Player::Hostile {

using MediaSessions::SessionTest;
using TestSupport::Thrown;

// ---------------------------------------------------------------------------- whole dialogues

struct DialogueRow {
    const char* mName;
    std::string mDialogue;
    /// What playing throws.
    const char* mThrown;
    /// Of a dialogue that plays: how many packets the tracks got.
    std::vector<unsigned> mReceived = {};
};

namespace {

/// Text of which each byte is a read of its own; the last comes together with what follows.
std::string Dripping(const std::string& aLines) {
    std::string lScript;
    for (const char lByte : aLines) {
        lScript += "\nSPLIT\nS# " + TestSupport::Hex({static_cast<std::uint8_t>(lByte)});
    }
    return lScript + "\n";
}

const std::string kLongName(5000, 's');
const std::string kPlayed = R"(
    < 200 4 | RTP-Info: url=r/video
)";
/// One packet for each track, and the end of what the server says.
const std::string kPackets = R"(
    S$ 0 {video}
    S$ 2 {audio}
    NOTIFY sent
)";

const std::string kMedia = "\nSPLIT\n" + kPackets;

/// The three answers of the set-up with the number of one replaced.
std::string WithNumbers(const char* aDescribe, const char* aFirst, const char* aSecond, const char* aPlay) {
    return "> DESCRIBE clip 1\nS: RTSP/1.0 200 OK\n" + std::string(aDescribe) + R"(
        S: Content-Length: {length}
        S:
        S| v=0
        S| m=video 0 RTP/AVP 96
        S| a=rtpmap:96 H264/90000
        S| m=audio 0 RTP/AVP 97
        S| a=rtpmap:97 AMR/8000
        > SETUP clip 2
        S: RTSP/1.0 200 OK
        S: Session: 5)" +
           "\n" + aFirst + "\nS:\n> SETUP clip 3\nS: RTSP/1.0 200 OK\n" + aSecond +
           "\nS:\n> PLAY clip 4\nS: RTSP/1.0 200 OK\nS: RTP-Info: url=r/video\n" + aPlay + "\nS:\n";
}

/// The script up to where the client, which has seen enough, says nothing more.
std::string UpTo(const char* aRequest, const std::string& aScript) {
    return aScript.substr(0, aScript.find(aRequest));
}

const DialogueRow kDialogues[] = {
    {"ASessionOf5000Bytes",
     kFirstSetup + "< 200 2 | Session: " + kLongName + ";timeout=60 | TCP 0\n> SETUP clip/audio 3 | Session: " +
         kLongName + " | TCP 1\n< 200 3 | TCP 1\n> PLAY clip 4 | Session: " + kLongName + " | Range: npt=0.000000-" +
         kPlayed + kMedia,
     kPlays,
     {1, 1}},
    {"ASessionThatChangesItsName",
     kFirstSetup + R"(
        < 200 2 | Session: 5 | TCP 0
        > SETUP clip/audio 3 | Session: 5 | TCP 1
        < 200 3 | Session: 6 | TCP 1
        > PLAY clip 4 | Session: 5 | Range: npt=0.000000-
        < 200 4 | Session: 7 | RTP-Info: url=r/video
     )" + kMedia,
     kPlays,
     {1, 1}},
    {"ASessionOfFormats",
     kFirstSetup + R"(
        < 200 2 | Session: %s%n%1000000s | TCP 0
        > SETUP clip/audio 3 | Session: %s%n%1000000s | TCP 1
        < 200 3 | TCP 1
        > PLAY clip 4 | Session: %s%n%1000000s | Range: npt=0.000000-
     )" + kPlayed +
         kMedia,
     kPlays,
     {1, 1}},
    {"NoSession", kFirstSetup + "< 200 2 | TCP 0", kNoSession},

    {"ADescribeWithoutNumber", UpTo("> SETUP clip 2", WithNumbers("", "", "", "")), kNoCSeq},
    {"ADescribeWithAnotherNumber", UpTo("> SETUP clip 2", WithNumbers("S: CSeq: 2", "", "", "")), kOtherCSeq},
    {"AFirstSetupWithoutNumber", UpTo("> SETUP clip 3", WithNumbers("S: CSeq: 1", "", "", "")), kNoCSeq},
    {"AFirstSetupWithTheNumberBefore", UpTo("> SETUP clip 3", WithNumbers("S: CSeq: 1", "S: CSeq: 1", "", "")),
     kOtherCSeq},
    {"ASecondSetupWithoutNumber", UpTo("> PLAY", WithNumbers("S: CSeq: 1", "S: CSeq: 2", "", "")), kNoCSeq},
    {"ASecondSetupWithAnotherNumber",
     UpTo("> PLAY", WithNumbers("S: CSeq: 1", "S: CSeq: 2", "S: CSeq: 4294967299", "")), kOtherCSeq},
    {"APlayWithoutNumber", WithNumbers("S: CSeq: 1", "S: CSeq: 2", "S: CSeq: 3", ""), kNoCSeq},
    {"APlayWithAnotherNumber", WithNumbers("S: CSeq: 1", "S: CSeq: 2", "S: CSeq: 3", "S: CSeq: 5"), kOtherCSeq},

    {"PipelinedAnswersInAnotherOrder", R"(
        > DESCRIBE clip 1
        < 200 1 | Supported: 3gpp-pipelined | SDP clip/ video audio
        > SETUP clip/video 2
        > SETUP clip/audio 3
        > PLAY clip 4
        < 200 3 | Session: 5 | TCP 1
        < 200 2 | Session: 5 | TCP 0
        < 200 4 | RTP-Info: url=r/video
     )",
     kOtherCSeq},
    {"PipelinedAnswersThatEndInBetween", R"(
        > DESCRIBE clip 1
        < 200 1 | Supported: 3gpp-pipelined | SDP clip/ video audio
        > SETUP clip/video 2
        > SETUP clip/audio 3
        > PLAY clip 4
        < 200 2 | Session: 5 | TCP 0
        CLOSE
     )",
     "17/0 RTSP::DoPlay(): Pipelined PLAY failed: 000 Unknown"},
    {"APipelinedSetupThatIsRefused", R"(
        > DESCRIBE clip 1
        < 200 1 | Supported: 3gpp-pipelined | SDP clip/ video audio
        > SETUP clip/video 2
        > SETUP clip/audio 3
        > PLAY clip 4
        < 200 2 | Session: 5 | TCP 0
        < 461 3
        < 200 4 | RTP-Info: url=r/video
        > TEARDOWN clip 5 | Session: 5
        CLOSE
     )",
     "17/19 RTSP::DoPlay(): One or more pipelined SETUP requests failed"},

    {"ARedirection", "> DESCRIBE clip 1\nS: RTSP/1.0 302 Found\nS: CSeq: 1\nS: Location: rtsp://127.0.0.1:1/\nS:\n",
     "17/770 RTSP::DoDescribe(): DESCRIBE failed: 302 Found"},
    {"AnAnswerThatPromisesAnotherOne",
     kPlay + "S: RTSP/1.0 100 Go on\nS: CSeq: 4\nS: X: y\nS:\nS: RTSP/1.0 199 On\nS: CSeq: 4\nS:\n" + kPlayed + kMedia,
     kPlays,
     {1, 1}},
    {"RequestsBetweenAllAnswers",
     kDescribe + R"(
        S: OPTIONS * RTSP/1.0
        S: CSeq: 77
        S:
        < 200 1 | SDP clip/ video audio
        C: RTSP/1.0 501 Not Implemented
        C: CSeq: 77
        C:
        > SETUP clip/video 2
        S: TEARDOWN rtsp://127.0.0.1/clip RTSP/1.0
        S: Content-Length: {length}
        S: Session: 5
        S:
        S| RTSP/1.0 200 OK
        < 200 2 | Session: 5 | TCP 0
        C: RTSP/1.0 501 Not Implemented
        C:
        > SETUP clip/audio 3
        < 200 3 | TCP 1
        > PLAY clip 4
     )" + kPlayed +
         kMedia,
     kPlays,
     {1, 1}},
    {"ADescriptionThatDrips", kDescribe + Dripping("RTSP/1.0 200 OK\r\nCSeq: 1\r\nContent-Length: 5\r\n\r\nv"),
     kBadLength},
    {"HeadsThatDrip",
     kDescribe +
         Dripping("RTSP/1.0 200 OK\r\nCSeq: 1\r\nContent-Base: rtsp://127.0.0.1/clip/\r\nContent-Length: 95\r\n\r\n") +
         R"(
        S| v=0
        S| m=video 0 RTP/AVP 96
        S| a=rtpmap:96 H264/90000
        S| m=audio 0 RTP/AVP 97
        S| a=rtpmap:97 AMR/8000
        C...
     )" + Dripping("RTSP/1.0 200 OK\r\nCSeq: 2\r\nSession: 5\r\nTransport: RTP/AVP/TCP;interleaved=0-1\r\n\r\n") +
         "C...\n" + Dripping("RTSP/1.0 200 OK\r\nCSeq: 3\r\nTransport: RTP/AVP/TCP;interleaved=2-3\r\n\r\n") +
         "C...\n" + Dripping("RTSP/1.0 200 OK\r\nCSeq: 4\r\nRTP-Info: url=r/video\r\n\r\n") + kPackets,
     kPlays,
     {1, 1}},
};

class HostileDialogueTest : public SessionTest, public testing::WithParamInterface<DialogueRow> {};

TEST_P(HostileDialogueTest, HasItsOutcome) {
    const DialogueRow& lRow = GetParam();
    Interleave();
    Serve(lRow.mDialogue);
    for (const unsigned lTrack : {0U, 1U}) {
        const auto lPacket = TestSupport::RtpPacket().Type(96 + lTrack).Seq(1).Payload({0x44, 1, 2, 3}).Build();
        mServer->Set(0 == lTrack ? "video" : "audio", TestSupport::Hex(lPacket));
    }
    const std::string lPlayed = Thrown([this] { Play(); });
    EXPECT_EQ(lRow.mThrown, lPlayed);
    if (lRow.mReceived.empty()) { return; }
    ASSERT_TRUE(mServer->Await("sent"));
    mPlayer.Produce(0);
    for (TrackIdx lTrack = 0; lTrack < lRow.mReceived.size(); ++lTrack) {
        EXPECT_EQ(lRow.mReceived[lTrack], mPlayer.GetTrackReception(lTrack).mPacketsReceived) << lTrack;
    }
}

INSTANTIATE_TEST_SUITE_P(Rows, HostileDialogueTest, testing::ValuesIn(kDialogues), NameOfRow());

// ---------------------------------------------------------------------------- the next request

}  // namespace

struct NextRow {
    const char* mName;
    /// The answer to a first request, on a connection that stays open.
    std::string mAnswer;
    const char* mThrown;
    /// Whether what comes after that answer could be part of it, or the answer that was awaited: the next request
    /// goes out on another connection.
    bool mIsOutOfStep;
};

namespace {

std::string ManyHeaders() {
    std::string lScript = "S: RTSP/1.0 200 OK\nS: CSeq: 1\n";
    for (int i = 0; i < 16384; ++i) {
        lScript += "S: X" + std::to_string(i) + ":\n";
    }
    return lScript + "S:\n";
}

const NextRow kNext[] = {
    {"ABodyInPieces", "S: RTSP/1.0 200 OK\nS: CSeq: 1\nS: Content-Length: 60\nS:\nS~ v=\nSPLIT\nS~ 0\n", kBadLength,
     true},
    {"TooManyHeaders", ManyHeaders(), "17/2 RTSP::RecvHeaders(): Invalid message: Too many headers", true},
    {"AnotherNumber", "< 404 9\n", kOtherCSeq, true},
    {"NoNumber", "S: RTSP/1.0 404 Not Found\nS:\n", kNoCSeq, true},
    {"NoMedia", "S: RTSP/1.0 200 OK\nS: CSeq: 1\nS:\n", kNoSDP, false},
};

class HostileNextRequestTest : public SessionTest, public testing::WithParamInterface<NextRow> {};

TEST_P(HostileNextRequestTest, HasAnAnswerOfItsOwn) {
    const NextRow& lRow = GetParam();
    Serve(kDescribe + lRow.mAnswer + (lRow.mIsOutOfStep ? "ACCEPT\n" : "") + "> DESCRIBE clip 2\n< 404 2");
    EXPECT_EQ(lRow.mThrown, Thrown([this] { Play(); }));
    EXPECT_EQ("17/1028 RTSP::DoDescribe(): DESCRIBE failed: 404 Not Found", Thrown([this] { Play(); }));
}

INSTANTIATE_TEST_SUITE_P(Rows, HostileNextRequestTest, testing::ValuesIn(kNext), NameOfRow());

// ---------------------------------------------------------------------------- a packet over and over

class HostileRepetitionTest : public testing::TestWithParam<bool> {};

TEST_P(HostileRepetitionTest, PlaysWhenNoMoreCanWait) {
    // Each is queued in front of the others, and all of them last no time at all.
    const auto lPacket = TestSupport::RtpPacket().Type(96).Seq(1).Marker().Payload(TestSupport::Bytes(1400, 0x41));
    const std::string lFrame = TestSupport::AsText(TestSupport::InterleavedFrame(0, lPacket.Build()));
    std::string lFrames;
    while (lFrames.size() < 1 << 20) {
        lFrames += lFrame;
    }
    const TestSupport::ReportCapture lReports;
    Testing::Peer lPeer;
    std::atomic<bool> lDone{false};
    std::thread lServer([&] {
        lPeer.Accept();
        // All answers at once: the client reads each when it has asked.
        bool lTaken = lPeer.Send(
            "RTSP/1.0 200 OK\r\nCSeq: 1\r\nContent-Length: 51\r\n\r\n"
            "v=0\r\nm=video 0 RTP/AVP 96\r\na=rtpmap:96 H264/90000\r\n"
            "RTSP/1.0 200 OK\r\nCSeq: 2\r\nSession: 5\r\n\r\n"
            "RTSP/1.0 200 OK\r\nCSeq: 3\r\nRTP-Info: url=x\r\n\r\n");
        for (std::size_t lSent = 0; lTaken && lSent < std::size_t{128} << 20; lSent += lFrames.size()) {
            lTaken = lPeer.Send(lFrames);
        }
        lDone = true;
    });
    {
        MediaPlayer lPlayer;
        lPlayer.SetConfigParam("RTSP:UseInterleavedRTP", "1");
        lPlayer.SetConfigParam("RTSP:QueueLimit", "64");
        lPlayer.Play(lPeer.URL(), Time(0));
        const auto lHasPacket = [&] { return GetParam() ? lPlayer.Fill(0) : lPlayer.TrackHasPacket(0); };
        bool lPlays = false;
        const auto lDeadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
        while (!lPlays && !lDone && std::chrono::steady_clock::now() < lDeadline) {
            lPlays = lHasPacket();
        }
        EXPECT_TRUE(lPlays) << "while the server was sending";
        EXPECT_EQ(0U, lPlayer.GetTrackReception(0).mPacketsDropped) << "what is not read need not be dropped";
        EXPECT_TRUE(lPlayer.TrackHasPacket(0));
    }
    lServer.join();
}

INSTANTIATE_TEST_SUITE_P(Ways, HostileRepetitionTest, testing::Bool());

}  // namespace
}  // namespace Player::Hostile
