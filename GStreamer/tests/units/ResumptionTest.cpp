#include "source/Resumption.hpp"

#include <gtest/gtest.h>

namespace nsGstVireRtspSrc {
namespace {

using Occasion = Resumption::Occasion;
using Way = Resumption::Way;

struct Row {
    Occasion mOccasion;
    bool mLive;
    bool mPosition;
    bool mLost;
    Way mWay;
};

void PrintTo(const Row& aRow, std::ostream* aOut) {
    *aOut << "occasion " << static_cast<int>(aRow.mOccasion) << (aRow.mLive ? ", live" : "")
          << (aRow.mPosition ? ", position" : "") << (aRow.mLost ? ", network lost" : "");
}

class ResumptionTable : public testing::TestWithParam<Row> {};

TEST_P(ResumptionTable, Chooses) {
    Resumption lResumption;
    if (GetParam().mPosition) { lResumption.reached(1000); }
    if (GetParam().mLost) { lResumption.network_lost(); }
    EXPECT_EQ(GetParam().mWay, lResumption.Choose(GetParam().mOccasion, GetParam().mLive));
}

constexpr Occasion kPlaying = Occasion::kPlaying;
constexpr Occasion kChange = Occasion::kChange;
constexpr Occasion kReturn = Occasion::kNetworkReturned;

INSTANTIATE_TEST_SUITE_P(
    Rows, ResumptionTable,
    testing::Values(Row{kPlaying, true, false, false, Way::kPlay}, Row{kPlaying, true, true, true, Way::kPlay},
                    Row{kPlaying, false, false, false, Way::kResume}, Row{kPlaying, false, false, true, Way::kResume},
                    Row{kPlaying, false, true, false, Way::kResume}, Row{kPlaying, false, true, true, Way::kSeek},
                    Row{kChange, true, false, false, Way::kPlay}, Row{kChange, true, true, false, Way::kSeek},
                    Row{kChange, false, false, true, Way::kPlay}, Row{kChange, false, true, false, Way::kSeek},
                    Row{kReturn, true, true, true, Way::kPlay}, Row{kReturn, false, false, true, Way::kResume},
                    Row{kReturn, false, true, false, Way::kSeek}));

TEST(ResumptionTest, ASeekOfAPausedServerHappensOnPlaying) {
    Resumption lResumption;
    lResumption.set_server_paused(true);
    lResumption.sought(5000);
    EXPECT_EQ(Way::kSeek, lResumption.Choose(kPlaying, false));
    EXPECT_EQ(5000, lResumption.position());
    lResumption.sought(-1);
    EXPECT_EQ(Way::kResume, lResumption.Choose(kPlaying, false)) << "a seek to nowhere";
}

TEST(ResumptionTest, ASeekOfAPlayingServerIsNotPending) {
    Resumption lResumption;
    lResumption.sought(5000);
    lResumption.set_server_paused(true);
    EXPECT_EQ(Way::kResume, lResumption.Choose(kPlaying, false));
}

TEST(ResumptionTest, TheEarliestPositionCounts) {
    Resumption lResumption;
    lResumption.reached(3000);
    lResumption.reached(1000);
    lResumption.reached(2000);
    EXPECT_EQ(1000, lResumption.position());
    lResumption.arrived();
    EXPECT_EQ(-1, lResumption.position());
}

TEST(ResumptionTest, ForgetsAllButTheServersState) {
    Resumption lResumption;
    lResumption.set_server_paused(true);
    lResumption.sought(5000);
    lResumption.network_lost();
    lResumption.Forget();
    EXPECT_EQ(-1, lResumption.position());
    EXPECT_TRUE(lResumption.server_paused());
    lResumption.reached(1000);
    EXPECT_EQ(Way::kResume, lResumption.Choose(kPlaying, false)) << "neither sought nor lost";
}

}  // namespace
}  // namespace nsGstVireRtspSrc
