#include "Player/BitReader.hpp"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace Player {
namespace {

/// A reader over a block of the exact size.
class BitReaderTest : public testing::Test {
protected:
    BitReader& Over(const std::vector<Byte>& aBytes) {
        mBytes = std::make_unique<Byte[]>(aBytes.size());
        Mem::Copy(mBytes.get(), aBytes.data(), static_cast<UInt>(aBytes.size()));
        mReader = std::make_unique<BitReader>(mBytes.get(), static_cast<UInt>(aBytes.size()));
        return *mReader;
    }

private:
    std::unique_ptr<Byte[]> mBytes;
    std::unique_ptr<BitReader> mReader;
};

TEST_F(BitReaderTest, ReadsMostSignificantBitsFirst) {
    BitReader& lBits = Over({0xA5, 0x3C});  // 1 010 0101 0011 1100
    EXPECT_EQ(1U, lBits.Read(1));
    EXPECT_EQ(2U, lBits.Read(3));
    EXPECT_EQ(0x53U, lBits.Read(8));
    EXPECT_EQ(12U, lBits.Position());
    EXPECT_EQ(0xCU, lBits.Read(4));
    EXPECT_EQ(16U, lBits.Position());
}

TEST_F(BitReaderTest, NoBitsAreZeroAndMoveNothing) {
    BitReader& lBits = Over({0xFF});
    EXPECT_EQ(0U, lBits.Read(0));
    EXPECT_EQ(0U, lBits.Position());
}

TEST_F(BitReaderTest, EveryWidthAtEveryOffsetMatchesABitByBitRead) {
    const std::vector<Byte> lBytes = {0x81, 0x42, 0x24, 0x18, 0xF7, 0x5A, 0x3D};
    for (UInt lStart = 0; lStart < 24; ++lStart) {
        for (UInt lWidth = 0; lWidth <= 32; ++lWidth) {
            UInt lExpected = 0;
            for (UInt lBit = lStart; lBit < lStart + lWidth; ++lBit) {
                lExpected = lExpected << 1 | (UInt{lBytes[lBit / 8]} >> (7 - lBit % 8) & 1U);
            }
            BitReader& lBits = Over(lBytes);
            lBits.Seek(lStart);
            EXPECT_EQ(lExpected, lBits.Read(lWidth)) << lWidth << " bits at " << lStart;
            EXPECT_EQ(lStart + lWidth, lBits.Position());
        }
    }
}

TEST_F(BitReaderTest, MissingBitsAreZeroAndTheCursorStaysAtTheEnd) {
    BitReader& lBits = Over({0xFF});
    lBits.Skip(4);
    EXPECT_EQ(0xF00U, lBits.Read(12));
    EXPECT_EQ(8U, lBits.Position());
    EXPECT_TRUE(lBits.AtEnd());
    EXPECT_EQ(0U, lBits.Read(32));
    EXPECT_EQ(8U, lBits.Position());
}

TEST_F(BitReaderTest, NothingThereReadsAsZero) {
    BitReader& lBits = Over({});
    EXPECT_EQ(0U, lBits.Read(32));
    BitReader lNull(nullptr, 0);
    EXPECT_EQ(0U, lNull.Read(8));
}

TEST_F(BitReaderTest, OfMoreThan32BitsTheLast32Count) {
    BitReader& lBits = Over({0xAB, 0x11, 0x22, 0x33, 0x44, 0xCD});
    EXPECT_EQ(0x11223344U, lBits.Read(40));
    EXPECT_EQ(40U, lBits.Position());
}

TEST_F(BitReaderTest, SkipAndSeekStopAtTheEnd) {
    BitReader& lBits = Over({0x00, 0x01});
    lBits.Skip(~std::uint64_t{0});
    EXPECT_EQ(16U, lBits.Position());
    lBits.Seek(15);
    EXPECT_FALSE(lBits.AtEnd());
    EXPECT_EQ(1U, lBits.Read(1));
    lBits.Seek(17);
    EXPECT_EQ(16U, lBits.Position());
    EXPECT_EQ(0U, lBits.Read(0xFFFFFFFF));
}

}  // namespace
}  // namespace Player
