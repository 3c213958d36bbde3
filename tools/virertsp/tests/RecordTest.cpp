#include "commands/Record.hpp"

#include <gmock/gmock.h>

#include <algorithm>

#include "Outcome.hpp"
#include "Scratch.hpp"
#include "commands/Command.hpp"
#include "recording/Reconnection.hpp"
#include "support/Packets.hpp"
#include "support/ScriptedServer.hpp"
#include "writers/Container.hpp"

namespace Virertsp {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;
using TestSupport::Hex;
using TestSupport::RtpPacket;
using TestSupport::ScriptedServer;

Outcome Record(const std::vector<std::string>& aArguments) {
    return RunCommand(RunRecord, aArguments);
}

/// A description with these media lines.
std::string Describe(const std::string& aMedia) {
    return "C: DESCRIBE rtsp://127.0.0.1:{port}/clip RTSP/1.0\n"
           "C...\n"
           "S: RTSP/1.0 200 OK\n"
           "S: CSeq: 1\n"
           "S: Content-Base: rtsp://127.0.0.1:{port}/clip/\n"
           "S: Content-Length: {length}\n"
           "S:\n"
           "S| v=0\n" +
           aMedia;
}

constexpr char kVideo[] =
    "S| m=video 0 RTP/AVP 96\n"
    "S| a=rtpmap:96 H264/90000\n"
    "S| a=fmtp:96 sprop-parameter-sets=Z0I=,aM4=\n"
    "S| a=control:video\n";

constexpr char kPlayInterleaved[] = R"(
    C: SETUP {*}
    C...
    S: RTSP/1.0 200 OK
    S: CSeq: 2
    S: Session: 1
    S: Transport: RTP/AVP/TCP;unicast;interleaved=0-1;ssrc=00000006
    S:
    C: PLAY {*}
    C...
    S: RTSP/1.0 200 OK
    S: CSeq: 3
    S: RTP-Info: url=rtsp://127.0.0.1:{port}/clip/video;seq=1;rtptime=9000
    S:
    SPLIT
)";

constexpr char kTeardown[] = R"(
    C: TEARDOWN {*}
    C...
    S: RTSP/1.0 200 OK
    S: CSeq: 4
    S:
)";

/// Two samples, then the server's goodbye.
std::string Media() {
    const auto lFirst = RtpPacket().Seq(1).Timestamp(9000).Ssrc(6).Marker().Payload({0x65, 0x88}).Build();
    const auto lSecond = RtpPacket().Seq(2).Timestamp(12600).Ssrc(6).Marker().Payload({0x41, 0x9a}).Build();
    const auto lBye = TestSupport::RtcpCompound(6).RR().BYE().Build();
    return "S$ 0 " + Hex(lFirst) + "\nS$ 0 " + Hex(lSecond) + "\nS$ 1 " + Hex(lBye) + "\n";
}

TEST(RecordTest, WritesWhatThePlayerDelivers) {
    const Scratch lScratch;
    ScriptedServer lServer(Describe(kVideo) + kPlayInterleaved + Media() + kTeardown);
    const Outcome lOutcome =
        Record({lServer.URL(), "--tcp", "--times", "-o", lScratch.Path("out"), "-c", "RTSP:TargetRTPBuffer=0"});
    EXPECT_EQ("", lServer.Failure());
    EXPECT_EQ("", lOutcome.mErrors);
    EXPECT_EQ(kExitOk, lOutcome.mCode);
    EXPECT_EQ("track 0: H264, 2 samples, 12 bytes, 00:00.0, 2 packets, 0 lost, ended by the server -> " +
                  lScratch.Path("out/track0.h264") + "\n",
              lOutcome.mOutput);
    EXPECT_EQ(std::string("\0\0\0\1\x67\x42\0\0\0\1\x68\xce\0\0\0\1\x65\x88\0\0\0\1\x41\x9a", 24),
              lScratch.Contents("out/track0.h264"));
    // 3600 ticks of 1/90000 s, cut to units of 2^-32 s and then to nanoseconds.
    EXPECT_EQ("0\n39999999\n", lScratch.Contents("out/track0.times"));
}

TEST(RecordTest, WhatWasOvertakenIsPutInOrder) {
    const auto lFrame = [](Player::Byte aSeq) {
        const auto lPacket =
            RtpPacket().Seq(aSeq).Timestamp(9000U * aSeq).Ssrc(6).Marker().Payload({0x41, aSeq}).Build();
        return "S$ 0 " + Hex(lPacket) + "\n";
    };
    const auto lBye = TestSupport::RtcpCompound(6).RR().BYE().Build();
    const Scratch lScratch;
    ScriptedServer lServer(Describe(kVideo) + kPlayInterleaved + lFrame(1) + lFrame(2) + "SPLIT\n" + lFrame(4) +
                           "SPLIT\n" + lFrame(3) + "S$ 1 " + Hex(lBye) + "\n" + kTeardown);
    const Outcome lOutcome =
        Record({lServer.URL(), "--tcp", "-o", lScratch.Path("out"), "-c", "RTSP:TargetRTPBuffer=0"});
    EXPECT_EQ("", lServer.Failure());
    EXPECT_EQ(kExitOk, lOutcome.mCode);
    EXPECT_THAT(lScratch.Contents("out/track0.h264"),
                ::testing::EndsWith(std::string("\0\0\0\1\x41\1\0\0\0\1\x41\2\0\0\0\1\x41\3\0\0\0\1\x41\4", 24)));
}

