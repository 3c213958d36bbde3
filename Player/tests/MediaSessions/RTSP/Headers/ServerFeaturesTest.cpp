#include "MediaSessions/RTSP/Headers/ServerFeatures.hpp"

#include <gtest/gtest.h>

namespace Player::MediaSessions {
namespace {

TEST(ServerFeaturesTest, AreReadFromTwoHeaders) {
    const ServerFeatures lNone;
    EXPECT_FALSE(lNone.mPipelined || lNone.mSwitchSupported || lNone.mServerIsStrand);
    const ServerFeatures lAll =
        lNone.With({{"supported", "x, 3gpp-switch-req-sdp,3gpp-pipelined"}, {"SERVER", "The Quenra Strand 5"}});
    EXPECT_TRUE(lAll.mPipelined && lAll.mSwitchSupported && lAll.mServerIsStrand);
    EXPECT_FALSE(lNone.With({{"Supported", "3GPP-pipelined"}}).mPipelined);
}

TEST(ServerFeaturesTest, AHeaderReplacesWhatItSpeaksOfOnly) {
    ServerFeatures lFeatures;
    lFeatures.mPipelined = lFeatures.mSwitchSupported = lFeatures.mServerIsStrand = true;
    const ServerFeatures lOther = lFeatures.With({{"Server", "Other"}});
    EXPECT_TRUE(lOther.mPipelined && lOther.mSwitchSupported);
    EXPECT_FALSE(lOther.mServerIsStrand);
    const ServerFeatures lFewer = lFeatures.With({{"Supported", "3gpp-pipelined"}});
    EXPECT_TRUE(lFewer.mPipelined && lFewer.mServerIsStrand);
    EXPECT_FALSE(lFewer.mSwitchSupported);
    EXPECT_TRUE(lFeatures.With({}).mSwitchSupported);
}

}  // namespace
}  // namespace Player::MediaSessions
