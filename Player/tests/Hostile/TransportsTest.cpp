// What SETUP answers say of the way that media takes.
#include <gmock/gmock.h>

#include "Hostile/Row.hpp"
#include "MediaSessions/SessionFixture.hpp"

namespace Player::Hostile {

using MediaSessions::SessionTest;
using TestSupport::Hex;
using TestSupport::RtpPacket;

/// Two tracks within the connection, of which the second is on channel 2.
struct ChannelRow {
    const char* mName;
    /// Of the first track's answer.
    std::string mTransport;
    /// Where the first track's packet is sent.
    unsigned mChannel;
    /// Packets that the tracks get.
    unsigned mReceived[2];
};

/// One track over UDP.
struct PortRow {
    const char* mName;
    std::string mTransport;
    /// Where the client says that it opens the way, as "address:port".
    std::vector<std::string> mPunched;
};

namespace {

const std::string kDigits(3000, '9');

const ChannelRow kChannels[] = {
    {"ChannelsBeyondAByte", "interleaved=256-257", 0, {0, 1}},
    {"ChannelsAcrossTheEndOfAByte", "interleaved=255-256", 255, {0, 1}},
    {"TheLastChannels", "interleaved=254-255", 254, {1, 1}},
    {"NegativeChannels", "interleaved=-2--1", 254, {0, 1}},
    {"ChannelsOf3000Digits", "interleaved=" + kDigits + "-" + kDigits, 0, {0, 1}},
    {"ChannelsOfWords", "interleaved=two-three", 0, {1, 1}},
    {"NoChannels", "interleaved=", 0, {1, 1}},
    {"AnOddChannelForMedia", "interleaved=1-2", 1, {0, 1}},
    {"TheChannelsOfTheOtherTrack", "interleaved=2-3", 2, {1, 0}},
    {"ManyChannels", "interleaved=4-5;interleaved=6-7;interleaved=8-9", 8, {1, 1}},
    {"AChannelThatNobodyHas", "interleaved=0-1", 77, {0, 1}},
    {"AnotherSource", "interleaved=0-1;ssrc=DEADBEEF", 0, {0, 1}},
    {"TheSource", "interleaved=0-1;ssrc=00000007", 0, {1, 1}},
    {"ASourceOf40Bits", "interleaved=0-1;ssrc=FF00000007", 0, {1, 1}},
    {"ASourceOfWords", "interleaved=0-1;ssrc=none", 0, {1, 1}},
    {"NothingButSeparators", ";;;===;;;=;", 0, {1, 1}},
    {"AMegabyte", "interleaved=0-1;x=" + std::string(1 << 20, 'x'), 0, {1, 1}},
};

class HostileChannelTest : public SessionTest, public testing::WithParamInterface<ChannelRow> {};

TEST_P(HostileChannelTest, GetsWhatBelongsToIt) {
    const ChannelRow& lRow = GetParam();
    Interleave();
    Serve(R"(
        > DESCRIBE clip 1
        < 200 1 | SDP clip/ video audio
        > SETUP clip/video 2
        < 200 2 | Session: 5 | Transport: RTP/AVP/TCP;unicast;)" +
          lRow.mTransport + R"(
        > SETUP clip/audio 3
        < 200 3 | TCP 1
        > PLAY clip 4
        < 200 4 | RTP-Info: url=r/video
        SPLIT
        S$ )" +
          std::to_string(lRow.mChannel) + R"( {video}
        S$ 2 {audio}
        NOTIFY sent
    )");
    mServer->Set("video", Hex(RtpPacket().Type(96).Ssrc(7).Payload({1}).Build()));
    mServer->Set("audio", Hex(RtpPacket().Type(97).Ssrc(8).Payload({1}).Build()));
    Play();
    ASSERT_TRUE(mServer->Await("sent"));
    mPlayer.Produce(0);
    for (TrackIdx lTrack = 0; lTrack < 2; ++lTrack) {
        EXPECT_EQ(lRow.mReceived[lTrack], mPlayer.GetTrackReception(lTrack).mPacketsReceived) << lTrack;
    }
}

INSTANTIATE_TEST_SUITE_P(Rows, HostileChannelTest, testing::ValuesIn(kChannels), NameOfRow());

const PortRow kPorts[] = {
    {"APortOf17Bits", "server_port=70000", {"127.0.0.1:70000"}},
    {"PortsOf17Bits", "server_port=70000-70001", {"127.0.0.1:70000", "127.0.0.1:70001"}},
    {"PortsOf0", "server_port=0-0", {"127.0.0.1:0", "127.0.0.1:0"}},
    {"NegativePorts", "server_port=-1--2", {"127.0.0.1:", "127.0.0.1:1"}},
    {"PortsOf3000Digits", "server_port=" + kDigits, {"127.0.0.1:" + kDigits}},
    {"PortsOfWords", "server_port=%s-%n", {"127.0.0.1:%s", "127.0.0.1:%n"}},
    {"MorePortsThanTwo", "server_port=9-9-9-9-9-9", {"127.0.0.1:9", "127.0.0.1:9"}},
    {"NothingButHyphens", "server_port=----", {"127.0.0.1:"}},
    {"AnAddressThatIsNone", "source=256.256.256.256;server_port=9-9", {"256.256.256.256:9", "256.256.256.256:9"}},
    {"AnAddressOfTheNextProtocol", "source=::1;server_port=9", {"::1:9"}},
    {"AnAddressOf3000Bytes", "source=" + kDigits + ";server_port=9", {kDigits + ":9"}},
    {"NoAddress", "source=;server_port=9-9", {}},
    {"ClientPortsThatAreNotOurs", "client_port=1-2;server_port=9", {"127.0.0.1:9"}},
};

