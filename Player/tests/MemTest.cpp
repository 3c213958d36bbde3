#include "Player/Mem.hpp"

#include <gtest/gtest.h>

#include <climits>

#include "Player/Ptr.hpp"

namespace Player {
namespace {

TEST(Util, MinAndMaxReturnTheArgumentItself) {
    const UInt lSmall = 3;
    const UInt lLarge = 0x80000000U;  // the larger one only when compared without a sign
    EXPECT_EQ(&lSmall, &Util::Min(lSmall, lLarge));
    EXPECT_EQ(&lSmall, &Util::Min(lLarge, lSmall));
    EXPECT_EQ(&lLarge, &Util::Max(lSmall, lLarge));
    EXPECT_EQ(&lLarge, &Util::Max(lLarge, lSmall));
    const int lNegative = -1;
    const int lPositive = 1;
    EXPECT_EQ(-1, Util::Min(lNegative, lPositive));
    EXPECT_EQ(1, Util::Max(lNegative, lPositive));
}

TEST(Util, Abs) {
    EXPECT_EQ(5, Util::Abs(-5));
    EXPECT_EQ(5, Util::Abs(5));
    EXPECT_EQ(0, Util::Abs(0));
    EXPECT_EQ(INT_MAX, Util::Abs(-INT_MAX));
    EXPECT_EQ(INT_MIN, Util::Abs(INT_MIN));
}

TEST(Mem, AllocatesClearsAndCopies) {
    const ScopedArray<Byte> lPlain(Mem::Alloc<Byte>(4));
    std::memset(lPlain.Ptr(), 0xAA, 4);
    Mem::Clear(lPlain.Ptr() + 1, 2);
    EXPECT_EQ(0, std::memcmp("\xAA\0\0\xAA", lPlain.Ptr(), 4));

    Byte* const lCleared = Mem::AllocAndClear<Byte>(64);
    for (UInt i = 0; i < 64; ++i)
        EXPECT_EQ(0, lCleared[i]);
    Mem::Free(lCleared);

    const Byte lSource[] = {1, 2, 3};
    Byte* const lCopy = Mem::AllocAndCopy(lSource, 3);
    EXPECT_EQ(0, std::memcmp(lSource, lCopy, 3));
    Mem::Free(lCopy);

    Mem::Free(static_cast<Byte*>(nullptr));
}

TEST(Mem, ReallocAlwaysMoves) {
    Byte* const lOld = Mem::AllocAndCopy(reinterpret_cast<const Byte*>("abcd"), 4);
    // The old block is still there while the new one is made: they differ, whatever the sizes.
    const auto lOldAddress = reinterpret_cast<std::uintptr_t>(lOld);
    Byte* const lNew = Mem::Realloc(lOld, 4, 4);
    EXPECT_NE(lOldAddress, reinterpret_cast<std::uintptr_t>(lNew));
    EXPECT_EQ(0, std::memcmp("abcd", lNew, 4));
    Byte* const lLarger = Mem::Realloc(lNew, 2, 100);
    EXPECT_EQ(0, std::memcmp("ab", lLarger, 2));
    Mem::Free(lLarger);
}

TEST(Mem, ReallocToLessCopiesWhatFits) {
    Byte* const lOld = Mem::AllocAndCopy(reinterpret_cast<const Byte*>("abcd"), 4);
    Byte* const lNew = Mem::Realloc(lOld, 4, 2);
    EXPECT_EQ(0, std::memcmp("ab", lNew, 2));
    Byte* const lLess = Mem::ReallocAndClear(lNew, 2, 1);
    EXPECT_EQ('a', *lLess);
    Mem::Free(lLess);
}

TEST(Mem, ReallocAndClearZeroesFromTheOldCountOn) {
    Byte* const lOld = Mem::AllocAndCopy(reinterpret_cast<const Byte*>("abcd"), 4);
    Byte* const lNew = Mem::ReallocAndClear(lOld, 3, 40);
    EXPECT_EQ(0, std::memcmp("abc", lNew, 3));
    for (UInt i = 3; i < 40; ++i)
        EXPECT_EQ(0, lNew[i]) << i;
    Mem::Free(lNew);
}

TEST(Mem, CountsElementsNotBytes) {
    const UInt lSource[] = {0x11111111, 0x22222222, 0x33333333};
    UInt lCopy[3] = {};
    Mem::Copy(lCopy, lSource, 2);
    EXPECT_EQ(0x22222222U, lCopy[1]);
    EXPECT_EQ(0U, lCopy[2]);
    Mem::Clear(lCopy, 2);
    EXPECT_EQ(0U, lCopy[1]);

    Byte lBytes[4] = {};
    Mem::Copy(lBytes, static_cast<const void*>(lSource), 3);
    EXPECT_EQ(0x11, lBytes[2]);
    EXPECT_EQ(0, lBytes[3]);
}

TEST(Mem, MoveMayOverlap) {
    Byte lBytes[] = {1, 2, 3, 4, 5};
    Mem::Move(lBytes + 1, static_cast<const Byte*>(lBytes), 4);
    const Byte lExpected[] = {1, 1, 2, 3, 4};
    EXPECT_EQ(0, std::memcmp(lExpected, lBytes, 5));
    Mem::Move(lBytes, static_cast<const Byte*>(lBytes + 2), 3);
    EXPECT_EQ(0, std::memcmp("\2\3\4\3\4", lBytes, 5));
}

}  // namespace
}  // namespace Player
