#include "recording/TrackStats.hpp"

#include <gtest/gtest.h>

namespace Virertsp {
namespace {

using Player::Reception;
using Player::Time;

Reception Some() {
    Reception lReception;
    lReception.mPacketsReceived = 812;
    lReception.mPacketsLost = -5;
    lReception.mPacketsDropped = 2;
    lReception.mPacketsReordered = 4;
    lReception.mPacketsDuplicate = 5;
    lReception.mBytes = 125000;
    lReception.mJitter = Time(1250, 1000000);
    lReception.mBufferedTime = Time(284, 100);
    return lReception;
}

TEST(TrackStatsTest, RowsForPeopleStandUnderTheirHeading) {
    TrackStats lTrack(1, "MP4A-LATM");
    lTrack.Update(Some(), 1);
    EXPECT_EQ(
        "    1.0      1  MP4A-LATM            812      -3          4           5      1.250    1000.0        2.84\n",
        lTrack.Row());
    EXPECT_EQ(TrackStats::Heading().size(), lTrack.Row().size());
}

TEST(TrackStatsTest, RowsForPrograms) {
    TrackStats lTrack(1, "MP4A-LATM");
    lTrack.Update(Some(), 1);
    EXPECT_EQ(R"({"type":"track","time_s":1.000,"track":1,"format":"MP4A-LATM","packets":812,"lost":-3,"reordered":4,)"
              R"("duplicates":5,"jitter_ms":1.250,"kbit_per_s":1000.0,"buffered_s":2.840})"
              "\n",
              lTrack.JsonRow());
}

TEST(TrackStatsTest, TheRateIsThatOfTheIntervalAndInTheSummaryTheMean) {
    TrackStats lTrack(0, "H264");
    Reception lReception = Some();
    lTrack.Update(lReception, 1);
    lReception.mBytes += 25000;
    lReception.mJitter = Time(1, 1000);
    lReception.mEnd = Reception::End::kBye;
    lTrack.Update(lReception, 3);
    EXPECT_NE(std::string::npos, lTrack.JsonRow().find(R"("jitter_ms":1.000,"kbit_per_s":100.0,)"));
    EXPECT_EQ(
        "track 0: H264, 3.0 s, 812 packets, -3 lost, 4 reordered, 5 duplicates, jitter up to 1.250 ms, "
        "400.0 kbit/s, ended by the server\n",
        lTrack.Summary());
    EXPECT_EQ(R"({"type":"summary","time_s":3.000,"track":0,"format":"H264","packets":812,"lost":-3,"reordered":4,)"
              R"("duplicates":5,"jitter_peak_ms":1.250,"kbit_per_s":400.0,"bytes":150000,"end":"bye"})"
              "\n",
              lTrack.JsonSummary());
}

TEST(TrackStatsTest, CountersThatStartAnewAndNoTimeAtAll) {
    TrackStats lTrack(0, "H264");
    lTrack.Update(Some(), 0);
    EXPECT_NE(std::string::npos, lTrack.JsonRow().find(R"("kbit_per_s":0.0,)"));
    Reception lReception = Some();
    lReception.mBytes = 1250;
    lTrack.Update(lReception, 1);
    EXPECT_NE(std::string::npos, lTrack.JsonRow().find(R"("kbit_per_s":10.0,)"));
}

}  // namespace
}  // namespace Virertsp
