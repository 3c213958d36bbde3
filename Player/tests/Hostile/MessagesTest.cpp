// Answers to a request numbered 1, as bytes on the control connection.
#include <thread>

#include "Hostile/Row.hpp"
#include "MediaSessions/RTSP/Peer.hpp"
#include "MediaSessions/RTSP/Receiver.hpp"
#include "support/Packets.hpp"
#include "support/ReportCapture.hpp"
#include "support/Throws.hpp"

namespace Player::Hostile {

using MediaSessions::Receiver;
using Testing::Peer;
using TestSupport::Thrown;

enum class Then {
    kWaits,   ///< The server says nothing more.
    kEnds,    ///< It ends the connection.
    kResets,  ///< The same with RST.
};

/// What goes on and on after what was sent, and what comes after it.
struct Flood {
    unsigned mTimes = 0;
    std::string mPiece;
    std::string mTail;
};

struct MessageRow {
    const char* mName;
    std::string mSent;
    Then mThen;
    /// How the answer is received: "accepted", "refused" with status and reason, or the beginning of what is thrown.
    std::string mOutcome;
    Flood mFlood = {};
};

namespace {

constexpr char kTooLong[] = "17/2 RTSP::FillBuf(): Invalid response: Message too long";
constexpr char kTooManyHeaders[] = "17/2 RTSP::RecvHeaders(): Invalid message: Too many headers";
constexpr char kBadLength[] = "17/2 RTSP::RecvResponse(): Invalid response: Bad Content-Length";
constexpr char kBadRequestLength[] = "17/2 RTSP::HandleRequest(): Invalid request: Bad Content-Length";
constexpr char kNoCSeq[] = "17/2 RTSP::RecvResponse(): Invalid response: CSeq missing";
constexpr char kOtherCSeq[] = "17/2 RTSP::RecvResponse(): Invalid response: CSeq mismatch";
constexpr char kNothing[] = "refused 000 Unknown";

const std::string kOk = "RTSP/1.0 200 OK\r\nCSeq: 1\r\n\r\n";

/// A response with this status line.
std::string Status(const std::string& aLine) {
    return aLine + "\r\nCSeq: 1\r\n\r\n";
}

/// A response with this header line, or several.
std::string With(const std::string& aLines) {
    return "RTSP/1.0 200 OK\r\nCSeq: 1\r\n" + aLines + "\r\n\r\n";
}

/// A response with this number.
std::string Numbered(const std::string& aCSeq) {
    return "RTSP/1.0 200 OK\r\nCSeq: " + aCSeq + "\r\n\r\n";
}

std::string WithNul(const std::string& aBefore, const std::string& aBehind) {
    return aBefore + std::string(1, '\0') + aBehind;
}

/// `aCount` headers, each with a name of its own.
std::string Headers(unsigned aCount) {
    std::string lLines;
    for (unsigned i = 0; i < aCount; ++i) {
        lLines += "X" + std::to_string(i) + ": y\r\n";
    }
    return lLines;
}

std::string Frame(unsigned aChannel, const TestSupport::Bytes& aPayload) {
    return TestSupport::AsText(TestSupport::InterleavedFrame(aChannel, aPayload));
}

const std::string kLong(1000, 'x');

const MessageRow kRows[] = {
    // Lines
    {"AReasonOfAMegabyte", "RTSP/1.0 200 ", Then::kWaits, "accepted", {1000, kLong, "\r\nCSeq: 1\r\n\r\n"}},
    {"AHeaderOfThreeMegabytes",
     "RTSP/1.0 200 OK\r\nX: ",
     Then::kWaits,
     "accepted",
     {3000, kLong, "\r\nCSeq: 1\r\n\r\n"}},
    {"AHeaderNameOfAMegabyte",
     "RTSP/1.0 200 OK\r\n",
     Then::kWaits,
     "accepted",
     {1000, kLong, ": y\r\nCSeq: 1\r\n\r\n"}},
    {"AStatusLineWithoutEnd", "RTSP/1.0 200 ", Then::kWaits, kTooLong, {16000, kLong, ""}},
    {"AHeaderWithoutEnd", "RTSP/1.0 200 OK\r\nCSeq: 1\r\nX: ", Then::kWaits, kTooLong, {16000, kLong, ""}},
    {"ARequestLineWithoutEnd", "OPTIONS ", Then::kWaits, kTooLong, {16000, kLong, ""}},
    {"EmptyLinesWithoutEnd", "", Then::kWaits, kTooLong, {8000000, "\r\n", ""}},
    {"ALineOfNuls", std::string(64, '\0') + "\r\n\r\n" + kOk, Then::kWaits, "accepted"},
    {"ALineOfBinary", "\xFF\xFE\x80\x01\x02\r\n\r\n" + kOk, Then::kWaits, "accepted"},
    {"LinesEndedByCarriageReturnsAlone", "RTSP/1.0 200 OK\rCSeq: 1\r\r", Then::kWaits, "accepted"},

    // Status lines
    {"AStatusLineOfItsVersion", Status("RTSP/"), Then::kWaits, kNothing},
    {"AStatusLineCutBehindTheVersion", Status("RTSP/1.0"), Then::kWaits, kNothing},
    {"AStatusLineCutBehindTheBlank", Status("RTSP/1.0 "), Then::kWaits, kNothing},
    {"AStatusOfOneDigit", Status("RTSP/1.0 2"), Then::kWaits, "refused 002 Unknown"},
    {"AStatusOfTwoDigits", Status("RTSP/1.0 20"), Then::kWaits, "refused 020 Unknown"},
    {"AStatusOfFourDigits", Status("RTSP/1.0 2000 OK"), Then::kWaits, "refused 2000 OK"},
    {"AStatusOfTwentyDigits", Status("RTSP/1.0 99999999999999999999"), Then::kWaits, "refused ffffffff Unknown"},
    {"ANegativeStatus", Status("RTSP/1.0 -200 OK"), Then::kWaits, "refused fffffe00 OK"},
    {"AStatusOfWords", Status("RTSP/1.0 OK OK"), Then::kWaits, "refused 000 OK OK"},
    {"ANulInTheStatus", WithNul("RTSP/1.0 2", "00 OK\r\nCSeq: 1\r\n\r\n"), Then::kWaits, "refused 002 "},
    {"ANulInTheReason", WithNul("RTSP/1.0 200 O", "K\r\nCSeq: 1\r\n\r\n"), Then::kWaits, "accepted"},
    {"AFormatAsReason", Status("RTSP/1.0 404 %s%n%s%n"), Then::kWaits, "refused 404 %s%n%s%n"},
    {"AnotherProtocol", "HTTP/1.1 200 OK\r\nCSeq: 1\r\n\r\n" + kOk, Then::kWaits, "accepted"},

    // Headers
    {"AsManyHeadersAsAreTaken", With(Headers(16383)), Then::kWaits, "accepted"},
    {"OneHeaderTooMany", With(Headers(16384)), Then::kWaits, kTooManyHeaders},
    {"AFloodOfHeaders", With(Headers(30000)), Then::kWaits, kTooManyHeaders},
    {"AFloodOfOneHeader", "RTSP/1.0 200 OK\r\nCSeq: 1\r\n", Then::kWaits, kTooLong, {2000000, "X: y\r\n", ""}},
    {"AFoldedNumber", With("CSeq:\r\n 1"), Then::kWaits, kOtherCSeq},
    {"AFoldedHeader", With("X: y\r\n z\r\n\tz"), Then::kWaits, "accepted"},
    {"AHeaderWithoutName", With(": y\r\n:\r\n::"), Then::kWaits, "accepted"},
    {"ANulInsteadOfTheNumber", "RTSP/1.0 200 OK\r\nCSeq: " + WithNul("", "1\r\n\r\n"), Then::kWaits, kOtherCSeq},
    {"ANulInTheNameOfTheNumber", "RTSP/1.0 200 OK\r\nCS" + WithNul("", "eq: 1\r\n\r\n"), Then::kWaits, kNoCSeq},

    // Numbers
    {"NoNumber", "RTSP/1.0 200 OK\r\n\r\n", Then::kWaits, kNoCSeq},
    {"NoNumberOnAFailure", "RTSP/1.0 404 Not Found\r\n\r\n", Then::kWaits, kNoCSeq},
    {"AnEmptyNumber", Numbered(""), Then::kWaits, kOtherCSeq},
    {"TheNumberBefore", Numbered("0"), Then::kWaits, kOtherCSeq},
    {"TheNumberBehind", Numbered("2"), Then::kWaits, kOtherCSeq},
    {"ANumberThatIsRightInItsLow32Bits", Numbered("4294967297"), Then::kWaits, kOtherCSeq},
    {"ANumberBeyond64Bits", Numbered("18446744073709551617"), Then::kWaits, kOtherCSeq},
    {"ANegativeNumber", Numbered("-1"), Then::kWaits, kOtherCSeq},
    {"AHexadecimalNumber", Numbered("0x1"), Then::kWaits, kOtherCSeq},
    {"TwoNumbersOfWhichTheLastIsWrong", With("CSeq: 2"), Then::kWaits, kOtherCSeq},

    // Lengths
    {"ANegativeLength", With("Content-Length: -1"), Then::kEnds, kBadLength},
    {"ALengthOfThirtyDigits", With("Content-Length: 999999999999999999999999999999"), Then::kEnds, kBadLength},
    {"ALengthOf32Bits", With("Content-Length: 4294967295"), Then::kEnds, kBadLength},
    {"ALengthThatIsRightInItsLow32Bits", With("Content-Length: 4294967301") + "hello", Then::kEnds, kBadLength},
    {"ALengthOneTooLong", With("Content-Length: 6") + "hello", Then::kEnds, kBadLength},
    {"ALengthWithoutABody", With("Content-Length: 5"), Then::kEnds, kBadLength},
    {"ALengthOfWords", With("Content-Length: five"), Then::kWaits, "accepted"},
    {"TwoLengthsOfWhichTheLastIsRight", With("Content-Length: 500\r\nContent-Length: 5") + "hello", Then::kWaits,
     "accepted"},
    {"ALongBodyOfAFailure", "RTSP/1.0 404 Not Found\r\nCSeq: 1\r\nContent-Length: 99\r\n\r\n", Then::kEnds, kBadLength},

    // What comes in front of the answer
    {"AnswersOfTheFirstClassWithoutEnd",
     "",
     Then::kWaits,
     kTooLong,
     {16000, "RTSP/1.0 100 " + kLong + "\r\nCSeq: 1\r\n\r\n", ""}},
    {"AnAnswerOfTheFirstClassWithAnotherNumber", "RTSP/1.0 100 Continue\r\nCSeq: 2\r\n\r\n" + kOk, Then::kWaits,
     kOtherCSeq},
    {"RequestsWithoutEnd", "", Then::kWaits, kTooLong, {16000, "OPTIONS " + kLong + " RTSP/1.0\r\n\r\n", ""}},
    {"AFloodOfRequests", "", Then::kWaits, "accepted", {1000, "OPTIONS * RTSP/1.0\r\nCSeq: 7\r\n\r\n", kOk}},
    {"ARequestWithAFloodOfHeaders", "OPTIONS * RTSP/1.0\r\n" + Headers(16385) + "\r\n", Then::kWaits, kTooManyHeaders},
    {"ARequestWithALyingLength", "ANNOUNCE * RTSP/1.0\r\nContent-Length: 6\r\n\r\nhello", Then::kEnds,
     kBadRequestLength},
    {"FramesOfEveryChannel",
     "",
     Then::kWaits,
     "accepted",
     {10000, Frame(200, {1, 2, 3}) + Frame(255, {}) + Frame(0, {0}), kOk}},
    {"MoreFramesThanAreHeldAtOnce", "", Then::kWaits, "accepted", {10000, Frame(0, TestSupport::Bytes(1200)), kOk}},
    {"ADollarAlone", "$", Then::kEnds, kNothing},
    {"AFrameWithoutItsPayload", std::string("$\0\5\xDC", 4), Then::kEnds, kNothing},

    // Nothing, or an end with violence
    {"Silence", "", Then::kWaits, "3/38 RTSP::FillBuf(): Failed to read from RTSP socket ["},
    {"AnEndWithoutAnswer", "", Then::kEnds, kNothing},
    {"AnEndWithinEmptyLines", "\r\n\r\n\r\n", Then::kEnds, kNothing},
    {"AResetWithinTheHeaders", "RTSP/1.0 200 OK\r\nCSeq: 1\r\nX", Then::kResets, "3/38 Socket::Read(): Failed to read"},
};

class HostileMessageTest : public testing::TestWithParam<MessageRow> {
protected:
    void Connect() {
        mReceiver.Connect(mPeer.Authority());
        mPeer.Accept();
    }

