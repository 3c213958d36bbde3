// Responses, and requests of the server.
#include "MediaSessions/RTSP/Memory.hpp"
#include "MediaSessions/RTSP/MessagesFixture.hpp"
#include "support/ScriptedServer.hpp"
#include "support/Throws.hpp"

namespace Player::MediaSessions {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::StartsWith;
using TestSupport::Bytes;
using TestSupport::ReportCapture;
using TestSupport::ScriptedServer;
using TestSupport::Thrown;

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
        // The answer that is awaited may still come, and would be taken for that to a later request.
        EXPECT_TRUE(mConnection.IsOutOfStep());
        EXPECT_EQ(0U, mConnection.Left());
        Connect();
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

}  // namespace
}  // namespace Player::MediaSessions