constexpr char kEncrypted[] =
    "S| m=audio 0 RTP/AVP 97\n"
    "S| a=rtpmap:97 enc-mpeg4-generic/44100\n"
    "S| a=fmtp:97 mode=AAC-hbr;config=1210;sizelength=13;indexlength=3;indexdeltalength=3\n"
    "S| a=control:audio\n";

constexpr char kPlayBoth[] = R"(
    C: SETUP {*}
    C...
    S: RTSP/1.0 200 OK
    S: CSeq: 2
    S: Session: 1
    S: Transport: RTP/AVP/TCP;unicast;interleaved=0-1;ssrc=00000006
    S:
    C: SETUP {*}
    C...
    S: RTSP/1.0 200 OK
    S: CSeq: 3
    S: Transport: RTP/AVP/TCP;unicast;interleaved=2-3;ssrc=00000007
    S:
    C: PLAY {*}
    C...
    S: RTSP/1.0 200 OK
    S: CSeq: 4
    S: RTP-Info: url=rtsp://127.0.0.1:{port}/clip/video;seq=1;rtptime=9000
    S:
    SPLIT
)";

constexpr char kTeardownBoth[] = R"(
    C: TEARDOWN {*}
    C...
    S: RTSP/1.0 200 OK
    S: CSeq: 5
    S:
)";

TEST(RecordTest, EncryptedAudioIsDroppedWhileVideoGoesOn) {
    const Scratch lScratch;
    const auto lBye = TestSupport::RtcpCompound(7).RR().BYE().Build();
    ScriptedServer lServer(Describe(std::string(kVideo) + kEncrypted) + kPlayBoth + Media() + "S$ 3 " + Hex(lBye) +
                           "\n" + kTeardownBoth);
    const Outcome lOutcome = Record({lServer.URL(), "--tcp", "-o", lScratch.Path("out")});
    EXPECT_EQ("", lServer.Failure());
    EXPECT_EQ(kExitOk, lOutcome.mCode);
    EXPECT_EQ("virertsp: track 1 is dropped: It is encrypted, and there is no key.\n", lOutcome.mErrors);
    EXPECT_THAT(lOutcome.mOutput, StartsWith("track 0: H264, 2 samples, 12 bytes, "));
    EXPECT_THAT(lOutcome.mOutput, ::testing::EndsWith("ended by the server -> nowhere\n"));
    EXPECT_THAT(lScratch.Contents("out/track0.h264"), ::testing::EndsWith("\x41\x9a"));
}

TEST(RecordTest, NothingButEncryptedAudio) {
    const Scratch lScratch;
    ScriptedServer lServer(Describe(kEncrypted) + kPlayInterleaved + kTeardown);
    const Outcome lOutcome = Record({lServer.URL(), "--tcp", "-o", lScratch.Path("out")});
    EXPECT_EQ(kExitNothingPlayable, lOutcome.mCode);
    EXPECT_THAT(lOutcome.mErrors, ::testing::EndsWith("virertsp: No track of the presentation can be written.\n"));
}

TEST(RecordTest, ADeviceSwallowsEverything) {
    ScriptedServer lServer(Describe(kVideo) + kPlayInterleaved + Media() + kTeardown);
    const Outcome lOutcome = Record({lServer.URL(), "--tcp", "-o", "/dev/null"});
    EXPECT_EQ("", lServer.Failure());
    EXPECT_EQ(kExitOk, lOutcome.mCode);
    EXPECT_THAT(lOutcome.mOutput, HasSubstr("2 samples, 12 bytes"));
    EXPECT_THAT(lOutcome.mOutput, HasSubstr("-> nowhere\n"));
}

TEST(RecordSlow, SilenceIsATimeOutButKeepsWhatCame) {
    const Scratch lScratch;
    const auto lPacket = RtpPacket().Seq(1).Timestamp(9000).Ssrc(6).Marker().Payload({0x65, 0x88}).Build();
    ScriptedServer lServer(Describe(kVideo) + kPlayInterleaved + "S$ 0 " + Hex(lPacket) + "\n" + kTeardown);
    const Outcome lOutcome =
        Record({lServer.URL(), "--tcp", "-o", lScratch.Path("out"), "-c", "RTSP:TimeOutRTPAfter=1"});
    EXPECT_EQ("", lServer.Failure());
    EXPECT_EQ(kExitTimeOut, lOutcome.mCode);
    EXPECT_EQ("virertsp: Media of track 0 stopped coming.\n", lOutcome.mErrors);
    EXPECT_THAT(lOutcome.mOutput, HasSubstr("1 samples"));
    EXPECT_THAT(lScratch.Contents("out/track0.h264"), ::testing::EndsWith("\x65\x88"));
}

