#include "RTP/Extension.hpp"

#include <gtest/gtest.h>

namespace Player::RTP {
namespace {

/// The count of a number that lies in the play range, which becomes part of the history.
template <typename Extension, typename Number>
auto Take(Extension& aExtension, Number aNumber) {
    const auto lPlace = aExtension.Find(aNumber);
    EXPECT_TRUE(lPlace) << aNumber;
    aExtension.Accept(*lPlace);
    return lPlace->mExtended;
}

TEST(ExtensionTest, CountsFromTheBase) {
    SequenceExtension lSeq;
    lSeq.SetBase(1000);
    EXPECT_EQ(0U, Take(lSeq, std::uint16_t{1000}));
    EXPECT_EQ(1U, Take(lSeq, std::uint16_t{1001}));
    EXPECT_EQ(7U, Take(lSeq, std::uint16_t{1007}));
    EXPECT_EQ(8U, lSeq.Expected());
}

TEST(ExtensionTest, GoesOnAcrossTheWrap) {
    SequenceExtension lSeq;
    lSeq.SetBase(65534);
    EXPECT_EQ(0U, Take(lSeq, std::uint16_t{65534}));
    EXPECT_EQ(1U, Take(lSeq, std::uint16_t{65535}));
    EXPECT_EQ(2U, Take(lSeq, std::uint16_t{0}));
    EXPECT_EQ(3U, Take(lSeq, std::uint16_t{1}));
    EXPECT_EQ(1, lSeq.Cycles());
    EXPECT_EQ(1U, Take(lSeq, std::uint16_t{65535})) << "from before the wrap";
    EXPECT_EQ(1, lSeq.Cycles());
    EXPECT_EQ(1, lSeq.Highest());
    EXPECT_EQ(4U, lSeq.Expected());
}

TEST(ExtensionTest, NothingLiesBeforeTheBase) {
    SequenceExtension lSeq;
    lSeq.SetBase(100);
    EXPECT_FALSE(lSeq.Find(99));
    EXPECT_FALSE(lSeq.Find(0));
    EXPECT_FALSE(lSeq.Find(65535));
    Take(lSeq, std::uint16_t{110});
    EXPECT_FALSE(lSeq.Find(99));
    EXPECT_EQ(0U, lSeq.Find(100)->mExtended);
    EXPECT_TRUE(lSeq.Find(100)->mIsOlder);
}

TEST(ExtensionTest, WhatIsAdmittedBeforeTheBaseCountsBelowZero) {
    for (const std::uint16_t lBase : {std::uint16_t{100}, std::uint16_t{5}}) {
        SequenceExtension lSeq;
        lSeq.SetBase(lBase);
        lSeq.Admit(10);
        const auto lBefore = [lBase](int aCount) { return static_cast<std::uint16_t>(lBase - aCount); };
        EXPECT_EQ(static_cast<std::uint32_t>(-10), Take(lSeq, lBefore(10)));
        EXPECT_FALSE(lSeq.Find(lBefore(11)));
        EXPECT_EQ(0U, Take(lSeq, lBase));
        EXPECT_EQ(20U, Take(lSeq, lBefore(-20)));
        EXPECT_EQ(static_cast<std::uint32_t>(-1), Take(lSeq, lBefore(1)));
        EXPECT_EQ(21U, lSeq.Expected());
        lSeq.SetBase(lBase);
        EXPECT_FALSE(lSeq.Find(lBefore(1))) << "of the range before";
    }
}

TEST(ExtensionTest, BaseCountsOnlyInTheFirstCycle) {
    SequenceExtension lSeq;
    lSeq.SetBase(60000);
    Take(lSeq, std::uint16_t{60000});
    Take(lSeq, std::uint16_t{20});
    EXPECT_EQ(65536U + 10 - 60000, Take(lSeq, std::uint16_t{10}));
}

TEST(ExtensionTest, HalfTheRangeDecidesBetweenOldAndNew) {
    SequenceExtension lSeq;
    lSeq.SetBase(40000);
    EXPECT_FALSE(lSeq.Find(40000 + 32768 - 65536)) << "exactly half way round: older, before the base";
    EXPECT_EQ(32767U, Take(lSeq, static_cast<std::uint16_t>(40000 + 32767)));
    EXPECT_EQ(0U, lSeq.Find(40000)->mExtended);
    EXPECT_FALSE(lSeq.Find(39999));

    TimestampExtension lTime;
    lTime.SetBase(0x80000000U);
    EXPECT_FALSE(lTime.Find(0));
    EXPECT_EQ(0x7FFFFFFFU, Take(lTime, 0xFFFFFFFFU));
    EXPECT_EQ(0x80000000U, Take(lTime, 0U)) << "one more";
}

TEST(ExtensionTest, TimestampsCountFarBeyondTheirWidth) {
    TimestampExtension lTime;
    lTime.SetBase(5);
    std::uint64_t lExpected = 0;
    for (UInt i = 0, lTimestamp = 5; i < 100; ++i, lTimestamp += 0x7FFFFFFF, lExpected += 0x7FFFFFFF) {
        ASSERT_EQ(lExpected, Take(lTime, lTimestamp));
    }
    EXPECT_EQ(99 * 0x7FFFFFFFULL + 5, std::uint64_t{lTime.Cycles()} << 32 | lTime.Highest());
}

TEST(ExtensionTest, FindChangesNothing) {
    SequenceExtension lSeq;
    lSeq.SetBase(10);
    lSeq.Find(500);
    EXPECT_EQ(10, lSeq.Highest());
    EXPECT_EQ(1U, lSeq.Expected());
}

TEST(ExtensionTest, NewBaseGoesOnFromWhereTheCountIs) {
    SequenceExtension lSeq;
    lSeq.SetBase(65530);
    Take(lSeq, std::uint16_t{4});  // 10 on, one wrap
    lSeq.SetBase(30000);
    EXPECT_EQ(0, lSeq.Cycles());
    EXPECT_EQ(30000, lSeq.Highest());
    EXPECT_EQ(1U, lSeq.Expected()) << "the offset does not enter";
    EXPECT_EQ(10U, Take(lSeq, std::uint16_t{30000}));
    EXPECT_EQ(11U, Take(lSeq, std::uint16_t{30001}));
    lSeq.SetBase(0);
    EXPECT_EQ(13U, Take(lSeq, std::uint16_t{2}));
}

TEST(ExtensionTest, OffsetReplacesWhatWasCarriedOver) {
    TimestampExtension lTime;
    lTime.SetBase(100);
    Take(lTime, 400U);
    lTime.SetBase(1000);
    lTime.SetOffset(7);
    EXPECT_EQ(7U, Take(lTime, 1000U));
}

TEST(ExtensionTest, RestartKeepsOnlyTheBase) {
    SequenceExtension lSeq;
    lSeq.SetBase(65530);
    Take(lSeq, std::uint16_t{4});
    lSeq.SetOffset(99);
    lSeq.Restart();
    EXPECT_EQ(65530, lSeq.Base());
    EXPECT_EQ(65530, lSeq.Highest());
    EXPECT_EQ(0, lSeq.Cycles());
    EXPECT_EQ(0U, Take(lSeq, std::uint16_t{65530}));
}

TEST(ExtensionTest, LearnsOnlyAnUnknownBase) {
    SequenceExtension lSeq;
    lSeq.LearnBase(77);
    EXPECT_EQ(77, lSeq.Base());
    EXPECT_EQ(77, lSeq.Highest());
    lSeq.LearnBase(88);
    EXPECT_EQ(77, lSeq.Base());
}

TEST(ExtensionTest, IndicesWrapLikeTheirWidth) {
    SequenceExtension lSeq;
    lSeq.SetBase(1);
    std::uint64_t lCount = 0;
    for (; lCount < 0x100010000ULL; lCount += 32767) {
        ASSERT_EQ(static_cast<UInt>(lCount), Take(lSeq, static_cast<std::uint16_t>(lCount + 1)));
    }
}

}  // namespace
}  // namespace Player::RTP
