#include "Packets/H264Sample.hpp"

#include <gtest/gtest.h>

#include <stdexcept>
#include <vector>

#include "Player/Mem.hpp"

namespace Player::Packets {
namespace {

using Bytes = std::vector<Byte>;

Bytes BytesOf(const H264Sample& aSample) {
    return Bytes(aSample.Begin(), aSample.End());
}

TEST(H264SampleTest, StartsEmptyWithItsPlayTime) {
    const H264Sample lSample(Time(77));
    EXPECT_EQ(Time(77), lSample.PlayTime());
    EXPECT_EQ(0U, lSample.Size());
    EXPECT_EQ(0U, lSample.Mark());
}

TEST(H264SampleTest, AppendsBytesAndSizes) {
    H264Sample lSample{Time(0)};
    lSample.Append(0xAA);
    const Byte lTwo[] = {1, 2};
    lSample.Append(lTwo, 2);
    lSample.AppendSize(0x01020304);
    EXPECT_EQ((Bytes{0xAA, 1, 2, 0x01, 0x02, 0x03, 0x04}), BytesOf(lSample));
    EXPECT_EQ(7U, lSample.Mark());
}

TEST(H264SampleTest, ANALUnitFollowsItsLength) {
    H264Sample lSample{Time(0)};
    const Byte lNAL[] = {0x65, 0x88, 0x84};
    lSample.AppendNAL(lNAL, 3);
    EXPECT_EQ((Bytes{0, 0, 0, 3, 0x65, 0x88, 0x84}), BytesOf(lSample));
}

TEST(H264SampleTest, GrowChangesNoByteAndNoLength) {
    H264Sample lSample{Time(0)};
    lSample.Append(9);
    lSample.Grow(1000);
    EXPECT_EQ((Bytes{9}), BytesOf(lSample));
    const Byte* const lBegin = lSample.Begin();
    for (UInt lIdx = 0; lIdx < 1000; ++lIdx) {
        lSample.Append(0);
    }
    EXPECT_EQ(lBegin, lSample.Begin());
}

TEST(H264SampleTest, RoomBeyond32BitsIsRefusedAndNothingChanges) {
    H264Sample lSample{Time(0)};
    lSample.Append(9);
    EXPECT_THROW(lSample.Grow(0xFFFFFFFF), std::length_error);
    const Byte lNAL = 0;
    EXPECT_THROW(lSample.AppendNAL(&lNAL, 0xFFFFFFFB), std::length_error);
    EXPECT_EQ((Bytes{9}), BytesOf(lSample));
}

TEST(H264SampleTest, ModifySizeWritesFourBytesInPlace) {
    H264Sample lSample{Time(0)};
    lSample.Append(0x11);
    lSample.AppendSize(0);
    lSample.Append(0x22);
    lSample.ModifySize(1, 0xA1B2C3D4);
    EXPECT_EQ((Bytes{0x11, 0xA1, 0xB2, 0xC3, 0xD4, 0x22}), BytesOf(lSample));
}

TEST(H264SampleDeathTest, ASizeOutsideTheSampleIsAMistake) {
    H264Sample lSample{Time(0)};
    lSample.AppendSize(0);
    EXPECT_DEATH(lSample.ModifySize(1, 0), "kSizeBytes <= Mark\\(\\) - aAt");
    EXPECT_DEATH(lSample.ModifySize(0xFFFFFFFF, 0), "aAt <= Mark\\(\\)");
}

TEST(H264SampleTest, RevertCutsBackToAMark) {
    H264Sample lSample{Time(0)};
    lSample.Append(1);
    const UInt lMark = lSample.Mark();
    lSample.AppendSize(5);
    lSample.Revert(lMark);
    EXPECT_EQ((Bytes{1}), BytesOf(lSample));
    lSample.Revert(100);
    EXPECT_EQ((Bytes{1}), BytesOf(lSample)) << "never grows";
}

TEST(H264SampleTest, IsDisposableWhenNoOtherPictureRefersToIt) {
    const struct {
        Bytes mBytes;
        bool mIsDisposable;
    } kTable[] = {
        {{0, 0, 0, 1, 0x01}, true},                     // slice, nal_ref_idc 0
        {{0, 0, 0, 1, 0x81}, true},                     // the forbidden bit is none of nal_ref_idc
        {{0, 0, 0, 1, 0x9F}, true},                     //
        {{0, 0, 0, 1, 0x21}, false},                    // 1
        {{0, 0, 0, 1, 0x41}, false},                    // 2
        {{0, 0, 0, 1, 0x65}, false},                    // 3
        {{0, 0, 0, 1, 0x01, 0, 0, 0, 1, 0x65}, true},   // the first NAL unit decides
        {{0, 0, 0, 1, 0x65, 0, 0, 0, 1, 0x01}, false},  //
        {{0, 0, 0, 0}, false},                          // no NAL unit
        {{0x00}, false},
        {{}, false},
    };
    for (const auto& lRow : kTable) {
        H264Sample lSample{Time(0)};
        lSample.Append(lRow.mBytes.data(), static_cast<UInt>(lRow.mBytes.size()));
        const Packet& lPacket = lSample;
        EXPECT_EQ(lRow.mIsDisposable, lPacket.IsDisposable()) << testing::PrintToString(lRow.mBytes);
    }
}

TEST(H264SampleTest, GivesItsBytesAway) {
    H264Sample lSample{Time(0)};
    lSample.Grow(30);
    lSample.Append("abcdefghijklmnop", 16);
    const Byte* const lBegin = lSample.Begin();
    Byte* const lBytes = lSample.Detach();
    EXPECT_EQ(lBegin, lBytes);
    EXPECT_EQ('a', lBytes[0]);
    Mem::Free(lBytes);
    EXPECT_EQ(0U, lSample.Size());
    EXPECT_EQ(nullptr, lSample.Detach());
}

TEST(H264SampleTest, KeepsItsBytesWhereTheyWouldHoldMuchMemory) {
    H264Sample lSample{Time(0)};
    lSample.Grow(33);
    lSample.Append("abcdefghijklmnop", 16);
    EXPECT_EQ(nullptr, lSample.Detach());
    EXPECT_EQ(16U, lSample.Size());
}

}  // namespace
}  // namespace Player::Packets
