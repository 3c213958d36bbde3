#include "support/ScriptedServer.hpp"

#include <arpa/inet.h>
#include <gmock/gmock.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include "support/Packets.hpp"

namespace TestSupport {
namespace {

using std::chrono::milliseconds;
using ::testing::StartsWith;

/// A client that does what a test says.
class Client {
public:
    explicit Client(unsigned aPort) : mSocket(socket(AF_INET, SOCK_STREAM, 0)) {
        sockaddr_in lAddress = {};
        lAddress.sin_family = AF_INET;
        lAddress.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        lAddress.sin_port = htons(static_cast<std::uint16_t>(aPort));
        EXPECT_EQ(0, connect(mSocket, reinterpret_cast<const sockaddr*>(&lAddress), sizeof(lAddress)));
    }
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;
    ~Client() { close(mSocket); }

    void Send(const std::string& aText) {
        EXPECT_EQ(static_cast<ssize_t>(aText.size()), send(mSocket, aText.data(), aText.size(), MSG_NOSIGNAL));
    }
    /// One read; "<end>" at the end, "<reset>" after one.
    std::string Read() {
        char lPiece[4096];
        const ssize_t lSize = recv(mSocket, lPiece, sizeof(lPiece), 0);
        if (lSize <= 0) { return 0 == lSize ? "<end>" : "<reset>"; }
        return std::string(lPiece, static_cast<std::size_t>(lSize));
    }
    bool HasData() const {
        pollfd lPoll = {mSocket, POLLIN, 0};
        return poll(&lPoll, 1, 0) > 0;
    }

private:
    int mSocket;
};

TEST(ScriptedServerTest, PlaysADialogueWordForWord) {
    ScriptedServer lServer(R"(
        // A comment, then a request whose port is known.
        C: DESCRIBE rtsp://127.0.0.1:{port}/clip RTSP/1.0
        C: CSeq: 1
        C:
        S: RTSP/1.0 200 OK
        S: CSeq: 1
        S: Content-Length: {length}
        S:
        S| v=0
        S| a=control:rtsp://127.0.0.1:{port}/clip
        S# 24 00 00 01 ff
        S$ 1 01 02
        S~ odd\r\\\x41
    )");
    const std::string lBody = "v=0\r\na=control:" + lServer.URL() + "\r\n";
    Client lClient(lServer.Port());
    lClient.Send("DESCRIBE " + lServer.URL() + " RTSP/1.0\r\nCSeq: 1\r\n\r\n");
    EXPECT_EQ("RTSP/1.0 200 OK\r\nCSeq: 1\r\nContent-Length: " + std::to_string(lBody.size()) + "\r\n\r\n" + lBody +
                  std::string("$\0\0\1\xff", 5) + std::string("$\1\0\2\1\2", 6) + "odd\r\\A",
              lClient.Read());
    EXPECT_EQ("", lServer.Failure());
}

TEST(ScriptedServerTest, ShowsWhereTheClientDeparted) {
    struct Case {
        const char* mScript;
        const char* mSent;
        const char* mFailure;
    };
    for (const Case& lCase : {
             Case{"C: CSeq: 1\nC: CSeq: {n}\nC: CSeq: {n+1}", "CSeq: 1\r\nCSeq: 7\r\nCSeq: 9\r\n",
                  "line 3 of the script: \n    the client sent \"CSeq: 9\\r\\n\"\n"
                  "    instead of      \"CSeq: 8\\r\\n\""},
             Case{"C: a", "a\n",
                  "line 1 of the script: \n    the client sent \"a\\n\"\n"
                  "    instead of      \"a\\r\\n\""},
             Case{"C: a", "a\r\nb", "behind the last line of the script: the client sent \"b\""},
             Case{"C# 01 ?? 03", "\1\2\4",
                  "line 1 of the script: \n    the client sent 01 02 04\n"
                  "    instead of      01 ?? 03"},
             Case{"C: a\nC: b", "a\r\n", "line 2 of the script: the client sent nothing"},
             Case{"C: a\nEND", "a\r\n", "line 2 of the script: the client did not end the connection"},
             Case{"AWAIT never", "", "line 1 of the script: nobody notified never"},
             Case{"ACCEPT\nACCEPT", "", "line 2 of the script: the client did not connect"},
         }) {
        ScriptedServer lServer(lCase.mScript, milliseconds(300));
        Client lClient(lServer.Port());
        lClient.Send(lCase.mSent);
        EXPECT_THAT(lClient.Read(), ::testing::AnyOf("<end>", "<reset>"));
        EXPECT_EQ(lCase.mFailure, lServer.Failure());
    }
}

TEST(ScriptedServerTest, RefusesAScriptThatCantBeRead) {
    for (const char* lScript : {"X: what", "S$ none 01"}) {
        EXPECT_THROW(ParseScript(lScript), std::invalid_argument) << lScript;
    }
    EXPECT_EQ(5U, ParseScript("\n\n  // x\n\n  \t C:\n").at(0).mLine);
}

TEST(ScriptedServerTest, SplitsArriveAsSeparateReads) {
    std::string lScript;
    for (int i = 0; i < 50; ++i) {
        lScript += "S~ x\nSPLIT\n";
    }
    ScriptedServer lServer(lScript);
    Client lClient(lServer.Port());
    for (int i = 0; i < 50; ++i) {
        EXPECT_EQ("x", lClient.Read());
    }
    EXPECT_EQ("", lServer.Failure());
}

TEST(ScriptedServerTest, ASplitThatIsNeverReadFails) {
    ScriptedServer lServer("S~ x\nSPLIT", milliseconds(200));
    const Client lClient(lServer.Port());
    EXPECT_EQ("line 2 of the script: the client did not read what was sent", lServer.Failure());
}

TEST(ScriptedServerTest, EndsTheConnectionInEveryWay) {
    ScriptedServer lServer(R"(
        CLOSE
        NOTIFY closed
        ACCEPT
        RESET
        NOTIFY reset
        ACCEPT
        SHUTDOWN
        NOTIFY half
        C: still there
        END
    )");
    Client lFirst(lServer.Port());
    ASSERT_TRUE(lServer.Await("closed"));
    EXPECT_TRUE(lFirst.HasData());
    EXPECT_EQ("<end>", lFirst.Read());
    Client lSecond(lServer.Port());
    ASSERT_TRUE(lServer.Await("reset"));
    EXPECT_EQ("<reset>", lSecond.Read());
    {
        Client lThird(lServer.Port());
        ASSERT_TRUE(lServer.Await("half"));
        EXPECT_EQ("<end>", lThird.Read());
        lThird.Send("still there\r\n");
    }
    EXPECT_EQ("", lServer.Failure());
}

TEST(ScriptedServerTest, AConnectionTooManyFails) {
    ScriptedServer lServer("S: hello");
    const Client lFirst(lServer.Port());
    const Client lSecond(lServer.Port());
    EXPECT_EQ("behind the last line of the script: the client opened another connection", lServer.Failure());
}

TEST(ScriptedServerTest, ClosingOnUnreadWordsFails) {
    ScriptedServer lServer("AWAIT sent\nCLOSE");
    Client lClient(lServer.Port());
    lClient.Send("hello\r\n");
    lServer.Notify("sent");
    EXPECT_EQ("line 2 of the script: the client sent \"hello\\r\\n\"", lServer.Failure());
}

TEST(ScriptedServerTest, NotifiedBytesAreThere) {
    ScriptedServer lServer("AWAIT ready\nS: hello\nNOTIFY sent");
    Client lClient(lServer.Port());
    EXPECT_FALSE(lClient.HasData());
    lServer.Notify("ready");
    ASSERT_TRUE(lServer.Await("sent"));
    EXPECT_TRUE(lClient.HasData());
    EXPECT_EQ("", lServer.Failure());
}

TEST(ScriptedServerTest, AwaitEndsWithAFailedScript) {
    ScriptedServer lServer("C: a\nNOTIFY a");
    Client lClient(lServer.Port());
    lClient.Send("b\r\n");
    EXPECT_FALSE(lServer.Await("a"));
    EXPECT_THAT(lServer.Failure(), StartsWith("line 1 of the script"));
}

TEST(ScriptedServerTest, FramesOfTheClientArePutAside) {
    ScriptedServer lServer("C: a\nC: b\nC$ 1 81 c9 ??\nC...");
    Client lClient(lServer.Port());
    lClient.Send("a\r\n" + AsText(InterleavedFrame(1, {0x81, 0xc9, 7}) + InterleavedFrame(3, {5})) +
                 "b\r\nwhatever\r\n\r\n");
    EXPECT_EQ("", lServer.Failure());
    ASSERT_EQ(1U, lServer.Frames().size());
    EXPECT_EQ(3U, lServer.Frames()[0].mChannel);
    EXPECT_EQ(Bytes{5}, lServer.Frames()[0].mPayload);
}

TEST(ScriptedServerTest, AFrameHasTheRightChannelAndPayload) {
    for (const char* lExpected : {"3 05", "1 06", "1 05 05"}) {
        ScriptedServer lServer(std::string("C$ ") + lExpected);
        Client lClient(lServer.Port());
        lClient.Send(AsText(InterleavedFrame(1, {5})));
        EXPECT_EQ("line 1 of the script: \n    the client sent 1 05\n    instead of      " + std::string(lExpected),
                  lServer.Failure());
    }
}

TEST(ScriptedServerTest, SendsDatagramsToTheCapturedPorts) {
    const UdpPeer lReceiver;
    ScriptedServer lServer(R"(
        C: Transport: client_port={client_port0}-{client_port0+1}
        S: Transport: server_port={server_port0}
        RTP 0 {packet}
        RTCP 0 81 c9
        NOTIFY sent
    )");
    lServer.Set("packet", Hex(RtpPacket().Seq(0x1234).Marker().Timestamp(5).Ssrc(6).Payload({0x65}).Build()));
    Client lClient(lServer.Port());
    lClient.Send("Transport: client_port=" + lReceiver.Ports() + "\r\n");
    EXPECT_EQ("Transport: server_port=" + lServer.Media(0).Ports() + "\r\n", lClient.Read());
    ASSERT_TRUE(lServer.Await("sent"));
    EXPECT_TRUE(lReceiver.HasRtp());
    EXPECT_EQ("80 e0 12 34 00 00 00 05 00 00 00 06 65", Hex(lReceiver.ReceiveRtp()));
    EXPECT_EQ("81 c9", Hex(lReceiver.ReceiveRtcp()));
    EXPECT_EQ(std::to_string(lReceiver.RtpPort()), lServer.Get("client_port0"));
    lServer.Media(0).SendRtcp(RtcpCompound(1).BYE().Build());
    EXPECT_EQ("81 cb 00 01 00 00 00 01", Hex(lReceiver.ReceiveRtcp()));
    EXPECT_EQ("", lServer.Failure());
}

TEST(VariablesTest, MatchesAndCaptures) {
    struct Case {
        const char* mPattern;
        const char* mText;
        bool mMatches;
        const char* mCaptured = "";
    };
    for (const Case& lCase : {
             Case{"plain", "plain", true},
             Case{"plain", "plain ", false},
             Case{"plain ", "plain", false},
             Case{"{known}!", "5!", true},
             Case{"{known}!", "6!", false},
             Case{"{known+2}", "7", true},
             Case{"a={new}-{new+1};", "a=8-9;", true, "8"},
             Case{"a={new}-{new+1};", "a=8-8;", false},
             Case{"a={new}", "a=", false},
             Case{"a={*}b", "a=b", true},
             Case{"a={*}b", "a=xyzb", true},
             Case{"a={*}b", "a=xyz", false},
         }) {
        Variables lVariables;
        lVariables.Set("known", "5");
        EXPECT_EQ(lCase.mMatches, lVariables.Match(lCase.mPattern, lCase.mText)) << lCase.mPattern;
        EXPECT_EQ(lCase.mCaptured, lVariables.Get("new")) << lCase.mPattern;
    }
}

TEST(PacketsTest, WriteEveryField) {
    EXPECT_EQ("b1 60 00 02 00 00 00 03 00 00 00 04 00 00 00 09 be de 00 01 01 02 03 04 aa 00 02",
              Hex(RtpPacket()
                      .Seq(2)
                      .Timestamp(3)
                      .Ssrc(4)
                      .Csrcs({9})
                      .Extension(0xbede, {1, 2, 3, 4})
                      .Payload({0xaa})
                      .Padding(2)
                      .Build()));
    EXPECT_EQ("80 c8 00 06 00 00 00 01 00 00 00 02 80 00 00 00 00 00 00 04 00 00 00 05 00 00 00 06",
              Hex(RtcpCompound(1).SR(2, 0x80000000, 4, 5, 6).Build()));
    EXPECT_EQ("80 c9 00 01 00 00 00 01", Hex(RtcpCompound(1).RR().Build()));
}

}  // namespace
}  // namespace TestSupport
