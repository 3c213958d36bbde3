#include <gmock/gmock.h>

#include "Outcome.hpp"
#include "commands/Command.hpp"
#include "commands/Probe.hpp"
#include "commands/Stats.hpp"
#include "support/ScriptedServer.hpp"

namespace Virertsp {
namespace {

using ::testing::HasSubstr;
using ::testing::MatchesRegex;
using ::testing::StartsWith;
using TestSupport::ScriptedServer;

constexpr char kDescribe[] = R"(
    C: DESCRIBE rtsp://127.0.0.1:{port}/clip RTSP/1.0
    C...
    S: RTSP/1.0 200 OK
    S: CSeq: 1
    S~ Server: Test\x1b[2J/1.0\r\n
    S: Content-Base: rtsp://127.0.0.1:{port}/clip/
    S: Content-Length: {length}
    S:
    S| v=0
    S| s=A "name"
    S| a=range:npt=0-12.5
    S| m=video 0 RTP/AVP 98
    S| a=rtpmap:98 VP8/90000
    S| a=control:first
    S| m=video 0 RTP/AVP 96
    S| a=rtpmap:96 H264/90000
    S| a=fmtp:96 profile-level-id=640028
    S| a=control:second
)";

constexpr char kRefusal[] = R"(
    C: SETUP rtsp://127.0.0.1:{port}/clip/second RTSP/1.0
    C...
    S: RTSP/1.0 461 Unsupported transport
    S: CSeq: 2
    S:
)";

constexpr char kPlay[] = R"(
    C: SETUP rtsp://127.0.0.1:{port}/clip/second RTSP/1.0
    C...
    S: RTSP/1.0 200 OK
    S: CSeq: 2
    S: Session: 1
    S: Transport: RTP/AVP/TCP;unicast;interleaved=0-1
    S:
    C: PLAY {*}
    C...
    S: RTSP/1.0 200 OK
    S: CSeq: 3
    S: RTP-Info: url=rtsp://127.0.0.1:{port}/clip/second;seq=1;rtptime=9000
    S:
    C: TEARDOWN {*}
    C...
    S: RTSP/1.0 200 OK
    S: CSeq: 4
    S:
)";

TEST(ProbeTest, TellsAllThatTheServerSays) {
    ScriptedServer lServer(std::string(kDescribe) + kPlay);
    const Outcome lOutcome = RunCommand(RunProbe, {lServer.URL(), "--json", "--tcp"});
    EXPECT_EQ("", lServer.Failure());
    EXPECT_EQ("", lOutcome.mErrors);
    EXPECT_EQ(kExitOk, lOutcome.mCode);
    EXPECT_THAT(lOutcome.mOutput, StartsWith("{\"url\":\"" + lServer.URL() + "\",\"server\":\"Test\\u001b[2J/1.0\","));
    for (const char* const lPiece : {
             R"("range":{"begin_s":0.000,"end_s":12.500},"session":{"SessionName":"A \"name\"","StartTime":"0",)",
             R"({"track":null,"becomes":{"format":"VP8","obstacle":"No file format is known for VP8."},)",
             R"({"track":0,"becomes":{"format":"H.264","profile":"High","level":"4","extension":".h264"},)",
             R"("Transport":"RTP/AVP","PayloadType":"96",)",
             R"({"method":"SETUP","url":"rtsp://127.0.0.1:)",
             R"({"method":"TEARDOWN","url":"rtsp://127.0.0.1:)",
         }) {
        EXPECT_THAT(lOutcome.mOutput, HasSubstr(lPiece));
    }
}

TEST(ProbeTest, TellsPeopleTheSameWithoutCommandingTheirTerminal) {
    ScriptedServer lServer(std::string(kDescribe) + kPlay);
    const Outcome lOutcome = RunCommand(RunProbe, {lServer.URL(), "--tcp"});
    EXPECT_EQ("", lServer.Failure());
    EXPECT_EQ(kExitOk, lOutcome.mCode);
    for (const char* const lLine : {
             "  Server                 Test?[2J/1.0\n",
             "  Range                  00:00.0 to 00:12.5\n",
             "no track: VP8; can't be played; No file format is known for VP8.\n",
             "track 0: H.264 High, level 4; .h264\n",
             "  Id                     second\n",
             " ms  200 OK  rtsp://127.0.0.1:",
         }) {
        EXPECT_THAT(lOutcome.mOutput, HasSubstr(lLine));
    }
}

TEST(ProbeTest, WhyATrackCantBePlayed) {
    ScriptedServer lServer(R"(
        C: DESCRIBE {*}
        C...
        S: RTSP/1.0 200 OK
        S: CSeq: 1
        S: Content-Length: {length}
        S:
        S| v=0
        S| m=audio 0 RTP/AVP 97
        S| a=rtpmap:97 MPEG4-GENERIC/44100
        S| a=fmtp:97 config=1210
        S| m=audio 0 RTP/AVP 0
    )");
    const Outcome lOutcome = RunCommand(RunProbe, {lServer.URL(), "--classic"});
    EXPECT_EQ("", lServer.Failure());
    EXPECT_EQ(kExitNothingPlayable, lOutcome.mCode);
    EXPECT_THAT(lOutcome.mOutput,
                HasSubstr("no track: AAC LC, 44100 Hz, 2 channels; can't be played; The description says "
                          "MPEG4-GENERIC where mpeg4-generic is understood.\n"));
    EXPECT_THAT(lOutcome.mOutput, HasSubstr("no track: PCMU; can't be played; No file format is known for PCMU.\n"));
    EXPECT_THAT(lOutcome.mErrors, HasSubstr("can be played: MPEG4-GENERIC, PCMU.\n"));
}

