#include "Player/AMRFrame.hpp"

#include <gtest/gtest.h>

namespace Player {
namespace {

TEST(AMRFrame, ASizeGivesItsType) {
    for (UInt lType = 0; lType <= 9; ++lType) {
        const Byte lEntry = AMRFrame::Entry(lType);
        EXPECT_EQ(lType << 3 | 4U, lEntry);
        EXPECT_EQ(lType, AMRFrame::TypeOf(AMRFrame::SizeOf(lEntry)));
        EXPECT_GE(AMRFrame::kLargest, AMRFrame::SizeOf(lEntry));
    }
    for (const UInt lNone : {0U, 4U, 14U, 32U, 4000000000U}) {
        EXPECT_EQ(AMRFrame::kNoType, AMRFrame::TypeOf(lNone));
    }
}

TEST(AMRFrame, TheOtherBitsOfAnEntryDoNotCount) {
    EXPECT_EQ(31U, AMRFrame::SizeOf(0xBF));
    EXPECT_EQ(5U, AMRFrame::SizeOf(0xC0));
    EXPECT_EQ(0U, AMRFrame::SizeOf(0x7C));
}

}  // namespace
}  // namespace Player
