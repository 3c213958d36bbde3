// Interleaved frames between messages.
#include <algorithm>
#include <new>
#include <thread>

#include "MediaSessions/RTSP/MessagesFixture.hpp"
#include "support/Throws.hpp"

namespace Player::MediaSessions {
namespace {

using ::testing::ElementsAre;
using ::testing::StartsWith;
using TestSupport::AsText;
using TestSupport::Bytes;

constexpr UInt kLargestFrame = 1500;

// ---------------------------------------------------------------------------- frames

TEST_F(MessagesTest, FramesAreDeliveredWhereverALineWouldBeRead) {
    EXPECT_TRUE(Recv(Frame(1, "a") + Frame(2, "b") + "\r\n" + Frame(3, "c") + "OPTIONS * RTSP/1.0\r\nCSeq: 2\r\n\r\n" +
                     Frame(4, "d") + "\n" + Frame(5, "e") + "RTSP/1.0 100 Continue\r\nCSeq: 1\r\n\r\n" + Frame(6, "f") +
                     kOk));
    EXPECT_THAT(mReceiver.Delivered(), ElementsAre("a", "b", "c", "d", "e", "f"));
    mPeer.Expect("RTSP/1.0 501 Not Implemented\r\nCSeq: 2\r\n\r\n");
    EXPECT_EQ(0U, mConnection.Left());
}

TEST_F(MessagesTest, FramesBehindTheResponseWaitForTheNextReader) {
    EXPECT_TRUE(Recv(kOk + Frame(1, "a") + Frame(2, "b")));
    EXPECT_THAT(mReceiver.Delivered(), ElementsAre());
    EXPECT_TRUE(Recv("RTSP/1.0 200 OK\r\nCSeq: 2\r\n\r\n" + Frame(3, "c"), 2));
    EXPECT_THAT(mReceiver.Delivered(), ElementsAre("a", "b"));
    // It may be the last there is: nothing new has to come for it to be delivered.
    EXPECT_TRUE(mMessages.RecvInterleavedPackets());
    EXPECT_THAT(mReceiver.Delivered(), ElementsAre("c"));
    EXPECT_FALSE(mMessages.RecvInterleavedPackets());
    mPeer.Deliver(Frame(4, "d"));
    EXPECT_TRUE(mMessages.RecvInterleavedPackets());
    EXPECT_THAT(mReceiver.Delivered(), ElementsAre("d"));
}

TEST_F(MessagesTest, WhatIsBufferedIsDeliveredThoughTheConnectionHasEnded) {
    EXPECT_TRUE(Recv(kOk + Frame(1, "a") + Frame(2, "b") + Frame(3, "c").substr(0, 9)));
    mPeer.Close();
    EXPECT_TRUE(mMessages.RecvInterleavedPackets());
    EXPECT_THAT(mReceiver.Delivered(), ElementsAre("a", "b"));
    EXPECT_FALSE(mMessages.RecvInterleavedPackets());
}

TEST_F(MessagesTest, WhatIsBufferedIsDeliveredThoughTheConnectionWasReset) {
    EXPECT_TRUE(Recv(kOk + Frame(1, "a") + Frame(2, "b")));
    mPeer.Reset();
    EXPECT_THROW(mMessages.RecvInterleavedPackets(), NetworkErr);
    EXPECT_THAT(mReceiver.Delivered(), ElementsAre("a", "b"));
}

// A whole request in front of buffered frames must not keep them back, and half of one must not be waited for.
TEST_F(MessagesTest, ABufferedRequestIsAnsweredOnceItIsWhole) {
    EXPECT_TRUE(Recv(std::string(kOk) + "OPTIONS * RTSP/1.0\r\nCSeq: 3\r\n\r\n" + Frame(1, "a") +
                     "OPTIONS * RTSP/1.0\r\nCSeq: 4\r\n"));
    EXPECT_TRUE(mMessages.RecvInterleavedPackets());
    mPeer.Expect("RTSP/1.0 501 Not Implemented\r\nCSeq: 3\r\n\r\n");
    EXPECT_TRUE(mMessages.RecvInterleavedPackets());
    EXPECT_THAT(mReceiver.Delivered(), ElementsAre("a"));
    EXPECT_FALSE(mMessages.RecvInterleavedPackets());
    EXPECT_EQ("", mPeer.Received());
    mPeer.Deliver("\r\n");
    EXPECT_TRUE(mMessages.RecvInterleavedPackets());
    mPeer.Expect("RTSP/1.0 501 Not Implemented\r\nCSeq: 4\r\n\r\n");
}

// A dollar sign within a message is text.
TEST_F(MessagesTest, ADollarElsewhereIsNoFrame) {
    Headers lHeaders;
    Buffer lBody;
    mPeer.Send("RTSP/1.0 200 $\r\n$: $\r\nCSeq: 1\r\nContent-Length: 4\r\n\r\n$$$$");
    EXPECT_TRUE(mMessages.RecvResponse(lHeaders, lBody, 1));
    EXPECT_EQ("$", HeaderValue(lHeaders, "$"));
    EXPECT_EQ(4U, lBody.Size());
}

TEST_F(MessagesTest, FramesThatNobodyWantsAreDropped) {
    mMessages.SetFrameReceiver(nullptr);
    EXPECT_FALSE(mMessages.HasFrameReceiver());
    EXPECT_TRUE(Recv(Frame(1, "a") + kOk));
    mPeer.Deliver(Frame(2, "b"));
    EXPECT_FALSE(mMessages.RecvInterleavedPackets());
    EXPECT_EQ(0U, mConnection.Left());
    EXPECT_THAT(mReceiver.Delivered(), ElementsAre());
}

TEST_F(MessagesTest, AFrameMayBeEmptyOrForAChannelThatIsNotThere) {
    const std::string lEmpty("$\0\0\0", 4);
    const std::string lForeign("$\xFF\0\3abc", 7);
    EXPECT_TRUE(Recv(lEmpty + lForeign + Frame(1, "a") + kOk));
    mPeer.Deliver(lForeign + lEmpty);
    EXPECT_TRUE(mMessages.RecvInterleavedPackets());
    EXPECT_THAT(mReceiver.Delivered(), ElementsAre("a"));
    EXPECT_EQ(0U, mConnection.Left());
}

/// A frame whose packet has so many bytes.
std::string FrameOf(UInt aSize) {
    constexpr UInt kRtpHeader = 12;
    return Frame(1, std::string(aSize - kRtpHeader, 'x'));
}

TEST_F(MessagesTest, TheLargestFrameIsDelivered) {
    EXPECT_TRUE(Recv(FrameOf(kLargestFrame) + kOk));
    EXPECT_EQ(1U, mReceiver.Delivered().size());
    mPeer.Deliver(FrameOf(kLargestFrame));
    EXPECT_TRUE(mMessages.RecvInterleavedPackets());
}

using MessagesDeathTest = MessagesTest;

TEST_F(MessagesDeathTest, ALargerFrameEndsTheProcess) {
    mPeer.Deliver(FrameOf(kLargestFrame + 1));
    EXPECT_DEATH(mMessages.RecvInterleavedPackets(), "Assertion failed: 1500 >= lSize\n");
    // The process that died has read it.
    mPeer.Send(FrameOf(kLargestFrame + 1));
    EXPECT_DEATH(mMessages.RecvResponse(1), "Assertion failed: 1500 >= lSize\n");
}

// Its header is enough.
TEST_F(MessagesDeathTest, ALargerFrameEndsTheProcessBeforeItIsWhole) {
    mPeer.Deliver(std::string("$\0\xFF\xFF", 4));
    EXPECT_DEATH(mMessages.RecvInterleavedPackets(), "Assertion failed: 1500 >= lSize\n");
    // The process that died has read it.
    mPeer.Send(std::string("$\0\xFF\xFF", 4));
    EXPECT_DEATH(mMessages.RecvResponse(1), "Assertion failed: 1500 >= lSize\n");
}

// ---------------------------------------------------------------------------- draining

TEST_F(MessagesTest, DrainingWithoutAConnectionOrDataDoesNothing) {
    EXPECT_FALSE(mMessages.RecvInterleavedPackets());
    mPeer.Close();
    EXPECT_FALSE(mMessages.RecvInterleavedPackets());
    mConnection.DoConnectionReset();
    EXPECT_FALSE(mMessages.RecvInterleavedPackets());
    EXPECT_TRUE(mReports.All().empty());
}

TEST_F(MessagesTest, DrainingKeepsAFrameThatIsNotWhole) {
    const std::string lFrame = Frame(1, "first");
    for (std::size_t lCut = 1; lCut < lFrame.size(); ++lCut) {
        Connect();
        const unsigned lSeq = static_cast<unsigned>(10 * lCut);
        const std::string lText = Frame(lSeq, "a") + Frame(lSeq + 1, "b") + Frame(lSeq + 2, "c");
        const std::size_t lThird = lText.size() - Frame(lSeq, "c").size();
        const std::size_t lEnd = lThird + std::min(lCut, lText.size() - lThird - 1);
        mPeer.Deliver(lText.substr(0, lEnd));
        EXPECT_TRUE(mMessages.RecvInterleavedPackets());
        EXPECT_THAT(mReceiver.Delivered(), ElementsAre("a", "b")) << lCut;
        EXPECT_EQ(lEnd - lThird, mConnection.Left());
        mPeer.Deliver(lText.substr(lEnd));
        EXPECT_TRUE(mMessages.RecvInterleavedPackets());
        EXPECT_THAT(mReceiver.Delivered(), ElementsAre("c")) << lCut;
        EXPECT_EQ(0U, mConnection.Left());
    }
}

TEST_F(MessagesTest, DrainingDeliversAFrameThatComesByteByByte) {
    const std::string lFrame = Frame(1, "payload");
    for (std::size_t i = 0; i < lFrame.size(); ++i) {
        mPeer.Deliver(lFrame.substr(i, 1));
        EXPECT_EQ(i + 1 == lFrame.size(), mMessages.RecvInterleavedPackets()) << i;
    }
    EXPECT_THAT(mReceiver.Delivered(), ElementsAre("payload"));
}

TEST_F(MessagesTest, DrainingAnswersWhateverIsNoFrame) {
    mPeer.Deliver("OPTIONS * RTSP/1.0\r\nCSeq: 3\r\n\r\n" + Frame(1, "a"));
    EXPECT_TRUE(mMessages.RecvInterleavedPackets());
    mPeer.Expect("RTSP/1.0 501 Not Implemented\r\nCSeq: 3\r\n\r\n");
    EXPECT_THAT(mReceiver.Delivered(), ElementsAre());
    // A response that nobody awaits is answered like a request.
    mPeer.Deliver(Frame(2, "b") + "RTSP/1.0 200 OK\r\nCSeq: 9\r\nContent-Length: 2\r\n\r\nxx");
    EXPECT_TRUE(mMessages.RecvInterleavedPackets());
    EXPECT_THAT(mReceiver.Delivered(), ElementsAre("a", "b"));
    EXPECT_EQ("", mPeer.Received());
    mPeer.Deliver(Frame(3, "c"));
    EXPECT_TRUE(mMessages.RecvInterleavedPackets());
    mPeer.Expect("RTSP/1.0 501 Not Implemented\r\nCSeq: 9\r\n\r\n");
    mPeer.Deliver(Frame(4, "d"));
    EXPECT_TRUE(mMessages.RecvInterleavedPackets());
    EXPECT_THAT(mReceiver.Delivered(), ElementsAre("c", "d"));
}

TEST_F(MessagesTest, FramesAreDealtWithBeforeWhatStandsBehindThem) {
    const TestSupport::Bytes lReport = TestSupport::RtcpCompound(7).SR(0, 1, 1).Build();
    EXPECT_TRUE(Recv(Frame(1, "a") + AsText(TestSupport::InterleavedFrame(1, lReport)) +
                     "OPTIONS * RTSP/1.0\r\nCSeq: 3\r\n\r\n" + kOk));
    // The receiver report goes out before the answer to the request.
    EXPECT_THAT(mPeer.Read(4 + 32), testing::StartsWith(std::string("$\1\0\x20\x81\xC9", 6)));
    mPeer.Expect("RTSP/1.0 501 Not Implemented\r\nCSeq: 3\r\n\r\n");
}

TEST_F(MessagesTest, EmptyLinesInFrontOfAMessageOrFrameAreSkipped) {
    for (const char* lLines : {"\r\n", "\n", "\r", "\r\n\r\n", "\n\r\n\r"}) {
        EXPECT_TRUE(Recv(std::string(kOk) + lLines));
        EXPECT_FALSE(mMessages.RecvInterleavedPackets());
        mPeer.Deliver(std::string(lLines) + Frame(1, "a") + lLines + Frame(2, "b") + lLines);
        EXPECT_TRUE(mMessages.RecvInterleavedPackets());
        EXPECT_THAT(mReceiver.Delivered(), ElementsAre("a", "b"));
        mPeer.Deliver(lLines);
        EXPECT_FALSE(mMessages.RecvInterleavedPackets());
        EXPECT_EQ(0U, mConnection.Left());
        EXPECT_EQ("", mPeer.Received());
        mPeer.Deliver(std::string(lLines) + "OPTIONS * RTSP/1.0\r\nCSeq: 3\r\n\r\n");
        EXPECT_TRUE(mMessages.RecvInterleavedPackets());
        mPeer.Expect("RTSP/1.0 501 Not Implemented\r\nCSeq: 3\r\n\r\n");
        Connect();
    }
}

// What lies after a body that was cut short may look like anything, even like a frame that must not be.
TEST_F(MessagesTest, NothingIsReadBehindARequestThatWasCutShort) {
    mPeer.Deliver("SET_PARAMETER * RTSP/1.0\r\nCSeq: 3\r\nContent-Length: 100\r\n\r\n");
    std::thread lSender([&] { mPeer.SendWhenRead(std::string("$\0\xFF\xFF", 4)); });
    EXPECT_EQ("17/2 RTSP::HandleRequest(): Invalid request: Bad Content-Length",
              TestSupport::Thrown([&] { mMessages.RecvInterleavedPackets(); }));
    lSender.join();
    EXPECT_FALSE(mMessages.RecvInterleavedPackets());
    mPeer.Deliver("OPTIONS * RTSP/1.0\r\n\r\n");
    EXPECT_FALSE(mMessages.RecvInterleavedPackets());
    EXPECT_EQ("", mPeer.Received());
    EXPECT_EQ(4U, mConnection.Left());
}

class NoMemory : public Reporter {
public:
    NoMemory() { SetReporter(this); }
    ~NoMemory() override { SetDefaultReporter(); }
    void Report(const char* /*aFile*/, UInt /*aLine*/, Severity /*aSeverity*/, const char* /*aText*/) override {
        throw std::bad_alloc();
    }
};

TEST_F(MessagesTest, WhateverEndsTheReadingOfAMessageLeavesItBehind) {
    for (const bool lIsAwaited : {false, true}) {
        Connect();
        mPeer.Deliver("OPTIONS * RTSP/1.0\r\nCSeq: 3\r\n\r\n");
        const NoMemory lNoMemory;
        EXPECT_THROW(lIsAwaited ? mMessages.RecvResponse(1) : mMessages.RecvInterleavedPackets(), std::bad_alloc);
        EXPECT_TRUE(mConnection.IsOutOfStep());
    }
}

TEST_F(MessagesTest, DrainingAFloodLosesNothing) {
    constexpr unsigned kFrames = 1000;
    std::string lFlood;
    for (unsigned i = 0; i < kFrames; ++i) {
        lFlood += Frame(i, std::string(1400, 'x'));
    }
    std::thread lSender([&] { EXPECT_TRUE(mPeer.Send(lFlood)); });
    std::size_t lGot = 0;
    while (lGot < kFrames) {
        mMessages.RecvInterleavedPackets();
        lGot += mReceiver.Delivered().size();
    }
    lSender.join();
    EXPECT_EQ(kFrames, lGot);
}

TEST_F(MessagesTest, AReportGoesStraightToTheServer) {
    EXPECT_EQ(4, mMessages.Send_RR("abcd", 4));
    mPeer.Expect("abcd");
    mPeer.Close();
    EXPECT_EQ(0, mMessages.Send_RR("abcd", 4));
    mConnection.DoConnectionReset();
    EXPECT_EQ(0, mMessages.Send_RR("abcd", 4));
    EXPECT_FALSE(mPeer.HasCaller());
}

// The report that answers a frame finds the connection broken while the frames after it are still there.
TEST_F(MessagesTest, AConnectionThatBreaksAmidFramesIsSurvived) {
    const Bytes lReport = TestSupport::RtcpCompound(7).SR(0, 1, 1).Build();
    std::string lFrames = Frame(1, "a") + AsText(TestSupport::InterleavedFrame(1, lReport));
    for (unsigned lSeq = 2; lFrames.size() < 10000; ++lSeq) {
        lFrames += Frame(lSeq, std::string(100, 'b'));
    }
    mPeer.Send(lFrames);
    mPeer.Reset();
    EXPECT_THAT(TestSupport::Thrown([&] { mMessages.RecvResponse(1); }), ::testing::HasSubstr(" Socket::Write(): "));
    EXPECT_THAT(mReceiver.Delivered(), ElementsAre("a"));
    EXPECT_FALSE(mConnection.IsOpen());
    EXPECT_FALSE(mMessages.RecvInterleavedPackets());
    // It belongs to that answer: the next one is awaited anew.
    Connect();
    mPeer.Close();
    EXPECT_FALSE(mMessages.RecvResponse(1));
}

// The answer can't come any more, and the caller learns why: the server took in no report for a whole time-out.
TEST_F(MessagesTest, AReportThatTheServerDoesNotTakeEndsTheWait) {
    mPeer.FillClient();
    mPeer.Send(Frame(1, "a") +
               AsText(TestSupport::InterleavedFrame(1, TestSupport::RtcpCompound(7).SR(0, 1, 1).Build())));
    EXPECT_EQ("3/39 RTSP::Flush(): The server reads nothing", TestSupport::Thrown([&] { mMessages.RecvResponse(1); }));
    EXPECT_FALSE(mConnection.IsOpen());
    EXPECT_THAT(mReceiver.Delivered(), ElementsAre("a"));
}

// ---------------------------------------------------------------------------- before a request

TEST_F(MessagesTest, ARequestKeepsAConnectionThatIsUsable) {
    EXPECT_TRUE(Recv(kOk + Frame(1, "a")));
    mMessages.BeginRequest();
    EXPECT_TRUE(mConnection.IsOpen());
    EXPECT_EQ(Frame(1, "a").size(), mConnection.Left());
}

TEST_F(MessagesTest, ARequestLeavesAClosedConnectionWithWhatItBrought) {
    EXPECT_TRUE(Recv(kOk + Frame(1, "a") + Frame(2, "b") + Frame(3, "c").substr(0, 9)));
    mPeer.Close();
    mMessages.BeginRequest();
    EXPECT_FALSE(mConnection.IsOpen());
    EXPECT_EQ(0U, mConnection.Left());
    EXPECT_THAT(mReceiver.Delivered(), ElementsAre("a", "b"));
}

// The rest of a message cut short may look like a frame, even like one that must not be.
TEST_F(MessagesTest, ARequestLeavesAConnectionWhoseMessagesCantBeToldApart) {
    EXPECT_TRUE(Recv(kOk + std::string("$\0\xFF\xFF", 4)));
    mConnection.SetOutOfStep();
    mMessages.BeginRequest();
    EXPECT_FALSE(mConnection.IsOpen());
    EXPECT_EQ(0U, mConnection.Left());
}

}  // namespace
}  // namespace Player::MediaSessions
