// What PLAY answers say of where the media begins and ends.
#include "Hostile/Row.hpp"
#include "MediaSessions/SessionFixture.hpp"

namespace Player::Hostile {

using MediaSessions::SessionTest;
using TestSupport::Hex;
using TestSupport::RtpPacket;

/// Where the track begins decides which of its packets 99 and 100 it gets.
enum class Begins {
    kAtTheFirstPacket,  ///< Both.
    kAt100,             ///< One.
};

struct PlayInfoRow {
    const char* mName;
    std::string mInfo;
    Begins mBegins;
};

/// The description says 3 to 20.
struct RangeRow {
    const char* mName;
    std::string mRange;
    /// Seconds.
    double mBegin;
    double mEnd;
};

namespace {

const std::string kOurs = "url=rtsp://h/clip/video;seq=100";

std::string Entries(unsigned aCount) {
    std::string lEntries;
    for (unsigned i = 0; i < aCount; ++i) {
        lEntries += "url=rtsp://h/clip/" + std::to_string(i) + ";seq=1,";
    }
    return lEntries;
}

const PlayInfoRow kInfos[] = {
    {"TenThousandEntriesBeforeTheRightOne", Entries(10000) + kOurs, Begins::kAt100},
    {"TenThousandEntriesBehindTheRightOne", kOurs + "," + Entries(10000), Begins::kAt100},
    {"TheLastEntryThatIsLookedAt", Entries(16383) + kOurs, Begins::kAt100},
    {"TheFirstEntryThatIsNot", Entries(16384) + kOurs, Begins::kAtTheFirstPacket},
    {"AMegabyteOfCommas", std::string(1 << 20, ',') + kOurs, Begins::kAtTheFirstPacket},
    {"AMegabyteOfSemicolons", kOurs + std::string(1 << 20, ';'), Begins::kAt100},
    {"AMegabyteOfSlashes", "url=" + std::string(1 << 20, '/') + "video;seq=100", Begins::kAt100},
    {"TenThousandTimesTheRightOne",
     Entries(1) +
         [] {
             std::string lEntries;
             for (int i = 0; i < 10000; ++i) {
                 lEntries += "url=/video;seq=7,";
             }
             return lEntries;
         }() +
         kOurs,
     Begins::kAt100},
    {"AnEntryWithoutASlash", "url=video;seq=100", Begins::kAtTheFirstPacket},
    {"AnEntryOfAnotherTrack", "url=rtsp://h/clip/other;seq=100", Begins::kAtTheFirstPacket},
    {"NoEntry", "", Begins::kAtTheFirstPacket},
    {"ANumberOf17Bits", "url=/video;seq=65636", Begins::kAt100},
    {"ANumberOf33Bits", "url=/video;seq=4294967396", Begins::kAt100},
    {"ANumberOfWords", "url=/video;seq=hundred", Begins::kAtTheFirstPacket},
    {"ATimeOf40Digits", "url=/video;seq=100;rtptime=" + std::string(40, '9'), Begins::kAt100},
    {"ANegativeTime", "url=/video;seq=100;rtptime=-1", Begins::kAt100},
};

class HostilePlayTest : public SessionTest {
protected:
    void Start(const std::string& aPlay) {
        Interleave();
        Serve(R"(
            > DESCRIBE clip 1
            < 200 1 | SDP clip/ video range=3-20
            > SETUP clip/video 2
            < 200 2 | Session: 5 | TCP 0
            > PLAY clip 3
            S: RTSP/1.0 200 OK
            S: CSeq: 3
            S: )" +
              aPlay + R"(
            S:
            SPLIT
            S$ 0 {first}
            S$ 0 {second}
            NOTIFY sent
        )");
        mServer->Set("first", Hex(RtpPacket().Seq(99).Payload({1}).Build()));
        mServer->Set("second", Hex(RtpPacket().Seq(100).Payload({1}).Build()));
    }
};

class HostilePlayInfoTest : public HostilePlayTest, public testing::WithParamInterface<PlayInfoRow> {};

TEST_P(HostilePlayInfoTest, TellsWhereTheTrackBegins) {
    Start("RTP-Info: " + GetParam().mInfo);
    Play();
    ASSERT_TRUE(mServer->Await("sent"));
    mPlayer.Produce(0);
    const UInt lExpected = Begins::kAt100 == GetParam().mBegins ? 1 : 2;
    EXPECT_EQ(lExpected, mPlayer.GetTrackReception(0).mPacketsReceived);
}

INSTANTIATE_TEST_SUITE_P(Rows, HostilePlayInfoTest, testing::ValuesIn(kInfos), NameOfRow());

const RangeRow kRanges[] = {
    {"ABeginningBeyondAllNumbers", "npt=1e400-", 1, 20},
    {"ABeginningOf65Bits", "npt=18446744073709551621-", 5, 20},
    {"ABeginningBeyondTheSecondsOfATime", "npt=4294967301-", 5, 20},
    {"AFractionOf3000Digits", "npt=5.5" + std::string(3000, '0') + "-", 5.5, 20},
    {"ANegativeBeginning", "npt=-5-10", 3, 5},
    {"TheEndBeforeTheBeginning", "npt=10-5", 10, 5},
    {"NotANumber", "npt=nan-inf", 0, 0},
    {"AHexadecimalNumber", "npt=0x5-0x6", 0, 0},
    {"NothingButHyphens", "npt=" + std::string(5000, '-'), 3, 20},
    {"AMegabyteOfRanges", "npt=5-6;" + std::string(1 << 20, ';'), 5, 6},
    {"ATimeOfDay", "npt=00:00:05-00:00:06", 0, 0},
};

class HostileRangeTest : public HostilePlayTest, public testing::WithParamInterface<RangeRow> {};

TEST_P(HostileRangeTest, IsTakenAsFarAsItIsANumber) {
    Start("RTP-Info: url=r/video\nS: Range: " + GetParam().mRange);
    Play();
    Time lBegin;
    Time lEnd;
    mPlayer.GetPlayingRange(lBegin, lEnd);
    EXPECT_EQ(GetParam().mBegin, lBegin.ToSeconds());
    EXPECT_EQ(GetParam().mEnd, lEnd.ToSeconds());
    ASSERT_TRUE(mServer->Await("sent"));
    mPlayer.Produce(0);
    EXPECT_EQ(2U, mPlayer.GetTrackReception(0).mPacketsReceived);
}

INSTANTIATE_TEST_SUITE_P(Rows, HostileRangeTest, testing::ValuesIn(kRanges), NameOfRow());

}  // namespace
}  // namespace Player::Hostile
