#include "MediaSessions/RTSP/Messages.hpp"

#include <gmock/gmock.h>

#include <thread>

#include "MediaSessions/RTSP/Memory.hpp"
#include "MediaSessions/RTSP/Peer.hpp"
#include "MediaSessions/RTSP/Receiver.hpp"
#include "support/Packets.hpp"
#include "support/ReportCapture.hpp"
#include "support/ScriptedServer.hpp"

namespace Player::MediaSessions {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using Testing::Peer;
using ::testing::StartsWith;
using Testing::Thrown;
using TestSupport::AsBytes;
using TestSupport::AsText;
using TestSupport::Bytes;
using TestSupport::Hex;
using TestSupport::Quoted;
using TestSupport::ReportCapture;
using TestSupport::RtpPacket;
using TestSupport::ScriptedServer;

constexpr char kOk[] = "RTSP/1.0 200 OK\r\nCSeq: 1\r\n\r\n";
constexpr char kInvalidResponse[] = "17/2 RTSP::RecvResponse(): Invalid response: ";
constexpr UInt kLargestFrame = 1500;

/// A frame on channel 0 with an RTP packet; each payload is another packet.
std::string Frame(unsigned aSeq, const std::string& aPayload) {
    const Bytes lPacket = RtpPacket().Seq(aSeq).Ssrc(7).Payload(AsBytes(aPayload)).Build();
    return AsText(TestSupport::InterleavedFrame(0, lPacket));
}

std::string TextOf(const Buffer& aBuffer) {
    return std::string(aBuffer.Begin(), aBuffer.End());
}

class MessagesTest : public ::testing::Test {
protected:
    MessagesTest() { Connect(); }

    void Connect() {
        mReceiver.Connect(mPeer.Authority());
        mPeer.Accept();
        mReports.Clear();
    }
    bool Recv(const std::string& aText, UInt aCSeq = 1) {
        mPeer.Send(aText);
        return mMessages.RecvResponse(aCSeq);
    }
    std::string RecvThrows(const std::string& aText, UInt aCSeq = 1) {
        return Thrown([&] { Recv(aText, aCSeq); });
    }

