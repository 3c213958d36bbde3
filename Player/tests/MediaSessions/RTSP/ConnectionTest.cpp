// Connecting and writing.
#include <thread>

#include "MediaSessions/RTSP/ConnectionFixture.hpp"
#include "support/Throws.hpp"

namespace Player::MediaSessions {
namespace {

using Testing::Peer;
using ::testing::StartsWith;
using TestSupport::ReportCapture;
using TestSupport::Thrown;

// ---------------------------------------------------------------------------- connecting

TEST_F(ConnectionTest, StartsClosedAndEmpty) {
    EXPECT_FALSE(mConnection.IsOpen());
    EXPECT_FALSE(mConnection.IsUsable());
    EXPECT_EQ(0U, mConnection.Left());
    EXPECT_TRUE(mConnection.Have(0));
    EXPECT_FALSE(mConnection.Have(1));
    // Nothing to read from: the end of the data.
    char lCh = 0;
    std::string lLine;
    EXPECT_FALSE(mConnection.FillBuf(1));
    EXPECT_FALSE(mConnection.FillInterleavedBuf());
    EXPECT_FALSE(mConnection.PeekCh(lCh, 0));
    EXPECT_FALSE(mConnection.ReadLn(lLine));
    EXPECT_EQ(0, mConnection.WriteDirectly("x", 1));
    EXPECT_TRUE(mReports.All().empty());
}

TEST_F(ConnectionTest, ConnectsAndSaysSo) {
    Connect();
    EXPECT_TRUE(mConnection.IsOpen());
    EXPECT_TRUE(mConnection.IsUsable());
    EXPECT_EQ("127.0.0.1", mConnection.ServerAddress().HostAsString(true));
    EXPECT_EQ((std::vector<ReportCapture::Entry>{
                  {Severity::Info, "Connecting to RTSP server: " + mPeer.Authority() + ", Via proxy: None"},
                  {Severity::Info, "Connected to IP: 127.0.0.1"}}),
              mReports.All());
}

TEST_F(ConnectionTest, ConnectsToTheProxyInsteadOfTheServer) {
    mConfig.mUseProxy = mPeer.Authority();
    mConnection.DoConnect("server.invalid");
    mPeer.Accept();
    EXPECT_EQ(1U, mReports.Count(Severity::Info,
                                 "Connecting to RTSP server: server.invalid, Via proxy: " + mPeer.Authority()));
}

TEST_F(ConnectionTest, BindsToTheLocalIP) {
    Connect();
    EXPECT_EQ("127.0.0.1", mPeer.ClientIP());
    mConfig.mUseLocalIP = "127.0.0.2";
    Connect();
    EXPECT_EQ("127.0.0.2", mPeer.ClientIP());
}

TEST_F(ConnectionTest, FailureToConnectLeavesNoSocket) {
    // Bound, but not listening.
    const int lDeaf = Peer::Bound();
    const std::string lAuthority = "127.0.0.1:" + std::to_string(Peer::PortOf(lDeaf));
    Connect();
    mReports.Clear();
    EXPECT_THAT(Thrown([&] { mConnection.DoReconnect(lAuthority); }), StartsWith("3/35 Socket::Connect(): "));
    EXPECT_FALSE(mConnection.IsOpen());
    EXPECT_EQ(1U,
              mReports.Count(Severity::Error, "Failed to connect to RTSP server: " + lAuthority + ", Via proxy: None"));
    mConfig.mUseProxy = lAuthority;
    EXPECT_THAT(Thrown([&] { mConnection.DoConnect("host"); }), StartsWith("3/35 "));
    EXPECT_EQ(1U, mReports.Count(Severity::Error, "Failed to connect to RTSP server: host, Via proxy: " + lAuthority));
    close(lDeaf);
}

TEST_F(ConnectionTest, FailureToBindLeavesNoSocket) {
    // Reserved for documentation: no machine has it.
    mConfig.mUseLocalIP = "192.0.2.1";
    EXPECT_THAT(Thrown([&] { mConnection.DoConnect(mPeer.Authority()); }), StartsWith("3/34 Socket::Bind(): "));
    EXPECT_FALSE(mConnection.IsOpen());
    EXPECT_FALSE(mPeer.HasCaller());
    EXPECT_EQ(1U, mReports.Count(Severity::Error,
                                 "Failed to connect to RTSP server: " + mPeer.Authority() + ", Via proxy: None"));
}

TEST_F(ConnectionTest, UserInformationIsNoPartOfAnAddressThatCanBeFound) {
    EXPECT_THAT(Thrown([&] { mConnection.DoConnect("user@" + mPeer.Authority()); }),
                StartsWith("3/16 Address::Lookup(): "));
    EXPECT_FALSE(mConnection.IsOpen());
    EXPECT_FALSE(mPeer.HasCaller());
}

TEST_F(ConnectionTest, ConnectingGivesUpAfterTheTimeOut) {
    // A listener whose queue is full answers nobody.
    const int lBusy = Peer::Bound();
    ASSERT_EQ(0, listen(lBusy, 0));
    const std::string lAuthority = "127.0.0.1:" + std::to_string(Peer::PortOf(lBusy));
    Connection lFirst(mConfig);
    lFirst.DoConnect(lAuthority);
    const auto lBegin = std::chrono::steady_clock::now();
    EXPECT_EQ("3/35 Socket::Connect(): Failed to connect [Timeout]",
              Thrown([&] { mConnection.DoConnect(lAuthority); }));
    const auto lTook = std::chrono::steady_clock::now() - lBegin;
    EXPECT_GE(lTook, std::chrono::milliseconds(990));
    EXPECT_LT(lTook, std::chrono::seconds(5));
    EXPECT_FALSE(mConnection.IsOpen());
    close(lBusy);
}

TEST_F(ConnectionTest, ConnectingAnewForgetsWhatIsBuffered) {
    Connect();
    mPeer.Send("old bytes");
    char lCh = 0;
    ASSERT_TRUE(mConnection.PeekCh(lCh, 0));
    ASSERT_TRUE(mConnection.Skip(1));
    mConnection.WriteLn("half a request");
    Connect();
    EXPECT_EQ(0U, mConnection.Left());
    mConnection.WriteLn("whole request");
    mConnection.Flush();
    mPeer.Expect("whole request\r\n");
}

TEST_F(ConnectionTest, ReopeningKeepsWhatIsBuffered) {
    Connect();
    mPeer.Send("old bytes");
    ASSERT_TRUE(mConnection.Skip(4));
    mConnection.WriteLn("request");
    mConnection.DoReconnect(mPeer.Authority());
    mPeer.Accept();
    EXPECT_EQ("bytes", Buffered());
    mConnection.Flush();
    mPeer.Expect("request\r\n");
}

TEST_F(ConnectionTest, ResetDropsAll) {
    Connect();
    mPeer.Send("bytes\r");
    std::string lLine;
    ASSERT_TRUE(mConnection.ReadLn(lLine));
    mConnection.SetOutOfStep();
    mConnection.WriteLn("request");
    mConnection.DoConnectionReset();
    EXPECT_FALSE(mConnection.IsOpen());
    EXPECT_EQ(0U, mConnection.Left());
    EXPECT_FALSE(mConnection.IsOutOfStep());
    mConnection.DoReconnect(mPeer.Authority());
    mPeer.Accept();
    mConnection.Flush();
    EXPECT_EQ("", mPeer.Received());
    // A new connection owes nothing to a line end on the old one.
    mPeer.Send("\n");
    EXPECT_TRUE(mConnection.ReadLn(lLine));
    EXPECT_EQ("", lLine);
}

TEST_F(ConnectionTest, IsUsableUntilTheServerEndsItOrFramingIsLost) {
    Connect();
    mConnection.SetOutOfStep();
    EXPECT_FALSE(mConnection.IsUsable());
    Connect();
    EXPECT_TRUE(mConnection.IsUsable());
    mPeer.Shutdown();
    EXPECT_TRUE(mConnection.IsOpen());
    EXPECT_FALSE(mConnection.IsUsable());
}

// ---------------------------------------------------------------------------- writing

TEST_F(ConnectionTest, AMessageLeavesWhenItIsFlushed) {
    Connect();
    Write({"OPTIONS * RTSP/1.0", "", std::string("nul\0l", 5)});
    EXPECT_EQ("", mPeer.Received());
    mConnection.Flush();
    mPeer.Expect(std::string("OPTIONS * RTSP/1.0\r\n\r\nnul\0l\r\n\r\n", 31));
    mConnection.Flush();
    EXPECT_EQ("", mPeer.Received());
}

TEST_F(ConnectionTest, FlushOpensAConnectionThatIsNotThere) {
    Write({"request"});
    mConnection.Flush();
    mPeer.Accept();
    mPeer.Expect("request\r\n\r\n");
}

TEST_F(ConnectionTest, FlushReopensAConnectionThatTheServerClosed) {
    Connect();
    mPeer.Close();
    Write({"request"});
    mConnection.Flush();
    mPeer.Accept();
    mPeer.Expect("request\r\n\r\n");
    mPeer.Reset();
    Write({"another"});
    mConnection.Flush();
    mPeer.Accept();
    mPeer.Expect("another\r\n\r\n");
}

// The URL may say another server than the one that was connected to first.
TEST_F(ConnectionTest, FlushReopensToTheServerOfTheURL) {
    Peer lOther;
    Connect();
    mPeer.Close();
    mConnection.SetURL(lOther.URL());
    Write({"request"});
    mConnection.Flush();
    lOther.Accept();
    lOther.Expect("request\r\n\r\n");
    EXPECT_FALSE(mPeer.HasCaller());
}

TEST_F(ConnectionTest, FlushKeepsAConnectionWithSomethingToRead) {
    Connect();
    mPeer.Send("x");
    mPeer.Shutdown();
    Write({"request"});
    mConnection.Flush();
    mPeer.Expect("request\r\n\r\n");
    EXPECT_FALSE(mPeer.HasCaller());
}

TEST_F(ConnectionTest, AMessageThatCouldNotLeaveIsForgotten) {
    const int lDeaf = Peer::Bound();
    mConnection.SetURL("rtsp://127.0.0.1:" + std::to_string(Peer::PortOf(lDeaf)) + "/clip");
    Write({"lost"});
    EXPECT_THAT(Thrown([&] { mConnection.Flush(); }), StartsWith("3/35 "));
    EXPECT_FALSE(mConnection.IsOpen());
    mConnection.SetURL(mPeer.URL());
    Write({"request"});
    mConnection.Flush();
    mPeer.Accept();
    mPeer.Expect("request\r\n\r\n");
    close(lDeaf);
}

/// More than the sockets of both sides take in.
const std::string& Huge() {
    static const std::string sHuge(24 * 1024 * 1024, 'x');
    return sHuge;
}

TEST_F(ConnectionTest, AServerThatTakesNothingInIsGivenUpAfterTheTimeOut) {
    Connect();
    mConnection.WriteLn(Huge());
    const auto lBegin = std::chrono::steady_clock::now();
    EXPECT_THAT(Thrown([&] { mConnection.Flush(); }), StartsWith("3/39 RTSP::Flush(): "));
    EXPECT_LT(std::chrono::steady_clock::now() - lBegin, std::chrono::seconds(8));
    EXPECT_FALSE(mConnection.IsOpen());
}

TEST_F(ConnectionTest, AHugeMessageArrivesWhole) {
    Connect();
    mConnection.WriteLn(Huge());
    std::size_t lGot = 0;
    std::thread lReader([&] {
        while (lGot < Huge().size() + 2) {
            const std::size_t lNew = mPeer.Received().size();
            lGot += lNew;
            if (0 == lNew) { std::this_thread::yield(); }
        }
    });
    mConnection.Flush();
    lReader.join();
    EXPECT_EQ(Huge().size() + 2, lGot);
}

TEST_F(ConnectionTest, AConnectionThatBreaksWhileWritingIsAFailureToWrite) {
    Connect();
    mConnection.WriteLn(Huge());
    std::thread lServer([&] {
        while (mPeer.Received().empty()) {
            std::this_thread::yield();
        }
        mPeer.Reset();
    });
    EXPECT_THAT(Thrown([&] { mConnection.Flush(); }), StartsWith("3/39 Socket::Write(): "));
    lServer.join();
    EXPECT_FALSE(mConnection.IsOpen());
}

TEST_F(ConnectionTest, DirectWritesPassTheMessageBy) {
    Connect();
    mConnection.WriteLn("request");
    EXPECT_EQ(3, mConnection.WriteDirectly("\x01\x00\x02", 3));
    mPeer.Expect(std::string("\x01\x00\x02", 3));
    mConnection.Flush();
    mPeer.Expect("request\r\n");
}

TEST_F(ConnectionTest, DirectWritesDoNotReopenAConnection) {
    Connect();
    mPeer.Close();
    EXPECT_EQ(0, mConnection.WriteDirectly("abc", 3));
    EXPECT_FALSE(mPeer.HasCaller());
    mConnection.DoConnectionReset();
    EXPECT_EQ(0, mConnection.WriteDirectly("abc", 3));
    EXPECT_FALSE(mPeer.HasCaller());
}

TEST_F(ConnectionTest, ADirectWriteThatFailsResetsTheConnection) {
    Connect();
    EXPECT_THAT(Thrown([&] { mConnection.WriteDirectly(Huge().data(), static_cast<UInt>(Huge().size())); }),
                StartsWith("3/39 "));
    EXPECT_FALSE(mConnection.IsOpen());
}

TEST_F(ConnectionTest, TheNextAddressIsTriedWhereOneIsNotReached) {
    const int lClosed = Testing::Peer::Bound();
    const Address lNobody("127.0.0.1", std::to_string(Testing::Peer::PortOf(lClosed)).c_str());
    const Address lServer("127.0.0.1", mPeer.Port().c_str());
    mConnection.ReachAny({lNobody, Address("::1", mPeer.Port().c_str(), AF_INET6), lServer});
    mPeer.Accept();
    EXPECT_EQ("127.0.0.1", mConnection.ServerAddress().HostAsString(true));
    EXPECT_EQ(2U, mReports.Messages(Severity::Info).size());
    mConnection.WriteLn("x");
    mConnection.Flush();
    mPeer.Expect("x\r\n");
    EXPECT_EQ("3/35 Socket::Connect(): Failed to get last error [111]", TestSupport::Thrown([&] {
                  mConnection.ReachAny({lNobody, lNobody});
              }));
    close(lClosed);
}

}  // namespace
}  // namespace Player::MediaSessions