class HostilePortTest : public SessionTest, public testing::WithParamInterface<PortRow> {};

TEST_P(HostilePortTest, MediaComesAllTheSame) {
    const PortRow& lRow = GetParam();
    Serve(R"(
        > DESCRIBE clip 1
        < 200 1 | SDP clip/ video
        > SETUP clip/video 2 | UDP 0
        < 200 2 | Session: 5 | Transport: RTP/AVP;unicast;)" +
          lRow.mTransport + R"(
        > PLAY clip 3
        < 200 3 | RTP-Info: url=r/video
    )");
    Play();
    std::vector<std::string> lPunched = Reported("Punching a hole to IP: ");
    for (auto& lEntry : lPunched) {
        lEntry.replace(lEntry.find(", Port: "), 8, ":");
    }
    EXPECT_EQ(lRow.mPunched, lPunched);
    using testing::StartsWith;
    EXPECT_THAT(mReports.Errors(),
                testing::Each(testing::AnyOf(StartsWith("Address::Lookup(): "), StartsWith("UDP::WriteTo(): "))));
    mServer->Media(0).SendRtp(RtpPacket().Type(96).Payload({1}).Build());
    mPlayer.Produce(0);
    EXPECT_EQ(1U, mPlayer.GetTrackReception(0).mPacketsReceived);
}

INSTANTIATE_TEST_SUITE_P(Rows, HostilePortTest, testing::ValuesIn(kPorts), NameOfRow());

// ---------------------------------------------------------------------------- strangers

}  // namespace

/// A datagram after the first one, which the server has sent from source 7.
struct StrangerRow {
    const char* mName;
    bool mIsRTCP;
    TestSupport::Bytes mDatagram;
    /// What the track has received then, and whether it has ended.
    unsigned mReceived;
    bool mHasEnded = false;
};

namespace {

TestSupport::Bytes Of(std::uint32_t aSource) {
    return RtpPacket().Type(96).Seq(2).Ssrc(aSource).Payload({1}).Build();
}

const StrangerRow kStrangers[] = {
    // Servers behind a NAT send from elsewhere: it is the source that counts.
    {"MediaOfTheSource", false, Of(7), 2},
    {"MediaOfAnotherSource", false, Of(8), 1},
    {"MediaOfNoSource", false, Of(0), 1},
    {"Noise", false, TestSupport::Bytes(1500, 0xA5), 1},
    {"AnEmptyDatagram", false, {}, 1},
    {"AGoodbyeOfTheSource", true, TestSupport::RtcpCompound(7).RR().BYE().Build(), 1, true},
    {"AGoodbyeOfAnotherSource", true, TestSupport::RtcpCompound(8).RR().BYE().Build(), 1},
    {"AGoodbyeAlone", true, TestSupport::RtcpCompound(7).BYE().Build(), 1},
    {"MediaWhereReportsBelong", true, Of(7), 1},
};

class HostileStrangerTest : public SessionTest, public testing::WithParamInterface<StrangerRow> {};

TEST_P(HostileStrangerTest, IsHeardOnlyAsTheSource) {
    const StrangerRow& lRow = GetParam();
    Serve(R"(
        > DESCRIBE clip 1
        < 200 1 | Server: Quenra Strand | SDP clip/ video
        > SETUP clip/video 2 | UDP 0
        < 200 2 | Session: 5
        > PLAY clip 3
        < 200 3 | RTP-Info: url=r/video
    )");
    Play();
    mServer->Media(0).SendRtp(RtpPacket().Type(96).Seq(1).Ssrc(7).Marker().Payload({0x65}).Build());
    EXPECT_TRUE(mPlayer.GetTrackPacket(0));
    auto& lStranger = mServer->Media(1);
    lStranger.SetClientPort(static_cast<unsigned>(std::stoul(mServer->Get("client_port0"))));
    if (lRow.mIsRTCP) {
        lStranger.SendRtcp(lRow.mDatagram);
    } else {
        lStranger.SendRtp(lRow.mDatagram);
    }
    mPlayer.GetTrackPacket(0);
    EXPECT_EQ(lRow.mReceived, mPlayer.GetTrackReception(0).mPacketsReceived);
    EXPECT_EQ(lRow.mHasEnded, mPlayer.IsTrackEnded(0));
    // Who is not heard gets no answer.
    EXPECT_EQ(lRow.mHasEnded, lStranger.HasRtcp());
}

INSTANTIATE_TEST_SUITE_P(Rows, HostileStrangerTest, testing::ValuesIn(kStrangers), NameOfRow());

}  // namespace
}  // namespace Player::Hostile