TEST(RecordTest, FailuresOfTheDialogue) {
    struct Case {
        std::string mScript;
        int mCode;
        const char* mWords;
    };
    const std::string lDescribe = "C: DESCRIBE {*}\nC...\n";
    for (const Case& lCase : {
             Case{lDescribe + "S: RTSP/1.0 404 Not Found\nS: CSeq: 1\nS:", kExitRefused, "404 Not Found."},
             Case{lDescribe + "S: RTSP/1.0 200 OK\nS:", kExitProtocol, "CSeq missing."},
             Case{lDescribe + "CLOSE", kExitNetwork, "closed the connection without an answer."},
             Case{lDescribe, kExitTimeOut, "does not answer."},
             Case{Describe(""), kExitProtocol, "describes no presentation that can be understood."},
             Case{Describe("S| m=video 0 RTP/AVP 96\nS| a=rtpmap:96 VP8/90000\n"), kExitNothingPlayable,
                  "has no track of a format that can be played: VP8."},
         }) {
        ScriptedServer lServer(lCase.mScript);
        const Outcome lOutcome = Record({lServer.URL(), "--classic", "-o", "/dev/null", "-c", "RTSP:TimeOutAfter=1"});
        EXPECT_EQ("", lServer.Failure());
        EXPECT_EQ(lCase.mCode, lOutcome.mCode) << lCase.mScript;
        EXPECT_EQ("", lOutcome.mOutput);
        EXPECT_THAT(lOutcome.mErrors, StartsWith("virertsp: The "));
        EXPECT_THAT(lOutcome.mErrors, ::testing::EndsWith(std::string(lCase.mWords) + "\n"));
    }
}

TEST(RecordTest, AServerThatIsNotThere) {
    std::string lURL;
    {
        ScriptedServer lServer("");
        lURL = lServer.URL();
    }
    const Outcome lOutcome = Record({lURL, "-o", "/dev/null"});
    EXPECT_EQ(kExitNetwork, lOutcome.mCode);
    EXPECT_THAT(lOutcome.mErrors, HasSubstr("refuses connections.\n"));
}

TEST(RecordTest, AnOutputThatCantBeMade) {
    const Scratch lScratch;
    std::ofstream(lScratch.Path("file")) << "x";
    ScriptedServer lServer(Describe(kVideo) + kPlayInterleaved + kTeardown);
    const Outcome lOutcome = Record({lServer.URL(), "--tcp", "-o", lScratch.Path("file")});
    EXPECT_EQ("", lServer.Failure());
    EXPECT_EQ(kExitOutput, lOutcome.mCode);
    EXPECT_THAT(lOutcome.mErrors, StartsWith("virertsp: Can't make the directory "));
}

TEST(RecordTest, AFullDiskLeavesTheServerProperly) {
    const Scratch lScratch;
    std::filesystem::create_directory(lScratch.Path("out"));
    std::filesystem::create_symlink("/dev/full", lScratch.Path("out/track0.h264"));
    ScriptedServer lServer(Describe(kVideo) + kPlayInterleaved + Media() + kTeardown);
    const Outcome lOutcome = Record({lServer.URL(), "--tcp", "--force", "-o", lScratch.Path("out")});
    EXPECT_EQ("", lServer.Failure());
    EXPECT_EQ(kExitOutput, lOutcome.mCode);
    EXPECT_THAT(lOutcome.mErrors, ::testing::EndsWith("track0.h264: No space left on device.\n"));
}

TEST(RecordTest, ARefusalOnTheWayLeavesTheServerProperly) {
    const std::string lRefusal =
        "C: SETUP {*}\nC...\nS: RTSP/1.0 200 OK\nS: CSeq: 2\nS: Session: 1\n"
        "S: Transport: RTP/AVP/TCP;unicast;interleaved=0-1\nS:\n"
        "C: SETUP {*}\nC...\nS: RTSP/1.0 453 Not Enough Bandwidth\nS: CSeq: 3\nS:\n";
    ScriptedServer lServer(Describe(std::string(kVideo) + kEncrypted) + lRefusal + kTeardown);
    const Outcome lOutcome = Record({lServer.URL(), "--tcp", "-o", "/dev/null"});
    EXPECT_EQ("", lServer.Failure());
    EXPECT_EQ(kExitRefused, lOutcome.mCode);
}