    ReportCapture mReports;
    Peer mPeer;
    Receiver mReceiver;
    Connection& mConnection = mReceiver.mConnection;
    Messages& mMessages = mReceiver.mMessages;
};

// ---------------------------------------------------------------------------- status

TEST_F(MessagesTest, A2xxResponseIsASuccess) {
    EXPECT_TRUE(Recv(kOk));
    EXPECT_EQ((std::vector<ReportCapture::Entry>{{Severity::Info, "Got RTSP response: 200 OK"}}), mReports.All());
    EXPECT_EQ(0U, mMessages.StatusCode());
    EXPECT_EQ(0U, mConnection.Left());
}

TEST_F(MessagesTest, AnyOtherIsAFailureWithItsStatus) {
    EXPECT_FALSE(Recv("RTSP/1.0 454 Session Not Found\r\nCSeq: 1\r\n\r\n"));
    EXPECT_EQ(1108U, mMessages.StatusCode());
    EXPECT_EQ("Session Not Found", mMessages.StatusText());
    EXPECT_EQ((std::vector<ReportCapture::Entry>{{Severity::Error, "Got RTSP response: 454 Session Not Found"}}),
              mReports.All());
    // A success leaves what the last failure said.
    EXPECT_TRUE(Recv(kOk));
    EXPECT_EQ(0x454U, mMessages.StatusCode());
}

TEST_F(MessagesTest, StatusLines) {
    struct Case {
        const char* mLine;
        bool mSuccess;
        UInt mCode;
        const char* mText;
    };
    for (const Case& lCase : {
             Case{"RTSP/1.0 200 OK", true, 0x200, "OK"},
             Case{"RTSP/1.0 299 ", true, 0x299, "Unknown"},
             Case{"RTSP/1.0 2FF Fine", true, 0x2FF, "Fine"},
             Case{"rtsp/1.0 200 OK", true, 0x200, "OK"},
             Case{"RTSP/ 200 OK", true, 0x200, "OK"},
             Case{"RTSP/9.9x\t \t200\t OK then ", true, 0x200, "OK then "},
             Case{"RTSP/1.0 0x200 OK", true, 0x200, "OK"},
             // The reason begins where the number ends.
             Case{"RTSP/1.0 200OK", true, 0x200, "OK"},
             Case{"RTSP/1.0 404Not Found", false, 0x404, "Not Found"},
             Case{"RTSP/1.0 404-x", false, 0x404, "-x"},
             Case{"RTSP/1.0 404", false, 0x404, "Unknown"},
             Case{"RTSP/1.0 404 \t ", false, 0x404, "Unknown"},
             Case{"RTSP/1.0 459 Aggregate Not Allowed", false, 0x459, "Aggregate Not Allowed"},
             Case{"RTSP/1.0 500 Internal  Error", false, 0x500, "Internal  Error"},
             Case{"RTSP/1.0 300 x", false, 0x300, "x"},
             // The digits are hexadecimal ones, and so is the class.
             Case{"RTSP/1.0 512 x", false, 0x512, "x"},
             Case{"RTSP/1.0 A00 x", false, 0xA00, "x"},
             Case{"RTSP/1.0 0 x", false, 0, "x"},
             Case{"RTSP/1.0 20 x", false, 0x20, "x"},
             Case{"RTSP/1.0 2000 x", false, 0x2000, "x"},
             Case{"RTSP/1.0 12345 x", false, 0x12345, "x"},
             Case{"RTSP/1.0 -1 x", false, 0xFFFFFFFF, "x"},
             Case{"RTSP/1.0 99999999999999999999 x", false, 0xFFFFFFFF, "x"},
             Case{"RTSP/1.0", false, 0, "Unknown"},
             Case{"RTSP/", false, 0, "Unknown"},
         }) {
        EXPECT_EQ(lCase.mSuccess, Recv(std::string(lCase.mLine) + "\r\nCSeq: 1\r\n\r\n")) << lCase.mLine;
        if (!lCase.mSuccess) {
            EXPECT_EQ(lCase.mCode, mMessages.StatusCode()) << lCase.mLine;
            EXPECT_EQ(lCase.mText, mMessages.StatusText()) << lCase.mLine;
        }
        const std::string lReport = StringWithFormat("Got RTSP response: %03x %s", lCase.mCode, lCase.mText);
        EXPECT_EQ(1U, mReports.Count(lCase.mSuccess ? Severity::Info : Severity::Error, lReport)) << lCase.mLine;
        mReports.Clear();
    }
}

TEST_F(MessagesTest, TheEndOfTheDataIsAFailureWithoutStatus) {
    EXPECT_FALSE(Recv("RTSP/1.0 404 Not Found\r\nCSeq: 1\r\n\r\n"));
    mPeer.Send("\r\n\r\n");
    mPeer.Close();
    mReports.Clear();
    EXPECT_FALSE(mMessages.RecvResponse(1));
    EXPECT_EQ(0U, mMessages.StatusCode());
    EXPECT_EQ("Unknown", mMessages.StatusText());
    EXPECT_EQ((std::vector<ReportCapture::Entry>{{Severity::Error, "Got RTSP response: 000 Unknown"}}), mReports.All());
}

TEST_F(MessagesTest, ProvisionalResponsesAreDropped) {
    EXPECT_TRUE(
        Recv("RTSP/1.0 100 Continue\r\nCSeq: 1\r\n\r\n"
             "RTSP/1.0 1FF Still\r\nCSeq: 1\r\nContent-Length: 3\r\n\r\nabc"
             "\r\n"
             "RTSP/1.0 200 OK\r\nCSeq: 1\r\n\r\n"));
    EXPECT_EQ((std::vector<ReportCapture::Entry>{{Severity::Info, "Got RTSP response: 200 OK"}}), mReports.All());
    EXPECT_EQ(0U, mConnection.Left());
}

TEST_F(MessagesTest, NothingOfAProvisionalResponseIsLeft) {
    Headers lHeaders;
    Buffer lBody;
    mPeer.Send(
        "RTSP/1.0 100 Continue\r\nCSeq: 1\r\nSession: 1\r\nContent-Length: 3\r\n\r\nabc"
        "RTSP/1.0 200 OK\r\nCSeq: 1\r\nServer: x\r\n\r\n");
    EXPECT_TRUE(mMessages.RecvResponse(lHeaders, lBody, 1));
    EXPECT_EQ((Headers{{"CSeq", "1"}, {"Server", "x"}}), lHeaders);
    EXPECT_EQ(0U, lBody.Size());
    // One that is no answer to the request is as bad as a final one.
    EXPECT_EQ(std::string(kInvalidResponse) + "CSeq mismatch", RecvThrows("RTSP/1.0 100 Go\r\nCSeq: 2\r\n\r\n"));
}

TEST_F(MessagesTest, AProvisionalResponseAloneIsNoAnswer) {
    mPeer.Send("RTSP/1.0 100 Continue\r\nCSeq: 1\r\n\r\n");
    mPeer.Close();
    EXPECT_FALSE(mMessages.RecvResponse(1));
    EXPECT_EQ(0U, mMessages.StatusCode());
    EXPECT_EQ("Unknown", mMessages.StatusText());
}

// ---------------------------------------------------------------------------- headers

TEST_F(MessagesTest, HeadersAreNamesAndValues) {
    Headers lHeaders;
    mPeer.Send(
        "RTSP/1.0 200 OK\r\n"
        "CSEQ: 1\r\n"
        "Plain:value\r\n"
        "Blanks:    value with blanks  \r\n"
        "Tab:\tvalue\r\n"
        "Colons: a:b: c\r\n"
        "Empty:\r\n"
        "OnlyBlanks:   \r\n"
        "NoColon\r\n"
        "Twice: first\r\n"
        "TWICE: second\r\n"
        " folded: here\r\n"
        "Name : value\r\n"
        ": nameless\r\n" +
        std::string("Nul: a\0b\r\n\r\nrest", 16));
    EXPECT_TRUE(mMessages.RecvResponse(lHeaders, 1));
    EXPECT_EQ((Headers{{"CSEQ", "1"},
                       {"Plain", "value"},
                       {"Blanks", "value with blanks  "},
                       {"Tab", "\tvalue"},
                       {"Colons", "a:b: c"},
                       {"Empty", ""},
                       {"OnlyBlanks", ""},
                       {"NoColon", ""},
                       {"Twice", "second"},
                       {" folded", "here"},
                       {"Name ", "value"},
                       {"", "nameless"},
                       {"Nul", std::string("a\0b", 3)}}),
              lHeaders);
    EXPECT_EQ(4U, mConnection.Left());
}

TEST_F(MessagesTest, AHeaderMayBeLong) {
    const std::string lLong(5000, 'x');
    Headers lHeaders;
    mPeer.Send("RTSP/1.0 200 OK\r\nSession: " + lLong + "\r\nCSeq: 1\r\n\r\n");
    EXPECT_TRUE(mMessages.RecvResponse(lHeaders, 1));
    EXPECT_TRUE(lLong == lHeaders["Session"]);
}

TEST_F(MessagesTest, TheResponseMustBearTheNumberOfTheRequest) {
    struct Case {
        const char* mHeader;
        UInt mCSeq;
        const char* mComplaint;
    };
    constexpr const char* kMissing = "CSeq missing";
    constexpr const char* kMismatch = "CSeq mismatch";
    for (const Case& lCase : {
             Case{"CSeq: 7", 7, nullptr},
             Case{"cseq:7", 7, nullptr},
             Case{"CSEQ:   7", 7, nullptr},
             Case{"CSeq: 007 and more", 7, nullptr},
             Case{"CSeq: 4294967295", 4294967295U, nullptr},
             Case{"CSeq: 1\r\nCSeq: 7", 7, nullptr},
             Case{"X: 7", 7, kMissing},
             Case{"CSeq : 7", 7, kMissing},
             Case{" CSeq: 7", 7, kMissing},
             Case{"Xcseq: 7", 7, kMissing},
             Case{"CSeq: 8", 7, kMismatch},
             Case{"CSeq: 6", 7, kMismatch},
             Case{"CSeq: 7\r\nCSeq: 1", 7, kMismatch},
             Case{"CSeq:", 7, kMismatch},
             Case{"CSeq", 7, kMismatch},
             Case{"CSeq: x7", 7, kMismatch},
             Case{"CSeq: 0x7", 7, kMismatch},
             // None of these is 7, though the low 32 bits are.
             Case{"CSeq: 4294967303", 7, kMismatch},
             Case{"CSeq: -4294967289", 7, kMismatch},
             Case{"CSeq: 18446744073709551623", 7, kMismatch},
         }) {
        const std::string lText = std::string("RTSP/1.0 200 OK\r\n") + lCase.mHeader + "\r\n\r\n";
        mReports.Clear();
        if (nullptr == lCase.mComplaint) {
            EXPECT_TRUE(Recv(lText, lCase.mCSeq)) << lCase.mHeader;
            continue;
        }
        EXPECT_EQ(std::string(kInvalidResponse) + lCase.mComplaint, RecvThrows(lText, lCase.mCSeq)) << lCase.mHeader;
        EXPECT_THAT(mReports.Messages(Severity::Error),
                    ElementsAre(std::string("RTSP::RecvResponse(): Invalid response: ") + lCase.mComplaint));
        // The message was read to its end: the connection goes on.
        EXPECT_TRUE(mConnection.IsUsable());
        EXPECT_EQ(0U, mConnection.Left());
    }
}

// A refusal without a number is no refusal of this request either.
TEST_F(MessagesTest, ARefusalMustBearTheNumberToo) {
    EXPECT_EQ(std::string(kInvalidResponse) + "CSeq missing", RecvThrows("RTSP/1.0 404 Not Found\r\n\r\n"));
}

// ---------------------------------------------------------------------------- bodies

TEST_F(MessagesTest, ABodyIsAsLongAsItsHeaderSays) {
    Headers lHeaders;
    Buffer lBody;
    mPeer.Send("RTSP/1.0 200 OK\r\nCSeq: 1\r\ncontent-length: 5\r\n\r\nhello more");
    EXPECT_TRUE(mMessages.RecvResponse(lHeaders, lBody, 1));
    EXPECT_EQ("hello", TextOf(lBody));
    EXPECT_EQ(5U, mConnection.Left());
}

TEST_F(MessagesTest, ARefusalHasItsBodyReadToo) {
    Headers lHeaders;
    Buffer lBody;
    mPeer.Send("RTSP/1.0 404 Not Found\r\nCSeq: 1\r\nContent-Length: 5\r\n\r\nsorry");
    EXPECT_FALSE(mMessages.RecvResponse(lHeaders, lBody, 1));
    EXPECT_EQ("sorry", TextOf(lBody));
    EXPECT_EQ(0U, mConnection.Left());
}

TEST_F(MessagesTest, ContentLengths) {
    struct Case {
        const char* mValue;
        /// Bytes of "hello" in the body, or -1 when there are not so many as is said.
        int mSize;
    };
    for (const Case& lCase : {
             Case{"5", 5},
             Case{" 5 bytes", 5},
             Case{"+5", 5},
             Case{"3", 3},
             Case{"005", 5},
             // Nothing is announced.
             Case{"0", 0},
             Case{"", 0},
             Case{"five", 0},
             Case{"0x5", 0},
             Case{"-0", 0},
             // One byte too many, and numbers that no message has.
             Case{"6", -1},
             Case{"100000", -1},
             Case{"-1", -1},
             Case{"-5", -1},
             Case{"2147483647", -1},
             Case{"2147483648", -1},
             Case{"4294967295", -1},
             Case{"4294967296", -1},
             Case{"4294967301", -1},
             Case{"18446744073709551615", -1},
             Case{"99999999999999999999999", -1},
         }) {
        Connect();
        const std::size_t lBefore = Testing::AllocatedBytes();
        Headers lHeaders;
        Buffer lBody;
        mPeer.Send(std::string("RTSP/1.0 200 OK\r\nCSeq: 1\r\nContent-Length: ") + lCase.mValue + "\r\n\r\nhello");
        mPeer.Shutdown();
        const std::string lThrown = Thrown([&] { mMessages.RecvResponse(lHeaders, lBody, 1); });
        if (lCase.mSize < 0) {
            EXPECT_EQ(std::string(kInvalidResponse) + "Bad Content-Length", lThrown) << lCase.mValue;
            EXPECT_THAT(mReports.Messages(Severity::Error),
                        ElementsAre("RTSP::RecvResponse(): Invalid response: Bad Content-Length"));
            // What is there stays; where the next message begins is not known.
            EXPECT_EQ(5U, mConnection.Left());
            EXPECT_TRUE(mConnection.IsOutOfStep());
        } else {
            EXPECT_EQ("nothing", lThrown) << lCase.mValue;
            EXPECT_EQ(static_cast<UInt>(lCase.mSize), lBody.Size()) << lCase.mValue;
            EXPECT_EQ(5U - lBody.Size(), mConnection.Left());
        }
        EXPECT_LT(Testing::AllocatedBytes(), lBefore + 8 * 1024 * 1024) << lCase.mValue;
    }
}

// The length is judged before the number.
TEST_F(MessagesTest, ABadLengthIsFoundBeforeAMissingNumber) {
    mPeer.Send("RTSP/1.0 200 OK\r\nContent-Length: 6\r\n\r\nhello");
    mPeer.Shutdown();
    EXPECT_EQ(std::string(kInvalidResponse) + "Bad Content-Length", Thrown([&] { mMessages.RecvResponse(1); }));
}

TEST_F(MessagesTest, ABodyMustBeThereWithOneMoreRead) {
    const std::string lHead = "RTSP/1.0 200 OK\\r\\nCSeq: 1\\r\\nContent-Length: 5\\r\\n\\r\\n";
    struct Case {
        std::string mScript;
        const char* mThrown;
    };
    for (const Case& lCase : {
             Case{"S~ " + lHead + "hello", "nothing"},
             Case{"S~ " + lHead + "\nSPLIT\nS~ hello", "nothing"},
             Case{"S~ " + lHead + "he\nSPLIT\nS~ llo", "nothing"},
             Case{"S~ " + lHead + "\nSPLIT\nS~ he\nSPLIT\nS~ llo", "Bad Content-Length"},
             Case{"S~ " + lHead + "h\nSPLIT\nS~ e\nSPLIT\nS~ llo", "Bad Content-Length"},
         }) {
        ScriptedServer lServer(lCase.mScript + "\nNOTIFY sent\n");
        Receiver lReceiver;
        lReceiver.Connect("127.0.0.1:" + std::to_string(lServer.Port()));
        EXPECT_THAT(Thrown([&] { lReceiver.mMessages.RecvResponse(1); }), HasSubstr(lCase.mThrown)) << lCase.mScript;
        // The connection stays open: the server could still send.
        EXPECT_TRUE(lReceiver.mConnection.IsOpen());
        EXPECT_TRUE(lServer.Await("sent")) << lServer.Failure();
    }
}

TEST_F(MessagesTest, ABodyThatNeverComesRunsIntoTheTimeOut) {
    EXPECT_THAT(RecvThrows("RTSP/1.0 200 OK\r\nCSeq: 1\r\nContent-Length: 5\r\n\r\n"),
                StartsWith("3/38 RTSP::FillBuf(): Failed to read from RTSP socket ["));
    EXPECT_FALSE(mConnection.IsOpen());
}

TEST_F(MessagesTest, ALargeBodyIsTakenInOneRead) {
    const std::string lBytes(60000, 'x');
    Headers lHeaders;
    Buffer lBody;
    mPeer.Send("RTSP/1.0 200 OK\r\nCSeq: 1\r\nContent-Length: 60000\r\n\r\n" + lBytes);
    EXPECT_TRUE(mMessages.RecvResponse(lHeaders, lBody, 1));
    EXPECT_EQ(lBytes, TextOf(lBody));
}

// ---------------------------------------------------------------------------- requests of the server

TEST_F(MessagesTest, ARequestInFrontOfTheResponseIsAnsweredWith501) {
    EXPECT_TRUE(
        Recv("OPTIONS rtsp://client RTSP/1.0\r\nCSeq: 33\r\n\r\n"
             "SET_PARAMETER * RTSP/1.0\r\ncseq: abc def \r\nContent-Length: 7\r\n\r\nRTSP/1."
             "RTSP/1.0 200 OK\r\nCSeq: 1\r\n\r\n"));
    mPeer.Expect(
        "RTSP/1.0 501 Not Implemented\r\nCSeq: 33\r\n\r\n"
        "RTSP/1.0 501 Not Implemented\r\nCSeq: abc def \r\n\r\n");
    EXPECT_EQ((std::vector<ReportCapture::Entry>{{Severity::Info, "Got RTSP OPTIONS request for URL: rtsp://client"},
                                                 {Severity::Info, "Sending RTSP response: 501 Not Implemented"},
                                                 {Severity::Info, "Got RTSP SET_PARAMETER request for URL: *"},
                                                 {Severity::Info, "Sending RTSP response: 501 Not Implemented"},
                                                 {Severity::Info, "Got RTSP response: 200 OK"}}),
              mReports.All());
}

TEST_F(MessagesTest, RequestLines) {
    struct Case {
        const char* mLine;
        const char* mReport;
    };
    for (const Case& lCase : {
             Case{"OPTIONS * RTSP/1.0", "Got RTSP OPTIONS request for URL: *"},
             Case{"  ANNOUNCE\t\trtsp://a  RTSP/1.0", "Got RTSP ANNOUNCE request for URL: rtsp://a"},
             Case{"OPTIONS", "Got RTSP OPTIONS request for URL: "},
             Case{"%s %n", "Got RTSP %s request for URL: %n"},
             Case{"RTSP 1.0 200 OK", "Got RTSP RTSP request for URL: 1.0"},
             Case{"HTTP/1.1 200 OK", "Got RTSP HTTP/1.1 request for URL: 200"},
             Case{" RTSP/1.0 200 OK", "Got RTSP RTSP/1.0 request for URL: 200"},
             Case{" ", "Got RTSP  request for URL: "},
             Case{"x$", "Got RTSP x$ request for URL: "},
         }) {
        EXPECT_TRUE(Recv(std::string(lCase.mLine) + "\r\n\r\n" + kOk)) << lCase.mLine;
        // Without a number there is none to echo.
        mPeer.Expect("RTSP/1.0 501 Not Implemented\r\n\r\n");
        EXPECT_EQ(1U, mReports.Count(Severity::Info, lCase.mReport)) << lCase.mLine;
    }
}

TEST_F(MessagesTest, ARequestsBodyShorterThanSaidIsAnError) {
    for (const char* lLength : {"6", "-1", "4294967301", "99999999999999999999999"}) {
        Connect();
        mPeer.Send(std::string("OPTIONS * RTSP/1.0\r\nCSeq: 1\r\nContent-Length: ") + lLength + "\r\n\r\nhello");
        mPeer.Shutdown();
        EXPECT_EQ("17/2 RTSP::HandleRequest(): Invalid request: Bad Content-Length",
                  Thrown([&] { mMessages.RecvResponse(1); }))
            << lLength;
        EXPECT_THAT(mReports.Messages(Severity::Error),
                    ElementsAre("RTSP::HandleRequest(): Invalid request: Bad Content-Length"));
        EXPECT_EQ("", mPeer.Received());
        EXPECT_EQ(5U, mConnection.Left());
    }
}

TEST_F(MessagesTest, AnAnswerTheServerDoesNotTakeGoesToANewConnection) {
    mPeer.Send(std::string("OPTIONS * RTSP/1.0\r\nCSeq: 5\r\n\r\n") + kOk);
    mPeer.Close();
    EXPECT_TRUE(mMessages.RecvResponse(1));
    mPeer.Accept();
    mPeer.Expect("RTSP/1.0 501 Not Implemented\r\nCSeq: 5\r\n\r\n");
}

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
    // Draining looks at what is buffered only when something new has come.
    EXPECT_FALSE(mMessages.RecvInterleavedPackets());
    EXPECT_THAT(mReceiver.Delivered(), ElementsAre());
    mPeer.Deliver(Frame(4, "d"));
    EXPECT_TRUE(mMessages.RecvInterleavedPackets());
    EXPECT_THAT(mReceiver.Delivered(), ElementsAre("c", "d"));
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
    const TestSupport::Bytes lReport = TestSupport::SenderReport(7, 1, 1);
    EXPECT_TRUE(Recv(Frame(1, "a") + AsText(TestSupport::InterleavedFrame(1, lReport)) +
                     "OPTIONS * RTSP/1.0\r\nCSeq: 3\r\n\r\n" + kOk));
    // The receiver report goes out before the answer to the request.
    EXPECT_THAT(mPeer.Read(4 + 32), testing::StartsWith(std::string("$\1\0\x20\x81\xC9", 6)));
    mPeer.Expect("RTSP/1.0 501 Not Implemented\r\nCSeq: 3\r\n\r\n");
}

