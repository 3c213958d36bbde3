#include "VLC.hpp"

#include <gtest/gtest.h>

#include <stdexcept>

#include "support/BitWriter.hpp"

namespace Parser {
namespace {

using TestSupport::BitWriter;

/// A bit stream in a heap block of just its size.
struct Bits {
    explicit Bits(const BitWriter& aBits) : Bits(aBits, aBits.Size()) {}
    Bits(const BitWriter& aBits, UInt aSize) : mBytes(aBits.Prefix(aSize)), mStream{mBytes.data(), aSize, 0} {}

    Bitstream& Stream() { return mStream; }

    std::vector<Byte> mBytes;
    Bitstream mStream;
};

TEST(VLC, FixedLengthsAreReadFromTheMostSignificantBit) {
    Bits lBits(BitWriter().u(3, 5).u(1, 1).u(8, 0xa5).u(32, 0xdeadbeef).u(1, 0).u(31, 1));
    EXPECT_EQ(5U, u_v(3, lBits.mStream));
    EXPECT_TRUE(u_1(lBits.mStream));
    EXPECT_EQ(0xa5U, u_v(8, lBits.mStream));
    EXPECT_EQ(0xdeadbeefU, u_v(32, lBits.mStream));
    EXPECT_FALSE(u_1(lBits.mStream));
    EXPECT_EQ(0U, u_v(0, lBits.mStream));
    EXPECT_TRUE(more_rbsp_data(lBits.mStream));
    EXPECT_EQ(1U, u_v(31, lBits.mStream));
    EXPECT_FALSE(more_rbsp_data(lBits.mStream));
    EXPECT_EQ(0U, u_v(0, lBits.mStream));
}

TEST(VLC, MoreThan32BitsAreRefused) {
    Bits lBits(BitWriter().u(32, 0).u(32, 0));
    EXPECT_THROW(u_v(33, lBits.mStream), std::runtime_error);
}

TEST(VLC, ExpGolombCodes) {
    const struct {
        UInt mBits, mCode, mUnsigned;
        SInt mSigned;
    } kCodes[] = {
        {1, 0b1, 0, 0},
        {3, 0b010, 1, 1},
        {3, 0b011, 2, -1},
        {5, 0b00100, 3, 2},
        {5, 0b00101, 4, -2},
        {5, 0b00110, 5, 3},
        {5, 0b00111, 6, -3},
        {7, 0b0001000, 7, 4},
        {7, 0b0001111, 14, -7},
        {9, 0b000010000, 15, 8},
        {17, 256, 255, 128},
        {17, 257, 256, -128},
        {31, 0xffff, 65534, -32767},
    };
    for (const auto& lCode : kCodes) {
        Bits lUnsigned(BitWriter().u(lCode.mBits, lCode.mCode));
        EXPECT_EQ(lCode.mUnsigned, ue_v(lUnsigned.mStream));
        EXPECT_FALSE(more_rbsp_data(lUnsigned.mStream));
        Bits lSigned(BitWriter().u(lCode.mBits, lCode.mCode));
        EXPECT_EQ(lCode.mSigned, se_v(lSigned.mStream));
        EXPECT_FALSE(more_rbsp_data(lSigned.mStream));
    }
}

TEST(VLC, TheLongestCodesAreOf31Zeros) {
    const BitWriter lLeast = BitWriter().u(31, 0).u(1, 1).u(31, 0);
    const BitWriter lMost = BitWriter().u(31, 0).u(1, 1).u(31, 0x7fffffff);
    EXPECT_EQ(0x7fffffffU, ue_v(Bits(lLeast).Stream()));
    EXPECT_EQ(0xfffffffeU, ue_v(Bits(lMost).Stream()));
    EXPECT_EQ(0x40000000, se_v(Bits(lLeast).Stream()));
    EXPECT_EQ(-0x7fffffff, se_v(Bits(lMost).Stream()));
    // One below the most: the greatest signed value.
    EXPECT_EQ(0x7fffffff, se_v(Bits(BitWriter().u(31, 0).u(1, 1).u(31, 0x7ffffffe)).Stream()));
}

TEST(VLC, CodesOf32ZerosAreRefused) {
    Bits lBits(BitWriter().u(32, 0).u(1, 1).u(32, 0));
    EXPECT_THROW(ue_v(lBits.mStream), std::runtime_error);
    EXPECT_EQ(32U, lBits.mStream.mPos);  // not read to wherever the next one is
    Bits lSigned(BitWriter().u(32, 0).u(1, 1).u(32, 0));
    EXPECT_THROW(se_v(lSigned.mStream), std::runtime_error);
}

TEST(VLC, EveryShorterCodeThrows) {
    const BitWriter lMost = BitWriter().u(31, 0).u(1, 1).u(31, 0x7fffffff);
    for (UInt lSize = 0; lSize < lMost.Size(); ++lSize) {
        EXPECT_THROW(ue_v(Bits(lMost, lSize).Stream()), std::runtime_error) << lSize;
        EXPECT_THROW(se_v(Bits(lMost, lSize).Stream()), std::runtime_error) << lSize;
    }
    for (UInt lSize = 0; lSize < 32; ++lSize) {
        EXPECT_THROW(u_v(lSize + 1, Bits(lMost, lSize).Stream()), std::runtime_error) << lSize;
    }
    Bitstream lNothing;
    EXPECT_THROW(u_1(lNothing), std::runtime_error);
    EXPECT_FALSE(more_rbsp_data(lNothing));
}

}  // namespace
}  // namespace Parser