TEST(RecordTest, ALimitLeavesTheServerProperly) {
    const auto lFrame = [](unsigned aSeq) {
        return "S$ 0 " +
               Hex(RtpPacket().Seq(aSeq).Timestamp(9000 * aSeq).Ssrc(6).Marker().Payload({0x41, 0x9a}).Build()) + "\n";
    };
    std::string lMedia;
    for (unsigned lSeq = 1; lSeq < 40; ++lSeq) {
        lMedia += lFrame(lSeq);
    }
    ScriptedServer lServer(Describe(kVideo) + kPlayInterleaved + lMedia + kTeardown);
    const Outcome lOutcome = Record({lServer.URL(), "--tcp", "-o", "/dev/null", "--seconds", "2"});
    EXPECT_EQ("", lServer.Failure());
    EXPECT_EQ(kExitOk, lOutcome.mCode);
    // One tenth of a second each: the one that reaches the limit is the last.
    EXPECT_THAT(lOutcome.mOutput, HasSubstr(" 21 samples, "));
}

TEST(RecordSlow, MediaThatStopBeforeTheDescribedEndAreATimeOut) {
    for (const bool lEarly : {true, false}) {
        std::string lPlay = kPlayInterleaved;
        lPlay.insert(lPlay.find("S: RTP-Info"), std::string("S: Range: npt=0-") + (lEarly ? "1.2" : "0.5") + "\n");
        const auto lPacket = RtpPacket().Seq(1).Timestamp(9000).Ssrc(6).Marker().Payload({0x65, 0x88}).Build();
        ScriptedServer lServer(Describe(kVideo) + lPlay + "S$ 0 " + Hex(lPacket) + "\nCLOSE\nACCEPT\n" + kTeardown);
        const Outcome lOutcome = Record({lServer.URL(), "--tcp", "-o", "/dev/null", "-c", "RTSP:TimeOutRTPAfter=3"});
        EXPECT_EQ(lEarly ? kExitTimeOut : kExitOk, lOutcome.mCode);
        EXPECT_EQ(lEarly ? "virertsp: Media stopped coming at 00:00.0, before the described end at 00:01.2.\n" : "",
                  lOutcome.mErrors);
    }
}

TEST(RecordTest, AServerThatWantsAPasswordComesWithAdvice) {
    struct Case {
        std::vector<std::string> mOptions;
        const char* mUser;
        const char* mAdvice;
    };
    for (const Case& lCase : {Case{{}, "", " Try it with --user."}, Case{{"--classic"}, "", ""},
                              Case{{}, "me:secret@", " Check the name and the password."}}) {
        ScriptedServer lServer(
            "C: DESCRIBE {*}\nC...\nS: RTSP/1.0 401 Unauthorized\nS: CSeq: 1\n"
            "S: WWW-Authenticate: Unknown\nS:\n");
        std::vector<std::string> lArguments = {lServer.URL().insert(sizeof("rtsp://") - 1, lCase.mUser), "-o",
                                               "/dev/null"};
        lArguments.insert(lArguments.end(), lCase.mOptions.begin(), lCase.mOptions.end());
        const Outcome lOutcome = Record(lArguments);
        EXPECT_EQ("", lServer.Failure());
        EXPECT_EQ(kExitRefused, lOutcome.mCode);
        EXPECT_THAT(lOutcome.mErrors, ::testing::EndsWith(std::string(" 401 Unauthorized.") + lCase.mAdvice + "\n"));
    }
}

TEST(RecordTest, AServerThatIsNamedByAnotherIsNotTakenForIt) {
    ScriptedServer lServer(
        "C: DESCRIBE {*}\nC...\nS: RTSP/1.0 302 Found\nS: CSeq: 1\nS: Location: rtsp://127.0.0.1:1/clip\nS:\n");
    const Outcome lOutcome = Record({lServer.URL(), "-o", "/dev/null"});
    EXPECT_EQ("", lServer.Failure());
    EXPECT_EQ(kExitNetwork, lOutcome.mCode);
    EXPECT_EQ("virertsp: The server that 127.0.0.1:" + std::to_string(lServer.Port()) +
                  " redirects to refuses connections.\n",
              lOutcome.mErrors);
}

TEST(RecordTest, ATransportThatTheServerRefusesComesWithAdvice) {
    for (const bool lTCP : {false, true}) {
        ScriptedServer lServer(Describe(kVideo) +
                               "C: SETUP {*}\nC...\nS: RTSP/1.0 461 Unsupported transport\nS: CSeq: 2\nS:\n");
        const Outcome lOutcome = Record({lServer.URL(), "--classic", "-o", "/dev/null", lTCP ? "--tcp" : "--times"});
        EXPECT_EQ(kExitRefused, lOutcome.mCode);
        EXPECT_THAT(lOutcome.mErrors, ::testing::EndsWith(std::string("461 Unsupported transport. Try it with") +
                                                          (lTCP ? "out --tcp.\n" : " --tcp.\n")));
    }
}

