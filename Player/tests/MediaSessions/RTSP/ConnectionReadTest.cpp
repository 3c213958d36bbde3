// Reading: bytes, and lines with any end.
#include <fcntl.h>

#include <thread>

#include "MediaSessions/RTSP/ConnectionFixture.hpp"
#include "MediaSessions/RTSP/Memory.hpp"
#include "support/ScriptedServer.hpp"
#include "support/Throws.hpp"

namespace Player::MediaSessions {
namespace {

using ::testing::AllOf;
using ::testing::EndsWith;
using ::testing::MatchesRegex;
using ::testing::StartsWith;
using TestSupport::ScriptedServer;
using TestSupport::Thrown;

constexpr UInt kInCapacity = 4096;
constexpr UInt kMostDrained = 128 * 1024;

// ---------------------------------------------------------------------------- reading

TEST_F(ConnectionTest, FillBufReadsOnceAsMuchAsThereIsRoomFor) {
    Connect();
    mPeer.Deliver(std::string(10000, 'x'));
    EXPECT_TRUE(mConnection.FillBuf(1));
    EXPECT_EQ(kInCapacity, mConnection.Left());
    // Room is made for what is asked, at least doubling.
    EXPECT_TRUE(mConnection.FillBuf(4097));
    EXPECT_EQ(2 * kInCapacity, mConnection.Left());
    EXPECT_FALSE(mConnection.FillBuf(10001));
    EXPECT_EQ(10000U, mConnection.Left());
}

TEST_F(ConnectionTest, WhatOneReadDoesNotBringIsNotThere) {
    Connect();
    char lBytes[8] = {};
    mPeer.Send("abc");
    EXPECT_FALSE(mConnection.Peek(lBytes, 5));
    EXPECT_EQ(3U, mConnection.Left());
    mPeer.Send("d");
    EXPECT_FALSE(mConnection.Skip(5));
    EXPECT_EQ("abcd", Buffered());
    mPeer.Send("efg");
    EXPECT_EQ(nullptr, mConnection.Take(1000000));
    EXPECT_EQ("abcdefg", Buffered());
    mPeer.Send("h");
    EXPECT_TRUE(mConnection.FillBuf(8));
    EXPECT_TRUE(mConnection.Peek(lBytes, 5));
    EXPECT_EQ("abcde", std::string(lBytes, 5));
    EXPECT_TRUE(mConnection.Skip(2));
    const Byte* const lTaken = mConnection.Take(3);
    ASSERT_NE(nullptr, lTaken);
    EXPECT_EQ("cde", std::string(lTaken, lTaken + 3));
    char lCh = 0;
    EXPECT_TRUE(mConnection.PeekCh(lCh, 2));
    EXPECT_EQ('h', lCh);
    EXPECT_EQ("fgh", Buffered());
    mConnection.Normalize();
    EXPECT_EQ("fgh", Buffered());
    EXPECT_TRUE(mConnection.Skip(3));
    EXPECT_EQ(0U, mConnection.Left());
}

TEST_F(ConnectionTest, WhatIsBufferedNeedsNoRead) {
    Connect();
    mPeer.Send("abc");
    ASSERT_TRUE(mConnection.FillBuf(1));
    mPeer.Send("def");
    char lCh = 0;
    EXPECT_TRUE(mConnection.PeekCh(lCh, 2));
    EXPECT_TRUE(mConnection.Skip(3));
    EXPECT_EQ(0U, mConnection.Left());
}

TEST_F(ConnectionTest, TheEndOfTheDataKeepsWhatIsBuffered) {
    Connect();
    mPeer.Send("abc");
    mPeer.Close();
    EXPECT_TRUE(mConnection.FillBuf(3));
    EXPECT_FALSE(mConnection.FillBuf(4));
    // Also when it would be enough: nothing was read.
    EXPECT_FALSE(mConnection.FillBuf(1));
    EXPECT_EQ("abc", Buffered());
    EXPECT_TRUE(mConnection.IsOpen());
    EXPECT_TRUE(mReports.Messages(Severity::Error).empty());
}

TEST_F(ConnectionTest, AReadGivesUpAfterTheTimeOut) {
    Connect();
    mPeer.Deliver("abc");
    // Draining leaves the socket such that a read waits again.
    EXPECT_TRUE(mConnection.FillInterleavedBuf());
    EXPECT_FALSE(mConnection.FillInterleavedBuf());
    const auto lBegin = std::chrono::steady_clock::now();
    const std::string lThrown = Thrown([&] { mConnection.FillBuf(4); });
    const auto lTook = std::chrono::steady_clock::now() - lBegin;
    EXPECT_THAT(lThrown, MatchesRegex("3/38 RTSP::FillBuf\\(\\): Failed to read from RTSP socket \\[[0-9]+, -3\\]"));
    EXPECT_GE(lTook, std::chrono::milliseconds(990));
    EXPECT_LT(lTook, std::chrono::seconds(5));
    EXPECT_FALSE(mConnection.IsOpen());
    EXPECT_EQ(0U, mConnection.Left());
    ASSERT_EQ(1U, mReports.Messages(Severity::Error).size());
    EXPECT_THAT(lThrown, EndsWith(mReports.Messages(Severity::Error)[0]));
}

TEST_F(ConnectionTest, AConnectionResetByTheServerIsAFailureToRead) {
    Connect();
    mPeer.Send("abc");
    ASSERT_TRUE(mConnection.FillBuf(3));
    mPeer.Reset();
    EXPECT_EQ("3/38 Socket::Read(): Failed to read [" + std::to_string(ECONNRESET) + "]",
              Thrown([&] { mConnection.FillBuf(4); }));
    EXPECT_FALSE(mConnection.IsOpen());
    EXPECT_EQ(0U, mConnection.Left());

    Connect();
    mPeer.Reset();
    EXPECT_THAT(Thrown([&] { mConnection.FillInterleavedBuf(); }), StartsWith("3/38 "));
    EXPECT_FALSE(mConnection.IsOpen());
}

TEST_F(ConnectionTest, BytesThatTrickleInEndAfterTenTimeOuts) {
    using std::chrono::milliseconds;
    Connect();
    mPeer.Send("abc");
    mConnection.StartWait(Connection::Clock::now() - milliseconds(8500));
    EXPECT_TRUE(mConnection.FillBuf(1));
    mPeer.Send("def");
    mConnection.StartWait(Connection::Clock::now() - milliseconds(10100));
    EXPECT_THAT(Thrown([&] { mConnection.FillBuf(4); }),
                AllOf(StartsWith("3/38 RTSP::FillBuf(): "), EndsWith(", -3]")));
    EXPECT_FALSE(mConnection.IsOpen());
    // The longest time-out that can be set is no less patient.
    mConfig.mTimeOutAfter = 0xFFFFFFFF;
    Connect();
    mPeer.Send("abc");
    mConnection.StartWait(Connection::Clock::now() - std::chrono::hours(1000000));
    EXPECT_TRUE(mConnection.FillBuf(1));
}

TEST_F(ConnectionTest, DrainingTakesWhatIsThereAndDoesNotWait) {
    mConfig.mTimeOutAfter = 30;
    Connect();
    const auto lBegin = std::chrono::steady_clock::now();
    EXPECT_FALSE(mConnection.FillInterleavedBuf());
    EXPECT_LT(std::chrono::steady_clock::now() - lBegin, std::chrono::seconds(20));
    mPeer.Deliver(std::string(10000, 'x') + "y");
    EXPECT_TRUE(mConnection.FillInterleavedBuf());
    EXPECT_EQ(10001U, mConnection.Left());
    EXPECT_FALSE(mConnection.FillInterleavedBuf());
    mPeer.Close();
    EXPECT_FALSE(mConnection.FillInterleavedBuf());
    EXPECT_EQ(std::string(10000, 'x') + "y", Buffered());
    EXPECT_TRUE(mConnection.IsOpen());
}

/// The status flags of the only descriptor that is connected to this port.
int FlagsOfClientTo(const std::string& aPort) {
    int lFlags = -1;
    for (int lSocket = 0; lSocket < 1024; ++lSocket) {
        sockaddr_in lAddress = {};
        socklen_t lSize = sizeof(lAddress);
        if (0 != getpeername(lSocket, reinterpret_cast<sockaddr*>(&lAddress), &lSize)) { continue; }
        if (AF_INET == lAddress.sin_family && std::to_string(ntohs(lAddress.sin_port)) == aPort) {
            lFlags = fcntl(lSocket, F_GETFL);
        }
    }
    return lFlags;
}

TEST_F(ConnectionTest, TheSocketIsInBlockingModeBetweenCalls) {
    Connect();
    EXPECT_EQ(O_RDWR, FlagsOfClientTo(mPeer.Port()) & (O_RDWR | O_NONBLOCK));
    mPeer.Deliver("abc");
    EXPECT_TRUE(mConnection.FillInterleavedBuf());
    EXPECT_EQ(O_RDWR, FlagsOfClientTo(mPeer.Port()) & (O_RDWR | O_NONBLOCK));
}

TEST_F(ConnectionTest, DrainingLeavesTheRestOfAFloodForLater) {
    Connect();
    constexpr UInt kFlood = 1000000;
    std::thread lSender([&] { EXPECT_TRUE(mPeer.Send(std::string(kFlood, 'x'))); });
    UInt lTotal = 0;
    while (lTotal < kFlood) {
        mConnection.FillInterleavedBuf();
        EXPECT_LE(mConnection.Left(), kMostDrained);
        lTotal += mConnection.Left();
        mConnection.Skip(mConnection.Left());
        mConnection.Normalize();
    }
    lSender.join();
    EXPECT_EQ(kFlood, lTotal);
}

TEST_F(ConnectionTest, AMessageThatNeverEndsIsCutOff) {
    Connect();
    std::thread lSender([&] { mPeer.Send(std::string(12 * 1024 * 1024, 'x')); });
    std::string lLine;
    EXPECT_EQ("17/2 RTSP::FillBuf(): Invalid response: Message too long", Thrown([&] { mConnection.ReadLn(lLine); }));
    EXPECT_FALSE(mConnection.IsOpen());
    lSender.join();
}

TEST_F(ConnectionTest, ALineMayBeOfAnyLegalLength) {
    Connect();
    const std::string lLong(1000000, 'x');
    std::thread lSender([&] { mPeer.Send(lLong + "\r\nnext\r\n"); });
    std::string lLine;
    EXPECT_TRUE(mConnection.ReadLn(lLine));
    lSender.join();
    EXPECT_EQ(lLong, lLine);
    EXPECT_TRUE(mConnection.ReadLn(lLine));
    EXPECT_EQ("next", lLine);
}

TEST_F(ConnectionTest, RoomIsMadeForWhatCanComeNotForWhatIsClaimed) {
    for (const UInt lClaimed : {100000000U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
        Connect();
        mPeer.Send("abc");
        const std::size_t lBefore = Testing::AllocatedBytes();
        EXPECT_FALSE(mConnection.Skip(lClaimed));
        EXPECT_LT(Testing::AllocatedBytes(), lBefore + 8 * 1024 * 1024);
        EXPECT_EQ("abc", Buffered());
    }
}

// ---------------------------------------------------------------------------- lines

struct LineCase {
    std::string mBytes;
    Lines mLines;
};

std::vector<LineCase> LineCases() {
    return {
        {"", {}},
        {"a", {"a"}},
        {"a\r", {"a"}},
        {"a\n", {"a"}},
        {"a\r\n", {"a"}},
        {"\r", {""}},
        {"\n", {""}},
        {"\r\n", {""}},
        {"a\rb\nc\r\nd", {"a", "b", "c", "d"}},
        {"\r\r\n\n", {"", "", ""}},
        {"a\n\rb\r\r\nc", {"a", "", "b", "", "c"}},
        {"a\r\n\r\n", {"a", ""}},
        {"a\r\r", {"a", ""}},
        {"a\n\n", {"a", ""}},
        {std::string("n\0l\r\n\0", 6), {std::string("n\0l", 3), std::string("\0", 1)}},
        {"\xff\x80 \t:$\r\n", {"\xff\x80 \t:$"}},
    };
}

Lines AllLines(Connection& aConnection) {
    Lines lLines;
    std::string lLine;
    while (aConnection.ReadLn(lLine)) {
        lLines.push_back(lLine);
    }
    return lLines;
}

TEST_F(ConnectionTest, LinesEndWithEitherCharacterOrBothOrTheData) {
    for (const LineCase& lCase : LineCases()) {
        Connect();
        mPeer.Send(lCase.mBytes);
        mPeer.Close();
        EXPECT_EQ(lCase.mLines, AllLines(mConnection)) << TestSupport::Quoted(lCase.mBytes);
        EXPECT_EQ(0U, mConnection.Left());
    }
}

TEST_F(ConnectionTest, LinesAreSkippedAndPeekedAtAsTheyAreRead) {
    for (const LineCase& lCase : LineCases()) {
        Connect();
        mPeer.Send(lCase.mBytes);
        mPeer.Close();
        std::string lLine;
        for (const std::string& lExpected : lCase.mLines) {
            for (int lTimes = 0; lTimes < 2; ++lTimes) {
                ASSERT_TRUE(mConnection.PeekLn(lLine));
                EXPECT_EQ(lExpected, lLine) << TestSupport::Quoted(lCase.mBytes);
            }
            EXPECT_TRUE(mConnection.SkipLn());
        }
        EXPECT_FALSE(mConnection.PeekLn(lLine));
        EXPECT_FALSE(mConnection.SkipLn());
        EXPECT_EQ(0U, mConnection.Left());
    }
}

TEST_F(ConnectionTest, LinesConsumeOneOrTwoBytesAtTheirEnd) {
    Connect();
    mPeer.Send("a\rb\nc\r\nd\n\re");
    std::string lLine;
    for (const UInt lLeft : {10U, 8U, 5U, 3U, 2U}) {
        ASSERT_TRUE(mConnection.ReadLn(lLine));
        EXPECT_EQ(lLeft - 1, mConnection.Left()) << lLine;
    }
}

/// Sends every text of the cases in the pieces that `aPieces` makes of it, each a read of its own.
template <typename Pieces>
void ExpectSameLinesInPieces(Pieces aPieces) {
    std::string lScript;
    std::vector<Lines> lExpected;
    for (const LineCase& lCase : LineCases()) {
        for (const auto& lPieces : aPieces(lCase.mBytes)) {
            lScript += lExpected.empty() ? "" : "ACCEPT\n";
            for (const std::string& lPiece : lPieces) {
                lScript += "S# " + TestSupport::Hex(TestSupport::AsBytes(lPiece)) + "\nSPLIT\n";
            }
            lScript += "CLOSE\n";
            lExpected.push_back(lCase.mLines);
        }
    }
    ScriptedServer lServer(lScript);
    const Configuration lConfig;
    Connection lConnection(lConfig);
    for (const Lines& lLines : lExpected) {
        lConnection.DoConnect("127.0.0.1:" + std::to_string(lServer.Port()));
        ASSERT_EQ(lLines, AllLines(lConnection));
    }
    EXPECT_EQ("", lServer.Failure());
}

TEST_F(ConnectionTest, LinesAreTheSameCutAnywhere) {
    ExpectSameLinesInPieces([](const std::string& aText) {
        std::vector<Lines> lAll;
        for (std::size_t lCut = 1; lCut < aText.size(); ++lCut) {
            lAll.push_back({aText.substr(0, lCut), aText.substr(lCut)});
        }
        return lAll;
    });
}

TEST_F(ConnectionTest, LinesAreTheSameByteByByte) {
    ExpectSameLinesInPieces([](const std::string& aText) {
        Lines lBytes;
        for (const char lCh : aText) {
            lBytes.emplace_back(1, lCh);
        }
        return std::vector<Lines>{lBytes};
    });
}

// A server may end its lines with CR alone: the line is there when the CR is.
TEST_F(ConnectionTest, ACarriageReturnIsNotWaitedUpon) {
    mConfig.mTimeOutAfter = 30;
    Connect();
    std::string lLine;
    const auto lBegin = std::chrono::steady_clock::now();
    mPeer.Send("a\r");
    EXPECT_TRUE(mConnection.ReadLn(lLine));
    EXPECT_EQ("a", lLine);
    // It was half of a line end ...
    mPeer.Deliver("\n");
    EXPECT_FALSE(mConnection.FillInterleavedBuf());
    EXPECT_EQ(0U, mConnection.Left());
    mPeer.Send("b\r");
    EXPECT_TRUE(mConnection.ReadLn(lLine));
    EXPECT_EQ("b", lLine);
    // ... or a whole one; only the first byte after it can tell.
    mPeer.Send("c\n");
    EXPECT_TRUE(mConnection.ReadLn(lLine));
    EXPECT_EQ("c", lLine);
    mPeer.Send("d\r");
    EXPECT_TRUE(mConnection.SkipLn());
    mPeer.Send("\n\n");
    EXPECT_TRUE(mConnection.ReadLn(lLine));
    EXPECT_EQ("", lLine);
    EXPECT_EQ(0U, mConnection.Left());
    EXPECT_LT(std::chrono::steady_clock::now() - lBegin, std::chrono::seconds(20));
}

// What is buffered, and one read: the read that brings the rest of a line end is not that one.
TEST_F(ConnectionTest, ABodyBehindASplitLineEndStillHasItsOwnRead) {
    for (const char* lSecond : {"\\nab", "ab", "\\n"}) {
        const std::string lRest = std::string(lSecond) == "\\n" ? "abcde" : "cde";
        ScriptedServer lServer(std::string("S~ h\\r\nSPLIT\nS~ ") + lSecond + "\nSPLIT\nS~ " + lRest + "\n");
        Connection lConnection(mConfig);
        lConnection.DoConnect("127.0.0.1:" + std::to_string(lServer.Port()));
        std::string lLine;
        ASSERT_TRUE(lConnection.ReadLn(lLine));
        const Byte* const lBody = lConnection.Take(5);
        ASSERT_NE(nullptr, lBody) << lSecond;
        EXPECT_EQ("abcde", std::string(lBody, lBody + 5));
        EXPECT_EQ("", lServer.Failure());
    }
}

}  // namespace
}  // namespace Player::MediaSessions