TEST(ProbeTest, AnAnswerThatIsNotUnderstoodIsOne) {
    for (const bool lJson : {false, true}) {
        ScriptedServer lServer("C: DESCRIBE {*}\nC...\nS: RTSP/1.0 200 OK\nS:");
        const Outcome lOutcome = RunCommand(RunProbe, {lServer.URL(), "--classic", lJson ? "--json" : "--tcp"});
        EXPECT_EQ(kExitProtocol, lOutcome.mCode);
        EXPECT_THAT(lOutcome.mOutput, HasSubstr(lJson ? "\"misunderstood\":true" : "not understood  rtsp://"));
    }
}

TEST(ProbeTest, WhatCameToLightIsToldBeforeTheFailure) {
    ScriptedServer lServer(std::string(kDescribe) + kRefusal);
    const Outcome lOutcome = RunCommand(RunProbe, {lServer.URL(), "--classic", "--json"});
    EXPECT_EQ("", lServer.Failure());
    EXPECT_EQ(kExitRefused, lOutcome.mCode);
    EXPECT_THAT(lOutcome.mErrors, HasSubstr("refuses: SETUP failed: 461 Unsupported transport. Try it with --tcp.\n"));
    EXPECT_THAT(lOutcome.mOutput, HasSubstr(R"("format":"H.264")"));
    EXPECT_THAT(lOutcome.mOutput, HasSubstr(R"("status":461,"reason":"Unsupported transport","round_trip_ms":)"));
}

TEST(ProbeTest, ARequestWithoutAnAnswer) {
    ScriptedServer lServer("C: DESCRIBE {*}\nC...\nCLOSE");
    const Outcome lOutcome = RunCommand(RunProbe, {lServer.URL(), "--json"});
    EXPECT_EQ(kExitNetwork, lOutcome.mCode);
    EXPECT_EQ("{\"url\":\"" + lServer.URL() +
                  "\",\"server\":\"\",\"tracks\":[],\"requests\":[{\"method\":\"DESCRIBE\",\"url\":\"" + lServer.URL() +
                  "\"}]}\n",
              lOutcome.mOutput);
}

TEST(ProbeTest, AServerThatSaysNoNameHasNoLineForIt) {
    ScriptedServer lServer("C: DESCRIBE {*}\nC...\nCLOSE");
    const Outcome lOutcome = RunCommand(RunProbe, {lServer.URL()});
    EXPECT_THAT(lOutcome.mOutput, StartsWith(lServer.URL() + "\nrequests\n"));
}

TEST(ProbeTest, WithoutAServerThereIsNothingToTell) {
    std::string lURL;
    {
        ScriptedServer lServer("");
        lURL = lServer.URL();
    }
    const Outcome lOutcome = RunCommand(RunProbe, {lURL});
    EXPECT_EQ(kExitNetwork, lOutcome.mCode);
    EXPECT_EQ("", lOutcome.mOutput);
}

TEST(ProbeTest, MessagesOfTheLibraryOnRequest) {
    for (const bool lVerbose : {false, true}) {
        ScriptedServer lServer(std::string(kDescribe) + kRefusal);
        const Outcome lOutcome = RunCommand(RunProbe, {lServer.URL(), lVerbose ? "-v" : "-j"});
        EXPECT_EQ(lVerbose, std::string::npos != lOutcome.mErrors.find("> Sending RTSP DESCRIBE for URL: rtsp://"));
    }
}

TEST(StatsTest, TheLimitIsTimeNotMedia) {
    ScriptedServer lServer(std::string(kDescribe) + kPlay);
    const Outcome lOutcome = RunCommand(RunStats, {lServer.URL(), "--tcp", "--json", "--seconds", "0.05"});
    EXPECT_EQ("", lServer.Failure());
    EXPECT_EQ("", lOutcome.mErrors);
    EXPECT_EQ(kExitOk, lOutcome.mCode);
    EXPECT_THAT(lOutcome.mOutput,
                MatchesRegex(R"(\{"type":"summary","time_s":0\..*,"packets":0,.*"end":"stopped"\}.)"));
}

TEST(StatsTest, SilenceIsATimeOut) {
    ScriptedServer lServer(std::string(kDescribe) + kPlay);
    const Outcome lOutcome = RunCommand(RunStats, {lServer.URL(), "--tcp", "-c", "RTSP:TimeOutRTPAfter=1"});
    EXPECT_EQ("", lServer.Failure());
    EXPECT_EQ(kExitTimeOut, lOutcome.mCode);
    EXPECT_EQ("virertsp: No media of track 0 came.\n", lOutcome.mErrors);
    EXPECT_THAT(lOutcome.mOutput, HasSubstr("kbit/s, media stopped coming\n"));
}

TEST(InspectTest, MistakesOnTheCommandLine) {
    const std::string lURL = "rtsp://127.0.0.1:1/clip";
    EXPECT_EQ(kExitUsage, RunCommand(RunProbe, {}).mCode);
    EXPECT_EQ(kExitUsage, RunCommand(RunProbe, {lURL, "--seconds", "1"}).mCode);
    EXPECT_EQ(kExitUsage, RunCommand(RunStats, {lURL, "--seconds", "-1"}).mCode);
    EXPECT_EQ(kExitUsage, RunCommand(RunStats, {lURL, "--output", "x"}).mCode);
}

}  // namespace
}  // namespace Virertsp