TEST(RecordSlow, AfterAFailureItGoesOnInNewFiles) {
    const Scratch lScratch;
    const auto lPacket = RtpPacket().Seq(1).Timestamp(9000).Ssrc(6).Marker().Payload({0x65, 0x88}).Build();
    ScriptedServer lServer(Describe(kVideo) + kPlayInterleaved + "S$ 0 " + Hex(lPacket) + "\nCLOSE\nACCEPT\n" +
                           kTeardown + "ACCEPT\n" + Describe(kVideo) + kPlayInterleaved + Media() + kTeardown);
    const Outcome lOutcome = Record({lServer.URL(), "--classic", "--tcp", "--reconnect", "-o", lScratch.Path("out"),
                                     "-c", "RTSP:TimeOutRTPAfter=1"});
    EXPECT_EQ("", lServer.Failure());
    EXPECT_EQ(kExitOk, lOutcome.mCode);
    EXPECT_EQ("virertsp: Media of track 0 stopped coming. Trying again in 1 s.\n", lOutcome.mErrors);
    EXPECT_THAT(lScratch.Contents("out/track0.h264"), ::testing::EndsWith("\x65\x88"));
    EXPECT_THAT(lScratch.Contents("out/track0-2.h264"), ::testing::EndsWith("\x41\x9a"));
}

/// Sixteen pictures, every fourth of which a decoder can begin with; ten a second.
std::string Groups() {
    std::string lMedia;
    for (unsigned lSeq = 1; lSeq <= 16; ++lSeq) {
        const Player::Byte lType = 1 == lSeq % 4 ? 0x65 : 0x41;
        const auto lNumber = static_cast<Player::Byte>(lSeq);
        lMedia += "S$ 0 " +
                  Hex(RtpPacket().Seq(lSeq).Timestamp(9000 * lSeq).Ssrc(6).Marker().Payload({lType, lNumber}).Build()) +
                  "\n";
    }
    const auto lBye = TestSupport::RtcpCompound(6).RR().BYE().Build();
    return lMedia + "S$ 1 " + Hex(lBye) + "\n";
}

/// What a file holds after the parameter sets of the description.
std::string Pictures(const std::string& aFile) {
    constexpr std::size_t kSets = 12;
    return aFile.size() < kSets ? "" : aFile.substr(kSets);
}

TEST(RecordSlow, SplitFilesBeginWithRandomAccessPointsAndLackNothing) {
    for (const char* const lSplit : {"0.024kB", "1s"}) {
        const bool lTime = 's' == lSplit[1];
        const Scratch lScratch;
        ScriptedServer lServer(Describe(kVideo) + kPlayInterleaved + Groups() + kTeardown);
        const Outcome lOutcome =
            Record({lServer.URL(), "--tcp", "--times", "--split", lSplit, "-o", lScratch.Path("out")});
        EXPECT_EQ("", lServer.Failure());
        EXPECT_EQ(kExitOk, lOutcome.mCode) << lOutcome.mErrors;
        std::string lAll;
        for (unsigned lPart = 1; lPart <= (lTime ? 2 : 4); ++lPart) {
            const std::string lName = "out/track0-000" + std::to_string(lPart);
            const std::string lPictures = Pictures(lScratch.Contents(lName + ".h264"));
            EXPECT_EQ(std::string("\0\0\0\1\x65", 5), lPictures.substr(0, 5)) << lName;
            const std::string lTimes = lScratch.Contents(lName + ".times");
            EXPECT_EQ(lPictures.size() / 6, std::count(lTimes.begin(), lTimes.end(), '\n'));
            lAll += lPictures;
        }
        ASSERT_EQ(16U * 6, lAll.size());
        for (unsigned lPicture = 0; lPicture < 16; ++lPicture) {
            EXPECT_EQ(static_cast<char>(lPicture + 1), lAll[6 * lPicture + 5]);
        }
        EXPECT_THAT(lOutcome.mOutput, HasSubstr("track 0: H264, 16 samples, "));
        EXPECT_THAT(lOutcome.mOutput,
                    ::testing::EndsWith("-> " + lScratch.Path("out/track0-0001.h264") + " to " +
                                        lScratch.Path("out/track0-000") + (lTime ? '2' : '4') + ".h264\n"));
    }
}

/// Eight pictures, four a second, whose groups are open: after the first, every second one can be begun with because a
/// recovery point announces it, and none is an instantaneous refresh.
std::string OpenGroups() {
    std::string lMedia;
    unsigned lSeq = 0;
    const auto lSend = [&](unsigned lPicture, bool lLast, const std::vector<Player::Byte>& aUnit) {
        const RtpPacket lPacket = RtpPacket().Seq(++lSeq).Timestamp(22500 * lPicture).Ssrc(6).Payload(aUnit);
        lMedia += "S$ 0 " + Hex((lLast ? RtpPacket(lPacket).Marker() : lPacket).Build()) + "\n";
    };
    for (unsigned lPicture = 1; lPicture <= 8; ++lPicture) {
        if (1 == lPicture) {
            lSend(lPicture, true, {0x65, 0x88, 0x84});
        } else if (1 == lPicture % 2) {
            lSend(lPicture, false, {0x06, 0x06, 0x01, 0xC4, 0x80});
            lSend(lPicture, true, {0x41, 0x88, 0x84});
        } else {
            lSend(lPicture, true, {0x41, 0x9A, static_cast<Player::Byte>(lPicture)});
        }
    }
    const auto lBye = TestSupport::RtcpCompound(6).RR().BYE().Build();
    return lMedia + "S$ 1 " + Hex(lBye) + "\n";
}

