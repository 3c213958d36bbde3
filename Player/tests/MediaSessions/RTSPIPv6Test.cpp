// Servers that are reached over IPv6, and names that stand for several addresses.

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <unistd.h>

#include "MediaSessions/RTSP/Peer.hpp"
#include "MediaSessions/SessionFixture.hpp"
#include "Sockets/Address.hpp"
#include "support/Listener.hpp"
#include "support/Throws.hpp"

namespace Player::MediaSessions {
namespace {

/// A UDP port of the IPv6 loopback.
class WidePort {
public:
    WidePort() : mSocket(socket(AF_INET6, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {
        sockaddr_in6 lAddress = Loopback(0);
        socklen_t lSize = sizeof(lAddress);
        EXPECT_EQ(0, bind(mSocket, reinterpret_cast<sockaddr*>(&lAddress), lSize));
        getsockname(mSocket, reinterpret_cast<sockaddr*>(&lAddress), &lSize);
        mPort = ntohs(lAddress.sin6_port);
    }
    WidePort(const WidePort&) = delete;
    WidePort& operator=(const WidePort&) = delete;
    ~WidePort() { close(mSocket); }

    unsigned Port() const { return mPort; }
    void Send(const TestSupport::Bytes& aDatagram, unsigned aTo) const {
        const sockaddr_in6 lTo = Loopback(aTo);
        EXPECT_LT(0, sendto(mSocket, aDatagram.data(), aDatagram.size(), 0, reinterpret_cast<const sockaddr*>(&lTo),
                            sizeof(lTo)));
    }
    /// The size of the next datagram.
    ssize_t Receive() const {
        pollfd lPoll = {mSocket, POLLIN, 0};
        char lData[100];
        return 1 == poll(&lPoll, 1, 10000) ? recv(mSocket, lData, sizeof(lData), 0) : -1;
    }

private:
    static sockaddr_in6 Loopback(unsigned aPort) {
        sockaddr_in6 lAddress{};
        lAddress.sin6_family = AF_INET6;
        lAddress.sin6_addr = in6addr_loopback;
        lAddress.sin6_port = htons(static_cast<in_port_t>(aPort));
        return lAddress;
    }

    int mSocket;
    unsigned mPort = 0;
};

class RTSPIPv6Test : public SessionTest {
protected:
    void SetUp() override {
        if (!TestSupport::HasIPv6()) { GTEST_SKIP() << "this machine has no IPv6"; }
        mPlayer.SetConfigParam("RTSP:Profile", "modern");
        mPlayer.SetConfigParam("RTSP:TargetRTPBuffer", "0");
    }
    /// A server on the loopback of that family, which is played under that name.
    void ServeAt(const std::string& aHost, int aFamily, const std::string& aDialogue) {
        std::string lScript = Dialogue(aDialogue);
        const std::string lNarrow = "127.0.0.1:{port}";
        const std::string lHere = aHost + ":{port}";
        for (std::size_t lAt = 0; std::string::npos != (lAt = lScript.find(lNarrow, lAt)); lAt += lHere.size()) {
            lScript.replace(lAt, lNarrow.size(), lHere);
        }
        mServer = std::make_unique<TestSupport::ScriptedServer>(lScript, std::chrono::seconds(10), aFamily);
        mURL = "rtsp://" + aHost + ":" + std::to_string(mServer->Port()) + "/clip";
    }

    std::string mURL;
};

const std::string kDescribed = R"(
    > DESCRIBE clip 1
    S: RTSP/1.0 200 OK
    S: CSeq: 1
    S: Content-Length: {length}
    S:
    S| v=0
    S| o=- 1 1 IN IP6 ::1
    S| c=IN IP6 ::1
    S| m=video 0 RTP/AVP 96
    S| a=rtpmap:96 H264/90000
    S| a=control:*
    > SETUP clip 2 | UDP 0
    S: RTSP/1.0 200 OK
    S: CSeq: 2
    S: Session: 5
)";

TEST_F(RTSPIPv6Test, MediaComesOverUDP) {
    for (const char* lSource : {"::1", "[::1]"}) {
        const WidePort lRTP;
        ServeAt("[::1]", AF_INET6,
                kDescribed + "S: Transport: RTP/AVP;unicast;destination=::1;source=" + lSource +
                    ";client_port={client_port0}-{client_port0+1};server_port={rtp}-{rtp}\n" + R"(
            S:
            > PLAY clip 3
            < 200 3
            > TEARDOWN clip 4
            < 200 4
        )");
        mServer->Set("rtp", std::to_string(lRTP.Port()));
        mPlayer.Play(mURL, Time(0));
        EXPECT_EQ(8, lRTP.Receive()) << "the way for media is opened";
        const auto lPacket = [](unsigned aSeq) {
            const TestSupport::RtpPacket lBuilder = TestSupport::RtpPacket().Type(96).Seq(aSeq).Timestamp(3000 * aSeq);
            return TestSupport::RtpPacket(lBuilder).Marker().Payload({0x41, 2}).Build();
        };
        const unsigned lPort = static_cast<unsigned>(std::stoul(mServer->Get("client_port0")));
        lRTP.Send(lPacket(1), lPort);
        lRTP.Send(lPacket(2), lPort);
        TestSupport::Patience lPatience{std::chrono::seconds(10)};
        EXPECT_TRUE(lPatience.Until([&] { return mPlayer.TrackHasPacket(0); }));
        EXPECT_EQ("IP6", mPlayer.GetCommonInfo()->Get("ConnectionAddressType"));
        mPlayer.Close();
        EXPECT_EQ("", mServer->Failure());
    }
}

TEST_F(RTSPIPv6Test, AClosedPortLeadsToTCP) {
    ServeAt("[::1]", AF_INET6, kDescribed + R"(
        S: Transport: RTP/AVP;unicast;server_port={port}-{port}
        S:
        > PLAY clip 3
        < 200 3
        > TEARDOWN clip 4
        < 200 4
        > SETUP clip 5 | TCP 0
        < 200 5 | Session: 6 | TCP 0
        > PLAY clip 6
        < 200 6
        NOTIFY played
    )");
    mPlayer.SetConfigParam("RTSP:UDPPatience", "100000");
    mPlayer.Play(mURL, Time(0));
    TestSupport::Patience lPatience{std::chrono::seconds(10)};
    EXPECT_TRUE(lPatience.Until([&] {
        mPlayer.Produce(0);
        return 0 != mReports.Count(Severity::Warning, "No media over UDP, the server's port is closed: over TCP now");
    }));
    EXPECT_TRUE(mServer->Await("played"));
}

TEST_F(RTSPIPv6Test, WhereNoAddressIsReachedTheLastSaysWhy) {
    unsigned lPort = 0;
    close(TestSupport::ListenOnLoopback(lPort));
    EXPECT_EQ("3/35 Socket::Connect(): Failed to get last error [111]",
              TestSupport::Thrown([&] { mPlayer.Play("rtsp://localhost:" + std::to_string(lPort), Time(0)); }));
}

TEST_F(RTSPIPv6Test, ALocalAddressIsThatOfTheFamily) {
    ServeAt("[::1]", AF_INET6, "> DESCRIBE clip 1\n< 404 1\n");
    mPlayer.SetConfigParam("RTSP:UseLocalIP", "::1");
    EXPECT_EQ("17/1028 RTSP::DoDescribe(): DESCRIBE failed: 404 Not Found",
              TestSupport::Thrown([&] { mPlayer.Play(mURL, Time(0)); }));
}

TEST_F(RTSPIPv6Test, ClassicKnowsNone) {
    mPlayer.SetConfigParam("RTSP:Profile", "");
    EXPECT_EQ(0U, TestSupport::Thrown([&] { mPlayer.Play("rtsp://[::1]:1", Time(0)); }).find("3/16 Address::Lookup()"));
}

}  // namespace
}  // namespace Player::MediaSessions
