#include "Packets/MPEG4GenericSample.hpp"

#include <gtest/gtest.h>

#include <vector>

#include "Packets/MP4ASample.hpp"
#include "Packets/MP4VSample.hpp"

namespace Player::Packets {
namespace {

using Bytes = std::vector<Byte>;

TEST(MPEG4GenericSampleTest, CopiesItsBytesAndTakesFragments) {
    Bytes lBytes = {1, 2, 3};
    MPEG4GenericSample lSample(Time(5), lBytes.data(), 3, 0xFFFFFFFF, true);
    lBytes = {7, 8, 9};
    lSample.Append(lBytes.data(), 2);
    EXPECT_EQ((Bytes{1, 2, 3, 7, 8}), Bytes(lSample.Begin(), lSample.End()));
    EXPECT_EQ(Time(5), lSample.PlayTime());
    EXPECT_EQ(0xFFFFFFFFU, lSample.AUIndex());
    EXPECT_TRUE(lSample.IsRandomAccessPoint());
    EXPECT_FALSE(MPEG4GenericSample(Time(0), nullptr, 0, 0, false).IsRandomAccessPoint());
    EXPECT_FALSE(lSample.IsDisposable());
}

TEST(MPEG4SamplesTest, AreMediaPacketsWithNothingAdded) {
    const Byte lByte = 0x42;
    const MP4ASample lAudio(Time(1), &lByte, 1);
    const MP4VSample lVideo(Time(2), &lByte, 1);
    for (const Media* lMedia : {static_cast<const Media*>(&lAudio), static_cast<const Media*>(&lVideo)}) {
        EXPECT_EQ(1U, lMedia->Size());
        EXPECT_EQ(0x42, *lMedia->Begin());
        EXPECT_FALSE(lMedia->IsDisposable());
    }
    EXPECT_EQ(Time(2), lVideo.PlayTime());
}

}  // namespace
}  // namespace Player::Packets
