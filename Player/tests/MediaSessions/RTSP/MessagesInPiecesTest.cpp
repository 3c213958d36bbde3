// Messages that arrive in pieces, late, in part or without end.
#include <thread>

#include "MediaSessions/RTSP/MessagesFixture.hpp"
#include "support/ScriptedServer.hpp"
#include "support/Throws.hpp"

namespace Player::MediaSessions {
namespace {

using ::testing::ElementsAre;
using Testing::Peer;
using TestSupport::AsBytes;
using TestSupport::Hex;
using TestSupport::Quoted;
using TestSupport::ReportCapture;
using TestSupport::ScriptedServer;
using TestSupport::Thrown;

// ---------------------------------------------------------------------------- arriving in pieces

/// Everything that can stand in front of a response, with every kind of line end.
std::string FullDialogue(unsigned aSeq) {
    return Frame(aSeq, "a") + "\r\nSET_PARAMETER * RTSP/1.0\rCSeq: 5\nContent-Length: 2\r\n\r\n$x" +
           Frame(aSeq + 1, "b") + "RTSP/1.0 100 Continue\nCSeq: 1\n\n\rRTSP/1.0 101 Go on\rCSeq: 1\r\r" +
           Frame(aSeq + 2, "c") + "RTSP/1.0 200 OK\r\nCSeq: 1\r\nContent-Length: 3\r\n\r\nabc";
}

void ExpectFullDialogue(Receiver& aReceiver, std::size_t aCase) {
    Headers lHeaders;
    Buffer lBody;
    EXPECT_EQ("nothing", Thrown([&] { EXPECT_TRUE(aReceiver.mMessages.RecvResponse(lHeaders, lBody, 1)); })) << aCase;
    EXPECT_EQ("abc", TextOf(lBody)) << aCase;
    EXPECT_THAT(aReceiver.Delivered(), ElementsAre("a", "b", "c")) << aCase;
}

constexpr char kAnswer[] = "RTSP/1.0 501 Not Implemented\r\nCSeq: 5\r\n\r\n";

TEST_F(MessagesTest, AllThatComesMayBeCutAnywhere) {
    const std::size_t lSize = FullDialogue(0).size();
    for (std::size_t lCut = 1; lCut < lSize; ++lCut) {
        const std::string lText = FullDialogue(static_cast<unsigned>(3 * lCut));
        // Two reads, and the second finds its bytes waiting.
        mPeer.Send(lText.substr(0, lCut));
        ASSERT_TRUE(mConnection.FillBuf(1));
        mPeer.Send(lText.substr(lCut));
        ExpectFullDialogue(mReceiver, lCut);
        mPeer.Expect(kAnswer);
    }
}

// Bodies come whole: they have one read beyond what is buffered.
TEST(MessagesInPiecesTest, AllThatComesMayComeByteByByte) {
    const std::string lText = FullDialogue(0);
    std::string lScript;
    for (std::size_t i = 0; i < lText.size();) {
        const std::size_t lCount = 0 == lText.compare(i, 2, "$x") ? 2 : 0 == lText.compare(i, 3, "abc") ? 3 : 1;
        lScript += "S# " + Hex(AsBytes(lText.substr(i, lCount))) + "\nSPLIT\n";
        i += lCount;
    }
    ScriptedServer lServer(lScript + "C# " + Hex(AsBytes(kAnswer)));
    const ReportCapture lReports;
    Receiver lReceiver(10);
    lReceiver.Connect("127.0.0.1:" + std::to_string(lServer.Port()));
    ExpectFullDialogue(lReceiver, 0);
    EXPECT_EQ("", lServer.Failure());
}

// ---------------------------------------------------------------------------- ending in the middle

TEST(MessagesCutShortTest, EveryPrefixOfAResponseHasItsOutcome) {
    const std::string lText = "RTSP/1.0 200 OK\r\nCSeq: 12\r\nContent-Length: 5\r\n\r\nhello";
    const std::size_t lName = lText.find("CSeq") + 4;
    const std::size_t lNumber = lText.find("12") + 2;
    const std::size_t lLength = lText.find(": 5") + 3;
    constexpr std::size_t kVersion = 5;

    const auto lOutcome = [&](std::size_t aCut) -> std::string {
        // Nothing, or a line that could be a request and is answered like one.
        if (aCut < kVersion) { return "refused"; }
        if (aCut < lName) { return std::string(kInvalidResponse) + "CSeq missing"; }
        if (aCut < lNumber) { return std::string(kInvalidResponse) + "CSeq mismatch"; }
        // The end of the data ends the headers.
        if (aCut < lLength) { return "accepted 0"; }
        if (aCut < lText.size()) { return std::string(kInvalidResponse) + "Bad Content-Length"; }
        return "accepted 5";
    };

    std::string lScript;
    for (std::size_t lCut = 0; lCut <= lText.size(); ++lCut) {
        lScript += 0 == lCut ? "" : "ACCEPT\n";
        lScript += "S# " + Hex(AsBytes(lText.substr(0, lCut))) + "\nCLOSE\n";
        if (0 < lCut && lCut < kVersion) { lScript += "ACCEPT\nC: RTSP/1.0 501 Not Implemented\nC:\nCLOSE\n"; }
    }
    const ReportCapture lReports;
    ScriptedServer lServer(lScript);
    Receiver lReceiver(10);
    for (std::size_t lCut = 0; lCut <= lText.size(); ++lCut) {
        lReceiver.Connect("127.0.0.1:" + std::to_string(lServer.Port()));
        Headers lHeaders;
        Buffer lBody;
        bool lAccepted = false;
        std::string lGot = Thrown([&] { lAccepted = lReceiver.mMessages.RecvResponse(lHeaders, lBody, 12); });
        if ("nothing" == lGot) { lGot = lAccepted ? "accepted " + std::to_string(lBody.Size()) : "refused"; }
        EXPECT_EQ(lOutcome(lCut), lGot) << Quoted(lText.substr(0, lCut));
    }
    EXPECT_EQ("", lServer.Failure());
}

TEST(MessagesCutShortTest, AConnectionThatEndsWithinAFrameIsARefusal) {
    const std::string lFrame = Frame(1, "payload");
    const ReportCapture lReports;
    Peer lPeer;
    Receiver lReceiver;
    for (std::size_t lCut = 1; lCut < lFrame.size(); ++lCut) {
        lReceiver.Connect(lPeer.Authority());
        lPeer.Accept();
        lPeer.Send(lFrame.substr(0, lCut));
        lPeer.Close();
        EXPECT_FALSE(lReceiver.mMessages.RecvResponse(1)) << lCut;
        EXPECT_EQ(0U, lReceiver.mMessages.StatusCode());
        EXPECT_FALSE(lReceiver.mMessages.RecvInterleavedPackets());
        EXPECT_THAT(lReceiver.Delivered(), ElementsAre());
    }
}

// ---------------------------------------------------------------------------- long silence before

TEST_F(MessagesTest, EveryResponseIsAwaitedAnew) {
    EXPECT_TRUE(Recv(kOk));
    mConnection.StartWait(Connection::Clock::now() - std::chrono::hours(1));
    EXPECT_TRUE(Recv(kOk));
}

TEST(MessagesInPiecesTest, ARequestWithinTheMediaIsAwaitedAnew) {
    ScriptedServer lServer(
        "S~ OPTIONS * \nNOTIFY begun\nSPLIT\nS~ RTSP/1.0\\r\\nCSeq: 4\\r\\n\\r\\n\n"
        "C: RTSP/1.0 501 Not Implemented\nC: CSeq: 4\nC:\n");
    const ReportCapture lReports;
    Receiver lReceiver(10);
    lReceiver.Connect("127.0.0.1:" + std::to_string(lServer.Port()));
    EXPECT_TRUE(lServer.Await("begun"));
    lReceiver.mConnection.StartWait(Connection::Clock::now() - std::chrono::hours(1));
    EXPECT_TRUE(lReceiver.mMessages.RecvInterleavedPackets());
    EXPECT_EQ("", lServer.Failure());
}

// ---------------------------------------------------------------------------- floods

class MessagesFloodTest : public MessagesTest {
protected:
    /// What comes of the piece sent again and again.
    std::string Flood(const std::string& aPiece) {
        constexpr std::size_t kBlock = 1 << 16;
        std::string lBlock;
        while (lBlock.size() < kBlock) {
            lBlock += aPiece;
        }
        std::thread lSender([&] {
            for (std::size_t lSent = 0; lSent < 16 * 1024 * 1024 && mPeer.Send(lBlock);) {
                lSent += lBlock.size();
            }
        });
        std::string lThrown = Thrown([&] { mMessages.RecvResponse(1); });
        lSender.join();
        return lThrown;
    }
};

TEST_F(MessagesFloodTest, NothingThatGoesOnForeverIsReadForever) {
    const std::string lLong(1000, 'x');
    for (const std::string& lPiece : {std::string("\r\n"), "RTSP/1.0 100 " + lLong + "\r\nCSeq: 1\r\n\r\n"}) {
        Connect();
        EXPECT_EQ("17/2 RTSP::FillBuf(): Invalid response: Message too long", Flood(lPiece)) << lPiece;
        EXPECT_FALSE(mConnection.IsOpen());
    }
    for (const std::string& lPiece : {lLong, lLong + ": y\r\n"}) {
        Connect();
        mPeer.Send("RTSP/1.0 200 OK\r\nCSeq: 1\r\n");
        EXPECT_EQ("17/2 RTSP::FillBuf(): Invalid response: Message too long", Flood(lPiece)) << lPiece;
        EXPECT_FALSE(mConnection.IsOpen());
    }
}

TEST_F(MessagesFloodTest, ManyHeadersAreTaken) {
    std::string lText = "RTSP/1.0 200 OK\r\nCSeq: 1\r\n";
    for (int i = 0; i < 10000; ++i) {
        lText += "X-" + std::to_string(i) + ": " + std::to_string(i) + "\r\n";
    }
    Headers lHeaders;
    std::thread lSender([&] { EXPECT_TRUE(mPeer.Send(lText + "\r\n")); });
    EXPECT_TRUE(mMessages.RecvResponse(lHeaders, 1));
    lSender.join();
    EXPECT_EQ(10001U, lHeaders.size());
    EXPECT_EQ("9999", HeaderValue(lHeaders, "x-9999"));
}

}  // namespace
}  // namespace Player::MediaSessions