TEST(RecordTest, StreamsOfOpenGroupsAreSplitAtTheirRecoveryPoints) {
    const Scratch lScratch;
    ScriptedServer lServer(Describe(kVideo) + kPlayInterleaved + OpenGroups() + kTeardown);
    const Outcome lOutcome = Record({lServer.URL(), "--tcp", "--split", "1s", "-o", lScratch.Path("out")});
    EXPECT_EQ("", lServer.Failure());
    EXPECT_EQ(kExitOk, lOutcome.mCode) << lOutcome.mErrors;
    using namespace std::string_literals;
    EXPECT_EQ(
        "\0\0\0\1\x65\x88\x84"s
        "\0\0\0\1\x41\x9A\2"s
        "\0\0\0\1\6\6\1\xC4\x80\0\0\0\1\x41\x88\x84"s
        "\0\0\0\1\x41\x9A\4"s,
        Pictures(lScratch.Contents("out/track0-0001.h264")));
    EXPECT_EQ(
        "\0\0\0\1\6\6\1\xC4\x80\0\0\0\1\x41\x88\x84"s
        "\0\0\0\1\x41\x9A\6"s
        "\0\0\0\1\6\6\1\xC4\x80\0\0\0\1\x41\x88\x84"s
        "\0\0\0\1\x41\x9A\x8"s,
        Pictures(lScratch.Contents("out/track0-0002.h264")));
    EXPECT_FALSE(std::filesystem::exists(lScratch.Path("out/track0-0003.h264")));
}

TEST(RecordTest, ALimitEndsSplitFiles) {
    const Scratch lScratch;
    ScriptedServer lServer(Describe(kVideo) + kPlayInterleaved + Groups() + kTeardown);
    const Outcome lOutcome =
        Record({lServer.URL(), "--tcp", "--split", "0.024kB", "--seconds", "0.5", "-o", lScratch.Path("out")});
    EXPECT_EQ("", lServer.Failure());
    EXPECT_EQ(kExitOk, lOutcome.mCode) << lOutcome.mErrors;
    EXPECT_EQ(12U, Pictures(lScratch.Contents("out/track0-0002.h264")).size());
    EXPECT_FALSE(std::filesystem::exists(lScratch.Path("out/track0-0003.h264")));
}

TEST(RecordTest, SplitFilesReplaceNoneOfARecordingBefore) {
    for (const bool lForce : {false, true}) {
        const Scratch lScratch;
        std::filesystem::create_directory(lScratch.Path("out"));
        // Another track's, of a part that would come much later.
        std::ofstream(lScratch.Path("out/track1-0012.aac")) << "precious";
        std::ofstream(lScratch.Path("out/track0-0001.h264")) << (lForce ? "precious" : "");
        if (!lForce) { std::filesystem::remove(lScratch.Path("out/track0-0001.h264")); }
        ScriptedServer lServer(Describe(kVideo) + kPlayInterleaved + Media() + kTeardown);
        const Outcome lOutcome = Record(
            {lServer.URL(), "-o", lScratch.Path("out"), "--split", "1MB", lForce ? "--force" : "--tcp", "--tcp"});
        EXPECT_EQ("", lServer.Failure());
        EXPECT_EQ(lForce ? kExitOk : kExitOutput, lOutcome.mCode);
        EXPECT_EQ(lForce, std::filesystem::exists(lScratch.Path("out/track0-0001.h264")));
        if (!lForce) { EXPECT_THAT(lOutcome.mErrors, HasSubstr("track1-0012.aac is there already; --force ")); }
    }
}

TEST(RecordTest, WhatAServerMeansIsNotTriedAgain) {
    ScriptedServer lServer("C: DESCRIBE {*}\nC...\nS: RTSP/1.0 404 Not Found\nS: CSeq: 1\nS:");
    EXPECT_EQ(kExitRefused, Record({lServer.URL(), "--reconnect", "-o", "/dev/null"}).mCode);
}

TEST(RecordTest, PausesGrow) {
    Pauses lPauses;
    for (const int lSeconds : {1, 2, 4, 8, 16, 32, 60, 60}) {
        EXPECT_EQ(lSeconds, lPauses.Next().count());
    }
    lPauses.Reset();
    EXPECT_EQ(1, lPauses.Next().count());
}