TEST_F(MessagesTest, DrainingAnswersAnEmptyLineToo) {
    mPeer.Deliver("\r\nCSeq: 3\r\n\r\n");
    EXPECT_TRUE(mMessages.RecvInterleavedPackets());
    mPeer.Expect("RTSP/1.0 501 Not Implemented\r\nCSeq: 3\r\n\r\n");
    EXPECT_EQ(1U, mReports.Count(Severity::Info, "Got RTSP  request for URL: "));
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

// The report that answers a frame finds the connection broken while the frames behind it are still there.
TEST_F(MessagesTest, AConnectionThatBreaksAmidFramesIsSurvived) {
    const Bytes lReport = TestSupport::SenderReport(7, 1, 1);
    std::string lFrames = Frame(1, "a") + AsText(TestSupport::InterleavedFrame(1, lReport));
    for (unsigned lSeq = 2; lFrames.size() < 10000; ++lSeq) {
        lFrames += Frame(lSeq, std::string(100, 'b'));
    }
    mPeer.Send(lFrames);
    mPeer.Reset();
    EXPECT_FALSE(mMessages.RecvResponse(1));
    EXPECT_EQ(0U, mMessages.StatusCode());
    EXPECT_THAT(mReports.Messages(Severity::Error), ::testing::Contains(StartsWith("Socket::Write(): ")));
    EXPECT_THAT(mReceiver.Delivered(), ElementsAre("a"));
    EXPECT_FALSE(mConnection.IsOpen());
    EXPECT_FALSE(mMessages.RecvInterleavedPackets());
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
