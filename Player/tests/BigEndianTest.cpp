#include "BigEndian.hpp"

#include <gtest/gtest.h>

#include <vector>

namespace Player::BigEndian {
namespace {

TEST(BigEndianTest, HighestByteComesFirst) {
    const std::vector<Byte> lBytes = {0xFE, 0xDC, 0xBA, 0x98};
    EXPECT_EQ(0xFEDC, Read16(lBytes.data()));
    EXPECT_EQ(0xBA98, Read16(lBytes.data() + 2));
    EXPECT_EQ(0xFEDCBA98U, Read32(lBytes.data()));

    std::vector<Byte> lWritten(4);
    Write32(lWritten.data(), 0xFEDCBA98);
    EXPECT_EQ(lBytes, lWritten);
    Write16(lWritten.data() + 1, 0x91234);
    EXPECT_EQ((std::vector<Byte>{0xFE, 0x12, 0x34, 0x98}), lWritten);
}

}  // namespace
}  // namespace Player::BigEndian