TEST(RecordTest, FilesThatAreThereAreReplacedOnlyByForce) {
    for (const bool lForce : {false, true}) {
        const Scratch lScratch;
        std::filesystem::create_directory(lScratch.Path("out"));
        std::ofstream(lScratch.Path("out/track0.h264")) << "precious";
        ScriptedServer lServer(Describe(kVideo) + kPlayInterleaved + Media() + kTeardown);
        const Outcome lOutcome =
            Record({lServer.URL(), "-o", lScratch.Path("out"), lForce ? "--force" : "--tcp", "--tcp"});
        EXPECT_EQ("", lServer.Failure());
        EXPECT_EQ(lForce ? kExitOk : kExitOutput, lOutcome.mCode);
        EXPECT_EQ(lForce, "precious" != lScratch.Contents("out/track0.h264"));
        if (!lForce) { EXPECT_THAT(lOutcome.mErrors, HasSubstr("is there already; --force replaces it.\n")); }
    }
}

TEST(RecordTest, OnlyTheChosenTracksAreWritten) {
    const Scratch lScratch;
    const auto lBye = TestSupport::RtcpCompound(7).RR().BYE().Build();
    const std::string lMedia = Media() + "S$ 3 " + Hex(lBye) + "\n";
    ScriptedServer lServer(Describe(std::string(kVideo) + kEncrypted) + kPlayBoth + lMedia + kTeardownBoth);
    const Outcome lOutcome = Record({lServer.URL(), "--tcp", "--tracks", "0", "-o", lScratch.Path("out")});
    EXPECT_EQ("", lServer.Failure());
    EXPECT_EQ(kExitOk, lOutcome.mCode);
    EXPECT_EQ("", lOutcome.mErrors);
    EXPECT_THAT(lScratch.Contents("out/track0.h264"), ::testing::EndsWith("\x41\x9a"));

    ScriptedServer lOther(Describe(kVideo) + kPlayInterleaved + kTeardown);
    EXPECT_EQ(kExitNothingPlayable,
              Record({lOther.URL(), "--tcp", "--tracks", "1", "-o", lScratch.Path("other")}).mCode);
}

TEST(RecordTest, APasswordIsShownNowhere) {
    setenv("VIRERTSP_PASSWORD", "secret2", 1);
    ScriptedServer lServer("C: DESCRIBE {*}\nC...\nS: RTSP/1.0 404 Not Found\nS: CSeq: 1\nS:");
    std::string lURL = lServer.URL();
    lURL.insert(lURL.find("//") + 2, "me:secret1@");
    const Outcome lOutcome = Record({lURL, "-o", "/dev/null", "--user", "me", "-v"});
    unsetenv("VIRERTSP_PASSWORD");
    EXPECT_EQ("", lServer.Failure());
    EXPECT_EQ(kExitRefused, lOutcome.mCode);
    EXPECT_THAT(lOutcome.mOutput + lOutcome.mErrors, ::testing::Not(HasSubstr("secret")));
}

TEST(RecordTest, MistakesOnTheCommandLine) {
    const std::string lURL = "rtsp://127.0.0.1:1/clip";
    for (const std::vector<std::string>& lArguments : std::vector<std::vector<std::string>>{
             {},
             {lURL},
             {"-o", "/dev/null"},
             {lURL, lURL, "-o", "/dev/null"},
             {"http://127.0.0.1/clip", "-o", "/dev/null"},
             {lURL, "-o", "/dev/null", "--transport", "sctp"},
             {lURL, "-o", "/dev/null", "--tracks", "0,x"},
             {lURL, "-o", "/dev/null", "--unknown"},
             {lURL, "-o", "/dev/null", "--split", "10"},
             {lURL, "-o", "/dev/null", "--split", ""},
             {lURL, "-o", "/dev/null", "--seconds", "-1"},
             {lURL, "-o", "/dev/null", "-c", "no equals sign"},
             {lURL, "-o", "/dev/null", "-c", "RTSP:TimeoutAfter=5"},
             {lURL, "-o", "/dev/null", "-c", "RTSP:TimeOutAfter=0"},
             {lURL, "-o", "/dev/null", "-c", "RTSP:TimeOutAfter=5s"},
             {lURL, "-o", "/dev/null", "-c", "RTSP:Profile=clasic"},
             {lURL, "-o", "/dev/null", "-c", "RTSP:UseUDPPortsFrom=65536"},
             {lURL, "-o", "/dev/null", "-c", "RTSP:UseUDPPortsTo=65537"},
             {lURL, "-o", "/dev/null", "-c", "RTSP:UseUDPPortsFrom=6001", "-c", "RTSP:UseUDPPortsTo=6000"},
         }) {
        const Outcome lOutcome = Record(lArguments);
        EXPECT_EQ(kExitUsage, lOutcome.mCode) << ::testing::PrintToString(lArguments);
        EXPECT_THAT(lOutcome.mErrors, StartsWith("virertsp: "));
    }
}