    /// Everything in one stream, for as long as the client takes it in.
    void SendStream() {
        const MessageRow& lRow = GetParam();
        const Flood& lFlood = lRow.mFlood;
        constexpr unsigned kAtOnce = 500;
        std::string lPieces;
        for (unsigned i = 0; i < kAtOnce && 0 != lFlood.mTimes; ++i) {
            lPieces += lFlood.mPiece;
        }
        bool lTaken = mPeer.Send(lRow.mSent);
        for (unsigned lSent = 0; lTaken && lSent < lFlood.mTimes; lSent += kAtOnce) {
            lTaken = mPeer.Send(lPieces);
        }
        if (lTaken) { mPeer.Send(lFlood.mTail); }
    }

    std::string Receive() {
        bool lAccepted = false;
        const std::string lThrown = Thrown([&] { lAccepted = mMessages.RecvResponse(1); });
        if ("nothing" != lThrown) { return lThrown; }
        if (lAccepted) { return "accepted"; }
        return StringWithFormat("refused %03x ", mMessages.StatusCode()) + mMessages.StatusText();
    }

    const TestSupport::ReportCapture mReports;
    Peer mPeer;
    Receiver mReceiver;
    MediaSessions::Messages& mMessages = mReceiver.mMessages;
};

TEST_P(HostileMessageTest, HasItsOutcome) {
    const MessageRow& lRow = GetParam();
    Connect();
    std::string lOutcome;
    if (Then::kWaits == lRow.mThen) {
        std::thread lSender([this] { SendStream(); });
        lOutcome = Receive();
        // Nobody takes in the rest.
        mReceiver.mConnection.DoConnectionReset();
        lSender.join();
    } else {
        mPeer.Deliver(lRow.mSent);
        if (Then::kEnds == lRow.mThen) { mPeer.Shutdown(); }
        if (Then::kResets == lRow.mThen) { mPeer.Reset(); }
        lOutcome = Receive();
    }
    const bool lIsBeginning = '[' == lRow.mOutcome.back() || Then::kResets == lRow.mThen;
    EXPECT_EQ(lRow.mOutcome, lIsBeginning ? lOutcome.substr(0, lRow.mOutcome.size()) : lOutcome);

    // The next dialogue knows nothing of it.
    Connect();
    EXPECT_TRUE(mPeer.Send(kOk));
    EXPECT_EQ("accepted", Receive());
}

INSTANTIATE_TEST_SUITE_P(Rows, HostileMessageTest, testing::ValuesIn(kRows), NameOfRow());

// A byte that comes every second keeps every read alive; the answer as a whole has its end all the same.
TEST(HostileTrickleTest, OneByteASecondEndsAfterTenTimeOuts) {
    const TestSupport::ReportCapture lReports;
    Peer lPeer;
    Receiver lReceiver;
    lReceiver.Connect(lPeer.Authority());
    lPeer.Accept();
    using Clock = MediaSessions::Connection::Clock;
    MediaSessions::Connection& lConnection = lReceiver.mConnection;
    std::string lLine;
    lPeer.Deliver("RTSP/1.0 2\r\n");
    lConnection.StartWait(Clock::now() - std::chrono::milliseconds(9000));
    EXPECT_EQ("nothing", Thrown([&] { lConnection.ReadLn(lLine); }));
    lPeer.Deliver("C");
    lConnection.StartWait(Clock::now() - std::chrono::milliseconds(10001));
    EXPECT_EQ(0U, Thrown([&] { lConnection.ReadLn(lLine); }).find("3/38 RTSP::FillBuf(): Failed to read from RTSP"));
    EXPECT_FALSE(lConnection.IsOpen());
}

}  // namespace
}  // namespace Player::Hostile
