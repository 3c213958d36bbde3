#include <iostream>

#include "MediaSessions/SessionFixture.hpp"
#include "support/Footprint.hpp"
#include "support/MoodyServer.hpp"

namespace Player::MediaSessions {
namespace {

using TestSupport::Footprint;
using TestSupport::MoodyServer;
using TestSupport::Repetitions;
using TestSupport::RtpPacket;

/// The books of the allocator itself and of the test may move a little.
constexpr std::size_t kHeapMargin = 16 * 1024;

TEST(EnduranceLong, PlaysAndClosesWithoutEnd) {
    MoodyServer lServer;
    TestSupport::ReportCapture lReports;
    MediaPlayer lPlayer;
    lPlayer.SetConfigParam("RTSP:TargetRTPBuffer", "0");
    const auto lPlayAndClose = [&] {
        lPlayer.Play(lServer.URL(), Time(0));
        ASSERT_EQ(2U, lPlayer.GetTrackCount());
        while (!lPlayer.TrackHasPacket(0)) {}
        lPlayer.Close();
        lReports.Clear();
    };
    const unsigned lTimes = Repetitions(10000);
    for (unsigned i = 0; i < lTimes / 10; ++i) {
        lPlayAndClose();
    }
    const Footprint lBefore = Footprint::Now();
    for (unsigned i = lTimes / 10; i < lTimes; ++i) {
        lPlayAndClose();
    }
    const Footprint lAfter = Footprint::Now();
    std::cout << lTimes << " plays and closes: " << lBefore << " after a tenth, " << lAfter << " at the end\n";
    // The server may not have noticed yet that its client has gone.
    EXPECT_LE(lAfter.mDescriptors, lBefore.mDescriptors + 1);
    EXPECT_EQ(lBefore.mThreads, lAfter.mThreads);
    EXPECT_LE(lAfter.mHeap, lBefore.mHeap + kHeapMargin);
}

class EnduranceClipLong : public SessionTest {
protected:
    static constexpr std::uint32_t kSsrc = 7;
    static constexpr unsigned kFramesPerSecond = 25;
    static constexpr std::uint32_t kFrameTicks = 90000 / kFramesPerSecond;
    static constexpr long long kFrameMilliseconds = 1000 / kFramesPerSecond;
    /// As the RTP-Info has them: both counters start close to their end.
    static constexpr unsigned kFirstSeq = 65530;
    static constexpr std::uint32_t kFirstStamp = 4294900000U;

    void Start() {
        Serve(R"(
            > DESCRIBE clip 1
            < 200 1 | SDP clip/ video
            > SETUP clip/video 2 | UDP 0
            < 200 2 | Session: 5 | UDP 0
            > PLAY clip 3 | Session: 5 | Range: npt=0.000000-
            < 200 3 | RTP-Info: url=r/video;seq=65530;rtptime=4294900000
        )");
        mPlayer.SetConfigParam("RTSP:TargetRTPBuffer", "0");
        Play();
    }
    std::uint32_t StampOf(unsigned long aFrame) const {
        return static_cast<std::uint32_t>(kFirstStamp + aFrame * kFrameTicks);
    }
    void SendFrame(unsigned long aFrame) {
        mServer->Media(0).SendRtp(RtpPacket()
                                      .Type(96)
                                      .Ssrc(kSsrc)
                                      .Seq((kFirstSeq + aFrame) & 0xFFFF)
                                      .Timestamp(StampOf(aFrame))
                                      .Marker()
                                      .Payload({0x65, static_cast<std::uint8_t>(aFrame)})
                                      .Build());
    }
    static long long Milliseconds(const Time& aTime) { return (aTime.NanoSeconds() + 500000) / 1000000; }
    /// The sender's clock runs as fast as its media.
    void SendReport(unsigned long aFrame) {
        const std::uint64_t lNtp =
            (std::uint64_t{3900000000U} << 32) + (std::uint64_t{aFrame} << 32) / kFramesPerSecond;
        mServer->Media(0).SendRtcp(TestSupport::RtcpCompound(kSsrc)
                                       .SR(static_cast<UInt>(lNtp >> 32), static_cast<UInt>(lNtp), StampOf(aFrame))
                                       .Build());
    }
};

/// Crosses the end of the timestamps three times and that of the sequence numbers more than fifty times.
TEST_F(EnduranceClipLong, FortyHoursOfMedia) {
    constexpr unsigned long kBatch = 50;
    constexpr unsigned long kReportEvery = 250;
    const unsigned long lFrames = Repetitions(40) * 3600UL * kFramesPerSecond;
    Start();
    Footprint lBefore{};
    for (unsigned long lFrame = 0; lFrame < lFrames; lFrame += kBatch) {
        if (0 == lFrame % kReportEvery) { SendReport(lFrame); }
        for (unsigned long i = lFrame; i < lFrame + kBatch; ++i) {
            SendFrame(i);
        }
        for (unsigned long i = lFrame; i < lFrame + kBatch; ++i) {
            const auto lSample = mPlayer.GetTrackPacket(0);
            ASSERT_TRUE(lSample) << "frame " << i;
            ASSERT_EQ(static_cast<long long>(i) * kFrameMilliseconds, Milliseconds(lSample->PlayTime()))
                << "frame " << i;
        }
        if (lFrames / 10 == lFrame) { lBefore = Footprint::Now(); }
    }
    const Footprint lAfter = Footprint::Now();
    std::cout << lFrames / kFramesPerSecond / 3600 << " hours of media, " << lFrames << " packets: " << lBefore
              << " after a tenth, " << lAfter << " at the end\n";
    EXPECT_EQ(lBefore.mDescriptors, lAfter.mDescriptors);
    EXPECT_EQ(lBefore.mThreads, lAfter.mThreads);
    EXPECT_LE(lAfter.mHeap, lBefore.mHeap + kHeapMargin);
}

}  // namespace
}  // namespace Player::MediaSessions
