#include "Sockets/Socket.hpp"

#include <gtest/gtest.h>
#include <sys/syscall.h>

#include <cerrno>
#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "Sockets/HiddenCalls.hpp"
#include "Sockets/Loopback.hpp"
#include "support/Throws.hpp"

namespace Player {
namespace {

using Testing::Connection;
using Testing::DeafServer;
using Testing::Descriptor;
using Testing::DescriptorLimit;
using Testing::Interruptions;
using Testing::Server;
using TestSupport::ExpectThrow;
using Clock = std::chrono::steady_clock;

constexpr UInt kNoDescriptor = 0xFFFFFFFF;
constexpr UInt kTooMuch = 0x80000000;

std::string With(const std::string& aText, int aErrno) {
    return aText + " [" + std::to_string(aErrno) + "]";
}

int NewTCP(int aFlags = 0) {
    return ::socket(AF_INET, SOCK_STREAM | aFlags, 0);
}

TEST(Socket, ClosesTheDescriptorItAdopted) {
    const Descriptor lSpare(NewTCP());
    const int lFd = ::dup(lSpare.Get());
    { const Socket lSocket(static_cast<UInt>(lFd)); }
    EXPECT_EQ(-1, ::fcntl(lFd, F_GETFD));
    EXPECT_EQ(EBADF, errno);
    class Owned : public Socket {
    public:
        using Socket::Socket;
    };
    const int lOther = ::dup(lSpare.Get());
    { const std::unique_ptr<Socket> lSocket(new Owned(static_cast<UInt>(lOther))); }
    EXPECT_EQ(-1, ::fcntl(lOther, F_GETFD)) << "also through the base";
}

TEST(Socket, ReadsWhatIsThere) {
    Connection lPair;
    lPair.mPeer.Send("abc");
    char lBytes[8] = {};
    EXPECT_EQ(2, lPair.mSocket.Read(lBytes, 2));
    EXPECT_EQ(1, lPair.mSocket.Read(lBytes + 2, 6));
    EXPECT_STREQ("abc", lBytes);
}

TEST(Socket, ReadTellsNoDataFromTheEnd) {
    Connection lPair;
    lPair.mSocket.NonBlockingMode(true);
    char lByte = 0;
    EXPECT_EQ(Socket::kNoData, lPair.mSocket.Read(&lByte, 1));
    EXPECT_EQ(-1, Socket::kNoData);
    lPair.mPeer.Send("x");
    lPair.mPeer.Close();
    EXPECT_EQ(1, lPair.mSocket.Read(&lByte, 1));
    EXPECT_EQ(Socket::kClosed, lPair.mSocket.Read(&lByte, 1));
    EXPECT_EQ(0, Socket::kClosed);
}

TEST(Socket, ReadAvailableNeverBlocks) {
    Connection lPair;  // in blocking mode
    char lBytes[4] = {};
    EXPECT_EQ(Socket::kNoData, lPair.mSocket.ReadAvailable(lBytes, 4));
    lPair.mPeer.Send("xyz");
    EXPECT_EQ(3, lPair.mSocket.ReadAvailable(lBytes, 4));
    EXPECT_STREQ("xyz", lBytes);
    lPair.mPeer.Close();
    EXPECT_EQ(Socket::kClosed, lPair.mSocket.ReadAvailable(lBytes, 4));
    EXPECT_EQ(0, ::fcntl(lPair.mFd, F_GETFL) & O_NONBLOCK) << "the mode of the socket is left alone";
}

TEST(Socket, TimedReadGivesUpAfterTheTime) {
    Connection lPair;
    char lByte = 0;
    EXPECT_EQ(Socket::kTimeOut, lPair.mSocket.Read(&lByte, 1, 0));
    const auto lStart = Clock::now();
    EXPECT_EQ(Socket::kTimeOut, lPair.mSocket.Read(&lByte, 1, 1));
    EXPECT_GE(Clock::now() - lStart, std::chrono::seconds(1));
    EXPECT_EQ(-3, Socket::kTimeOut);
}

TEST(Socket, TimedReadReturnsWhatComes) {
    Connection lPair;
    char lByte = 0;
    lPair.mPeer.Send("x");
    EXPECT_EQ(1, lPair.mSocket.Read(&lByte, 1, 60));
    EXPECT_EQ('x', lByte);
    lPair.mPeer.Close();
    EXPECT_EQ(Socket::kClosed, lPair.mSocket.Read(&lByte, 1, 60));
}

int gPeer = -1;

void WriteOnThirdTick(int aTick) {
    if (3 == aTick) { static_cast<void>(!::write(gPeer, "x", 1)); }
}

TEST(Socket, ReadingGoesOnAfterSignals) {
    Connection lPair;
    gPeer = lPair.mPeer.Get();
    char lByte = 0;
    {
        const Interruptions lInterruptions(WriteOnThirdTick);
        EXPECT_EQ(1, lPair.mSocket.Read(&lByte, 1)) << "blocking";
        EXPECT_EQ('x', lByte);
        EXPECT_GE(Interruptions::Count(), 3);
    }
    const Interruptions lInterruptions(WriteOnThirdTick);
    EXPECT_EQ(1, lPair.mSocket.Read(&lByte, 1, 60)) << "with a time-out";
    EXPECT_GE(Interruptions::Count(), 3);
}

void DrainOnThirdTick(int aTick) {
    if (3 > aTick) { return; }
    char lBytes[65536];
    while (0 < ::recv(gPeer, lBytes, sizeof lBytes, MSG_DONTWAIT)) {}
}

TEST(Socket, WritingGoesOnAfterSignals) {
    Connection lPair;
    gPeer = lPair.mPeer.Get();
    const std::string lChunk(65536, 'x');
    while (0 < ::send(lPair.mFd, lChunk.data(), lChunk.size(), MSG_DONTWAIT)) {}
    const Interruptions lInterruptions(DrainOnThirdTick);
    EXPECT_LT(0, lPair.mSocket.Write("y", 1));
    EXPECT_GE(Interruptions::Count(), 3);
}

TEST(Socket, WritesWhatTheSocketTakes) {
    Connection lPair;
    EXPECT_EQ(5, lPair.mSocket.Write("hello", 5));
    EXPECT_EQ("hello", lPair.mPeer.Receive(5));

    lPair.mSocket.NonBlockingMode(true);
    const std::vector<char> lMuch(10000000, 'x');
    const SInt lTaken = lPair.mSocket.Write(lMuch.data(), static_cast<UInt>(lMuch.size()));
    EXPECT_LT(0, lTaken);
    EXPECT_GT(static_cast<SInt>(lMuch.size()), lTaken) << "the rest is the caller's business";
    SInt lResult = 0;
    while (0 < (lResult = lPair.mSocket.Write(lMuch.data(), static_cast<UInt>(lMuch.size())))) {}
    EXPECT_EQ(Socket::kNoData, lResult);
}

TEST(Socket, WritingToNobodyRaisesNoSignal) {
    Connection lPair;
    lPair.mPeer.Close();
    ExpectThrow<NetworkErr>(39, With("Socket::Write(): Failed to write", EPIPE), [&] { lPair.mSocket.Write("x", 1); });
}

TEST(Socket, FailedReadTellsTheError) {
    const Server lServer;
    Socket lSocket(static_cast<UInt>(NewTCP()));
    char lByte = 0;
    const std::string lMessage = With("Socket::Read(): Failed to read", ENOTCONN);
    ExpectThrow<NetworkErr>(38, lMessage, [&] { lSocket.Read(&lByte, 1); });
    ExpectThrow<NetworkErr>(38, lMessage, [&] { lSocket.ReadAvailable(&lByte, 1); });
}

TEST(Socket, FailingSelectThrowsTheOperationsOwnError) {
    Socket lSocket(kNoDescriptor);
    char lByte = 0;
    ExpectThrow<NetworkErr>(38, With("Socket::Read(): Failed to read", EBADF), [&] { lSocket.Read(&lByte, 1, 1); });
    EXPECT_TRUE(lSocket.HasClosed());
}

TEST(Socket, EveryOperationTellsABadDescriptor) {
    Socket lSocket(kNoDescriptor);
    const Address lAddr(1);
    char lByte = 0;
    ExpectThrow<NetworkErr>(35, With("Socket::Connect(): Failed to connect", EBADF), [&] { lSocket.Connect(lAddr); });
    ExpectThrow<NetworkErr>(35, With("Socket::Connect(): Failed to connect", EBADF),
                            [&] { lSocket.Connect(lAddr, 1); });
    ExpectThrow<NetworkErr>(34, With("Socket::Bind(): Failed to bind", EBADF), [&] { lSocket.Bind(lAddr); });
    ExpectThrow<NetworkErr>(38, With("Socket::Read(): Failed to read", EBADF), [&] { lSocket.Read(&lByte, 1); });
    ExpectThrow<NetworkErr>(39, With("Socket::Write(): Failed to write", EBADF), [&] { lSocket.Write("x", 1); });
    ExpectThrow<NetworkErr>(33, With("Socket::KeepAlive(): Failed to enable keep-alive", EBADF),
                            [&] { lSocket.KeepAlive(true); });
    ExpectThrow<NetworkErr>(33, With("Socket::KeepAlive(): Failed to disable keep-alive", EBADF),
                            [&] { lSocket.KeepAlive(false); });
    ExpectThrow<NetworkErr>(33, With("Socket::KeepAlive(): Failed enable non-blocking mode", EBADF),
                            [&] { lSocket.NonBlockingMode(true); });
    ExpectThrow<NetworkErr>(33, With("Socket::KeepAlive(): Failed disable non-blocking mode", EBADF),
                            [&] { lSocket.NonBlockingMode(false); });
    ExpectThrow<NetworkErr>(33, With("Socket::RecvBufferSize(): Failed set receive buffer size to 4294967295", EBADF),
                            [&] { lSocket.RecvBufferSize(0xFFFFFFFF); });
}

TEST(Socket, RoundTripIsThatOfTheConnection) {
    Server lServer;
    lServer.Listen();
    Socket lSocket(static_cast<UInt>(NewTCP()));
    EXPECT_EQ(0U, lSocket.RoundTrip()) << "none yet";
    EXPECT_EQ(0, lSocket.Connect(lServer.Addr()));
    const Descriptor lPeer(lServer.Accept());
    EXPECT_EQ(Testing::SystemTellsRoundTrips(), 0 != lSocket.RoundTrip());
    EXPECT_GT(60 * 1000000U, lSocket.RoundTrip());
    const Socket lOther(static_cast<UInt>(::socket(AF_INET, SOCK_DGRAM, 0)));
    EXPECT_EQ(0U, lOther.RoundTrip()) << "no TCP";
}

TEST(Socket, HasClosed) {
    Server lServer;
    lServer.Listen();
    Socket lSocket(static_cast<UInt>(NewTCP()));
    EXPECT_EQ(0, lSocket.Connect(lServer.Addr()));
    const Descriptor lPeer(lServer.Accept());
    EXPECT_FALSE(lSocket.HasClosed()) << "idle";
    lPeer.Send("x");
    EXPECT_EQ(0, ::shutdown(lPeer.Get(), SHUT_WR));
    EXPECT_FALSE(lSocket.HasClosed()) << "there is something left to read";
    char lByte = 0;
    EXPECT_EQ(1, lSocket.Read(&lByte, 1, 60));
    EXPECT_EQ(Socket::kClosed, lSocket.Read(&lByte, 1, 60));
    EXPECT_TRUE(lSocket.HasClosed());
}

TEST(Socket, ConnectsBlocking) {
    Server lServer;
    lServer.Listen();
    Socket lSocket(static_cast<UInt>(NewTCP()));
    EXPECT_EQ(0, lSocket.Connect(lServer.Addr()));
    const Descriptor lPeer(lServer.Accept());
    lPeer.Send("x");
    char lByte = 0;
    EXPECT_EQ(1, lSocket.Read(&lByte, 1));

    const Server lRefusing;
    Socket lRefused(static_cast<UInt>(NewTCP()));
    ExpectThrow<NetworkErr>(35, With("Socket::Connect(): Failed to connect", ECONNREFUSED),
                            [&] { lRefused.Connect(lRefusing.Addr()); });
}

TEST(Socket, ConnectsWithATimeOut) {
    Server lServer;
    lServer.Listen();
    Socket lSocket(static_cast<UInt>(NewTCP(SOCK_NONBLOCK)));
    EXPECT_EQ(0, lSocket.Connect(lServer.Addr(), 60));
    const Descriptor lPeer(lServer.Accept());
    EXPECT_EQ(1, lSocket.Write("x", 1));
    EXPECT_EQ("x", lPeer.Receive(1));
    // Connected at once: a blocking socket needs no waiting.
    Socket lBlocking(static_cast<UInt>(NewTCP()));
    EXPECT_EQ(0, lBlocking.Connect(lServer.Addr(), 0));
}

TEST(Socket, RefusedConnectTellsThePendingError) {
    const Server lServer;
    Socket lSocket(static_cast<UInt>(NewTCP(SOCK_NONBLOCK)));
    ExpectThrow<NetworkErr>(35, With("Socket::Connect(): Failed to get last error", ECONNREFUSED),
                            [&] { lSocket.Connect(lServer.Addr(), 60); });
    // The socket is still open: its owner decides what comes next.
    EXPECT_EQ(0, lSocket.KeepAlive(true));
}

TEST(Socket, UnansweredConnectTimesOut) {
    const DeafServer lServer;
    Socket lSocket(static_cast<UInt>(NewTCP(SOCK_NONBLOCK)));
    const auto lStart = Clock::now();
    ExpectThrow<NetworkErr>(35, "Socket::Connect(): Failed to connect [Timeout]",
                            [&] { lSocket.Connect(lServer.Addr(), 1); });
    EXPECT_GE(Clock::now() - lStart, std::chrono::seconds(1));
    // The attempt is still under way, which is no EINPROGRESS any more.
    ExpectThrow<NetworkErr>(35, With("Socket::Connect(): Failed to connect", EALREADY),
                            [&] { lSocket.Connect(lServer.Addr(), 1); });
}

TEST(Socket, ConnectGoesOnAfterSignals) {
    const DeafServer lServer;
    Socket lSocket(static_cast<UInt>(NewTCP(SOCK_NONBLOCK)));
    const Interruptions lInterruptions;
    const auto lStart = Clock::now();
    ExpectThrow<NetworkErr>(35, "Socket::Connect(): Failed to connect [Timeout]",
                            [&] { lSocket.Connect(lServer.Addr(), 1); });
    EXPECT_GE(Clock::now() - lStart, std::chrono::seconds(1));
    EXPECT_GE(Interruptions::Count(), 2);
}

TEST(Socket, BindsAndTellsWhenItCannot) {
    const Server lServer;
    Socket lSocket(static_cast<UInt>(NewTCP()));
    ExpectThrow<NetworkErr>(34, With("Socket::Bind(): Failed to bind", EADDRINUSE),
                            [&] { lSocket.Bind(lServer.Addr()); });
    EXPECT_EQ(0, lSocket.Bind(Testing::Loopback(0)));
}

TEST(Socket, Options) {
    Connection lPair;
    int lValue = -1;
    socklen_t lSize = sizeof lValue;
    for (const bool lEnable : {true, false}) {
        EXPECT_EQ(0, lPair.mSocket.KeepAlive(lEnable));
        EXPECT_EQ(0, ::getsockopt(lPair.mFd, SOL_SOCKET, SO_KEEPALIVE, &lValue, &lSize));
        EXPECT_EQ(lEnable ? 1 : 0, lValue);
    }
    EXPECT_EQ(0, lPair.mSocket.RecvBufferSize(20000));
    EXPECT_EQ(0, ::getsockopt(lPair.mFd, SOL_SOCKET, SO_RCVBUF, &lValue, &lSize));
    EXPECT_EQ(40000, lValue) << "the system keeps twice the size asked for";
}

TEST(Socket, NonBlockingModeSetsTheStatusFlagsExactly) {
    constexpr int kSettable = O_NONBLOCK | O_APPEND | O_ASYNC;
    Connection lPair;
    ASSERT_EQ(0, ::fcntl(lPair.mFd, F_SETFL, O_APPEND));
    EXPECT_EQ(0, lPair.mSocket.NonBlockingMode(true));
    EXPECT_EQ(O_NONBLOCK, ::fcntl(lPair.mFd, F_GETFL) & kSettable);
    ASSERT_EQ(0, ::fcntl(lPair.mFd, F_SETFL, O_APPEND | O_NONBLOCK));
    EXPECT_EQ(0, lPair.mSocket.NonBlockingMode(false));
    EXPECT_EQ(0, ::fcntl(lPair.mFd, F_GETFL) & kSettable);
}

TEST(Socket, DescriptorsOf1024AndAbove) {
    const DescriptorLimit lLimit(1200);
    if (!lLimit.IsSet()) { GTEST_SKIP() << "Too few descriptors are allowed here"; }
    const auto lHigh = [] {
        const Descriptor lLow(NewTCP(SOCK_NONBLOCK));
        return ::fcntl(lLow.Get(), F_DUPFD, 1100);
    };
    Server lServer;
    lServer.Listen();
    Socket lSocket(static_cast<UInt>(lHigh()));
    EXPECT_EQ(0, lSocket.Connect(lServer.Addr(), 60));
    Descriptor lPeer(lServer.Accept());
    char lByte = 0;
    EXPECT_FALSE(lSocket.HasClosed());
    EXPECT_EQ(Socket::kTimeOut, lSocket.Read(&lByte, 1, 0));
    lPeer.Send("x");
    EXPECT_EQ(1, lSocket.Read(&lByte, 1, 60));
    lPeer.Close();
    EXPECT_EQ(Socket::kClosed, lSocket.Read(&lByte, 1, 60));
    EXPECT_TRUE(lSocket.HasClosed());

    const Server lRefusing;
    Socket lRefused(static_cast<UInt>(lHigh()));
    ExpectThrow<NetworkErr>(35, With("Socket::Connect(): Failed to get last error", ECONNREFUSED),
                            [&] { lRefused.Connect(lRefusing.Addr(), 60); });
}

TEST(SocketDeathTest, FailingSelectIsTheOperationsOwnFailure) {
    Testing::ExpectPassesInChild([] {
        Server lServer;
        lServer.Listen();
        Connection lPair;
        lPair.mPeer.Send("x");
        Socket lSocket(static_cast<UInt>(NewTCP(SOCK_NONBLOCK)));
#ifdef SYS_select
        Testing::HideCalls({SYS_select, SYS_pselect6}, ENOMEM);
#else
        Testing::HideCalls({SYS_pselect6}, ENOMEM);
#endif
        char lByte = 0;
        ExpectThrow<NetworkErr>(35, With("Socket::Connect(): Failed to connect", ENOMEM),
                                [&] { lSocket.Connect(lServer.Addr(), 60); });
        ExpectThrow<NetworkErr>(38, With("Socket::Read(): Failed to read", ENOMEM),
                                [&] { lPair.mSocket.Read(&lByte, 1, 60); });
        EXPECT_TRUE(lPair.mSocket.HasClosed());
        EXPECT_EQ(1, lPair.mSocket.Read(&lByte, 1)) << "the socket is still open";
    });
}

TEST(SocketDeathTest, OutcomeOfAConnectThatCannotBeAskedForIsAFailure) {
    Testing::ExpectPassesInChild([] {
        Server lServer;
        lServer.Listen();
        Socket lSocket(static_cast<UInt>(NewTCP(SOCK_NONBLOCK)));
        Testing::HideCalls({SYS_getsockopt}, ENOMEM);
        ExpectThrow<NetworkErr>(35, "Socket::Connect(): Failed to get last error [4294967295]",
                                [&] { lSocket.Connect(lServer.Addr(), 60); });
    });
}

TEST(SocketDeathTest, SizesAreBelow2To31) {
    const char kText[] = "0 == \\(aSize >> 31\\)";
    Connection lPair;
    char lByte = 0;
    EXPECT_DEATH(lPair.mSocket.Read(&lByte, kTooMuch), kText);
    EXPECT_DEATH(lPair.mSocket.Read(&lByte, kTooMuch, 0), kText);
    EXPECT_DEATH(lPair.mSocket.ReadAvailable(&lByte, kTooMuch), kText);
    EXPECT_DEATH(lPair.mSocket.Write(&lByte, kTooMuch), kText);
}

}  // namespace
}  // namespace Player