TEST(RecordTest, MistakesAreNamed) {
    const std::string lURL = "rtsp://127.0.0.1:1/clip";
    struct Case {
        std::vector<std::string> mArguments;
        const char* mErrors;
    };
    for (const Case& lCase : {
             Case{{"-c", "RTSP:Profile=clasic"}, "virertsp: RTSP:Profile takes modern or classic.\n"},
             Case{{"-c", "RTSP:TimeOutRTPAfter=5s"}, "virertsp: RTSP:TimeOutRTPAfter takes a whole number.\n"},
             Case{{"--seconds", "-1"}, "virertsp: --seconds takes a number from 0 to 1000000000.\n"},
             Case{{"--seconds", "10min"}, "virertsp: --seconds takes a number from 0 to 1000000000.\n"},
             Case{{"--seconds", ""}, "virertsp: --seconds takes a number from 0 to 1000000000.\n"},
         }) {
        std::vector<std::string> lArguments = {lURL, "-o", "/dev/null"};
        lArguments.insert(lArguments.end(), lCase.mArguments.begin(), lCase.mArguments.end());
        EXPECT_EQ(lCase.mErrors, Record(lArguments).mErrors);
    }
}

TEST(RecordTest, ALocationNamesAServerAndAPort) {
    for (const char* const lLocation : {"rtsp://", "rtsp:///clip", "rtsp://:554/clip", "rtsp://me:secret@/clip"}) {
        const Outcome lOutcome = Record({lLocation, "-o", "/dev/null"});
        EXPECT_EQ(kExitUsage, lOutcome.mCode) << lLocation;
        EXPECT_EQ("virertsp: The location names no server.\n", lOutcome.mErrors) << lLocation;
    }
    for (const char* const lServer : {"127.0.0.1:0", "127.0.0.1:65536", "127.0.0.1:clip", "127.0.0.1:", "[::1]:+1"}) {
        const Outcome lOutcome = Record({std::string("rtsp://") + lServer + "/clip", "-o", "/dev/null"});
        EXPECT_EQ(kExitUsage, lOutcome.mCode) << lServer;
        EXPECT_EQ("virertsp: The port of a location is a number from 1 to 65535.\n", lOutcome.mErrors) << lServer;
    }
    for (const char* const lServer : {"127.0.0.1:1", "me:secret@127.0.0.1:1", "[::1]:1"}) {
        EXPECT_EQ(kExitNetwork, Record({std::string("rtsp://") + lServer + "/clip", "-o", "/dev/null"}).mCode)
            << lServer;
    }
}

TEST(RecordTest, ANameOfAFileOfAnotherKindBecomesNoDirectory) {
    const Scratch lScratch;
    for (const char* const lName : {"clip.avi", "clip.H264", "clip.ts"}) {
        const Outcome lOutcome = Record({"rtsp://127.0.0.1:1/clip", "-o", lScratch.Path(lName)});
        EXPECT_EQ(kExitUsage, lOutcome.mCode);
        EXPECT_EQ("virertsp: --output takes a directory, or a file that ends in .mp4 or .mkv.\n", lOutcome.mErrors);
        EXPECT_FALSE(std::filesystem::exists(lScratch.Path(lName)));
    }
    std::filesystem::create_directory(lScratch.Path("clip.ts"));
    for (const char* const lName : {"clip.ts", "2026.11.22", "clip"}) {
        EXPECT_EQ(kExitNetwork, Record({"rtsp://127.0.0.1:1/clip", "-o", lScratch.Path(lName)}).mCode) << lName;
    }
}

TEST(RecordTest, AContainersEndingIsTakenInAnyCase) {
    EXPECT_TRUE(Container::IsFor("CLIP.MP4"));
    EXPECT_TRUE(Container::IsFor("clip.Mkv"));
    EXPECT_FALSE(Container::IsFor("mp4"));
    EXPECT_FALSE(Container::IsFor("clip.mp4/out"));
}

TEST(RecordTest, HelpListsTheKeys) {
    const Outcome lOutcome = Record({"--help"});
    EXPECT_EQ(kExitOk, lOutcome.mCode);
    EXPECT_EQ("", lOutcome.mErrors);
    EXPECT_THAT(lOutcome.mOutput, StartsWith("Usage:\n  virertsp command [OPTION"));
    EXPECT_THAT(lOutcome.mOutput, HasSubstr("  RTSP:TimeOutAfter             seconds to wait for the server (10)\n"));
}

TEST(RecordTest, TheLibrarySpeaksOnlyWhenAsked) {
    for (const bool lVerbose : {false, true}) {
        ScriptedServer lServer("C: DESCRIBE {*}\nC...\nS: RTSP/1.0 404 Not Found\nS: CSeq: 1\nS:");
        const Outcome lOutcome = Record({lServer.URL(), "-o", "/dev/null", lVerbose ? "-v" : "--tcp"});
        EXPECT_EQ(lVerbose, std::string::npos != lOutcome.mErrors.find("Sending RTSP DESCRIBE"));
    }
}

}  // namespace
}  // namespace Virertsp
