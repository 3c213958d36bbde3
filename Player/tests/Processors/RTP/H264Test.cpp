#include "Processors/RTP/H264.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Processors/RTP/Chain.hpp"

namespace Player::Testing {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr UInt kLimit = Processors::RTP::Depacketizer::kMaxPendingBytes;

/// A NAL unit as it stands in a sample: after its length.
Bytes Unit(const Bytes& aNAL) {
    const UInt lSize = static_cast<UInt>(aNAL.size());
    return Bytes{static_cast<Byte>(lSize >> 24), static_cast<Byte>(lSize >> 16), static_cast<Byte>(lSize >> 8),
                 static_cast<Byte>(lSize)} +
           aNAL;
}

/// One unit of an aggregate: after its 16-bit size.
Bytes Aggregated(const Bytes& aNAL) {
    return Bytes{static_cast<Byte>(aNAL.size() >> 8), static_cast<Byte>(aNAL.size())} + aNAL;
}

const Bytes kStart = {0x7C, 0x85};   // FU-A with NRI 3; S, type 5
const Bytes kMiddle = {0x7C, 0x05};  // neither S nor E
const Bytes kLast = {0x7C, 0x45};    // E

class H264Test : public testing::Test {
protected:
    Chain mChain{"H264"};
};

TEST_F(H264Test, AMarkedPacketIsAnAccessUnit) {
    EXPECT_TRUE(mChain.Push(PacketWith({0x65, 1, 2}).Timestamp(500).Marker(), Time(800)));
    EXPECT_THAT(mChain.Samples(), ElementsAre(Unit({0x65, 1, 2})));
    EXPECT_NE(nullptr, mChain.Sample<Packets::H264Sample>(0));
    EXPECT_EQ(Time(500), mChain.End().mSamples[0]->PlayTime());
    EXPECT_EQ(Time(800), mChain.End().mLatest[0]);
}

// ---------------------------------------------------------------------------- delimiters

class H264DelimitedTest : public testing::Test {
protected:
    Chain mChain{"H264", "", Processors::RTP::CreateTolerantDepacketizer};
};

TEST_F(H264DelimitedTest, ADelimiterEndsTheUnitBeforeIt) {
    mChain.Push(PacketWith({0x09, 0x10}).Seq(1));
    mChain.Push(PacketWith({0x67, 1}).Seq(2));
    mChain.Push(PacketWith({0x65, 2}).Seq(3));
    EXPECT_EQ(0U, mChain.Delivered());
    EXPECT_TRUE(mChain.Push(PacketWith({0x09, 0x30}).Seq(4), Time(7)));
    EXPECT_THAT(mChain.Samples(), ElementsAre(Unit({0x09, 0x10}) + Unit({0x67, 1}) + Unit({0x65, 2})));
    EXPECT_EQ(Time(7), mChain.End().mLatest[0]);
    mChain.Push(PacketWith({0x41, 3}).Seq(5).Marker());
    EXPECT_EQ(Unit({0x09, 0x30}) + Unit({0x41, 3}), mChain.Samples()[1]);
}

TEST_F(H264DelimitedTest, ADelimiterMayBeginAnAggregateAndAPictureBeInFragments) {
    const Bytes lAggregate = Bytes{0x78} + Aggregated({0x09, 0x10}) + Aggregated({0x41, 1});
    mChain.Push(PacketWith(lAggregate).Seq(1));
    mChain.Push(PacketWith(kStart + Bytes{1}).Seq(2));
    mChain.Push(PacketWith(kLast + Bytes{2}).Seq(3));
    EXPECT_EQ(0U, mChain.Delivered());
    mChain.Push(PacketWith(lAggregate).Seq(4));
    EXPECT_THAT(mChain.Samples(), ElementsAre(Unit({0x09, 0x10}) + Unit({0x41, 1}) + Unit({0x65, 1, 2})));
}

TEST_F(H264DelimitedTest, PicturesWithinAggregatesCount) {
    const Bytes lAggregate = Bytes{0x78} + Aggregated({0x09, 0x10}) + Aggregated({0x41, 1});
    const Bytes lSets = Bytes{0x78} + Aggregated({0x67, 1}) + Aggregated({0x68, 2});
    mChain.Push(PacketWith(lSets).Seq(1));
    mChain.Push(PacketWith(lAggregate).Seq(2));
    EXPECT_EQ(0U, mChain.Delivered());
    mChain.Push(PacketWith(lAggregate).Seq(3));
    EXPECT_THAT(mChain.Samples(),
                ElementsAre(Unit({0x67, 1}) + Unit({0x68, 2}) + Unit({0x09, 0x10}) + Unit({0x41, 1})));
}

TEST_F(H264DelimitedTest, WhatStandsInFrontOfADelimiterWithoutAPictureGoesWithTheNext) {
    mChain.Push(PacketWith({0x67, 1}).Seq(1));
    mChain.Push(PacketWith({0x09, 0x10}).Seq(2));
    mChain.Push(PacketWith({0x65, 2}).Seq(3).Marker());
    EXPECT_THAT(mChain.Samples(), ElementsAre(Unit({0x67, 1}) + Unit({0x09, 0x10}) + Unit({0x65, 2})));
}

TEST_F(H264DelimitedTest, PayloadsTooShortAreNoDelimiters) {
    for (const Bytes& lPayload : {Bytes{}, Bytes{0x78}, Bytes{0x78, 0, 1}, Bytes{0x7C}}) {
        mChain.Push(PacketWith({0x65, 2}).Seq(1));
        mChain.Push(PacketWith(lPayload).Seq(2));
        EXPECT_EQ(0U, mChain.Delivered());
        mChain.Link().Flush();
    }
}

TEST_F(H264Test, ADelimiterAloneEndsNothing) {
    mChain.Push(PacketWith({0x65, 2}).Seq(1));
    mChain.Push(PacketWith({0x09, 0x30}).Seq(2));
    mChain.Push(PacketWith({0x41, 3}).Seq(3).Marker());
    EXPECT_EQ(1U, mChain.Delivered());
}

TEST_F(H264Test, PaddingIsNoPartOfANALUnit) {
    mChain.Push(PacketWith({0x65, 1}).Padding(4).Marker());
    EXPECT_THAT(mChain.Samples(), ElementsAre(Unit({0x65, 1})));
}

TEST_F(H264Test, PacketsOfOneTimestampGatherUpToTheMarker) {
    EXPECT_TRUE(mChain.Push(PacketWith({0x67, 1}).Seq(1)));
    EXPECT_TRUE(mChain.Push(PacketWith({0x68, 2}).Seq(2)));
    EXPECT_EQ(0U, mChain.Delivered());
    EXPECT_TRUE(mChain.Push(PacketWith({0x65, 3}).Seq(3).Marker()));
    EXPECT_THAT(mChain.Samples(), ElementsAre(Unit({0x67, 1}) + Unit({0x68, 2}) + Unit({0x65, 3})));
}

TEST_F(H264Test, WithoutAMarkerTheNextTimestampEndsTheUnit) {
    mChain.Push(PacketWith({0x65, 1}).Seq(1).Timestamp(100));
    mChain.Push(PacketWith({0x41, 2}).Seq(2).Timestamp(200), Time(999));
    ASSERT_EQ(1U, mChain.Delivered());
    EXPECT_EQ(Time(100), mChain.End().mSamples[0]->PlayTime());
    EXPECT_EQ(Time(999), mChain.End().mLatest[0]);
    mChain.Push(PacketWith({0x41, 3}).Seq(3).Timestamp(150));  // an earlier timestamp is another one, too
    mChain.Push(PacketWith({0x41, 4}).Seq(4).Timestamp(150).Marker());
    EXPECT_THAT(mChain.Samples(), ElementsAre(Unit({0x65, 1}), Unit({0x41, 2}), Unit({0x41, 3}) + Unit({0x41, 4})));
}

TEST_F(H264Test, ThePlayTimeIsThatOfTheFirstPacket) {
    const PacketPtr lFirst = Made(PacketWith({0x65, 1}));
    const PacketPtr lSecond = Made(PacketWith({0x65, 2}).Marker());
    lFirst->SetPlayTime(Time(10));
    lSecond->SetPlayTime(Time(20));
    mChain.Link().Handle(lFirst, Time(0));
    mChain.Link().Handle(lSecond, Time(0));
    EXPECT_EQ(Time(10), mChain.End().mSamples.at(0)->PlayTime());
}

TEST_F(H264Test, PacketsAreKeptByReferenceAndLetGo) {
    const PacketPtr lPacket = Made(PacketWith({0x65, 1}));
    mChain.Link().Handle(lPacket, Time(0));
    EXPECT_EQ(2U, lPacket->GetRefCount());
    mChain.Push(PacketWith({0x65, 2}).Marker());
    EXPECT_EQ(1U, lPacket->GetRefCount());
}

TEST_F(H264Test, OneMarkedPacketOfAnotherTimestampDeliversTwoUnits) {
    mChain.Push(PacketWith({0x65, 1}).Timestamp(100));
    EXPECT_TRUE(mChain.Push(PacketWith({0x41, 2}).Timestamp(200).Marker()));
    EXPECT_THAT(mChain.Samples(), ElementsAre(Unit({0x65, 1}), Unit({0x41, 2})));
}

TEST_F(H264Test, ARefusalOfEitherUnitIsAnsweredButBothAreDelivered) {
    const struct {
        bool mFirst, mSecond, mAnswer;
    } kTable[] = {{true, true, true}, {false, true, false}, {true, false, false}, {false, false, false}};
    for (const auto& lRow : kTable) {
        Chain lChain("H264");
        lChain.End().mAnswers = {lRow.mFirst, lRow.mSecond};
        EXPECT_TRUE(lChain.Push(PacketWith({0x65, 1}).Timestamp(100)));
        EXPECT_EQ(lRow.mAnswer, lChain.Push(PacketWith({0x41, 2}).Timestamp(200).Marker()));
        EXPECT_EQ(2U, lChain.Delivered());
    }
}

TEST_F(H264Test, OnlyNALTypes1To23AreSingleUnits) {
    for (UInt lType = 0; lType < 32; ++lType) {
        if (24 == lType || 28 == lType) { continue; }
        Chain lChain("H264");
        const Bytes lNAL = {static_cast<Byte>(0x60 | lType), 0x00, 0x01};
        EXPECT_TRUE(lChain.Push(PacketWith(lNAL).Marker()));
        if (1 <= lType && lType <= 23) {
            EXPECT_THAT(lChain.Samples(), ElementsAre(Unit(lNAL))) << lType;
        } else {
            EXPECT_THAT(lChain.Samples(), IsEmpty()) << lType;
        }
    }
}

TEST_F(H264Test, AUnitWithoutBytesIsNotDelivered) {
    mChain.End().mAnswers = {false};
    EXPECT_TRUE(mChain.Push(PacketWith({0x79, 1, 2}).Timestamp(1).Marker()));
    EXPECT_EQ(0U, mChain.Delivered());
    EXPECT_FALSE(mChain.Push(PacketWith({0x65}).Timestamp(1).Marker())) << "the first to reach the consumer";
    EXPECT_THAT(mChain.Samples(), ElementsAre(Unit({0x65})));
}

TEST_F(H264Test, AnAggregateGivesItsUnits) {
    const Bytes lSPS = {0x67, 1, 2, 3, 4};
    const Bytes lPPS = {0x68, 1, 2, 3, 4, 5, 6};
    mChain.Push(PacketWith(Bytes{0x78} + Aggregated(lSPS) + Aggregated(lPPS)).Marker());
    ASSERT_THAT(mChain.Samples(), ElementsAre(Unit(lSPS) + Unit(lPPS)));
    EXPECT_EQ(4U + 5 + 4 + 7, mChain.Samples()[0].size());
}

TEST_F(H264Test, BadSizesInAnAggregateAreSteppedOver) {
    const Bytes lNAL = {0x41, 0xAA};
    const struct {
        const char* mWhat;
        Bytes mPayload;
        Bytes mSample;
    } kTable[] = {
        {"header alone", {0x78}, {}},
        {"one byte", {0x78, 0x00}, {}},
        {"a size without a byte", {0x78, 0x00, 0x01}, {}},
        {"one byte in a unit", {0x78, 0x00, 0x01, 0x41}, Unit({0x41})},
        {"size 0, then a unit", Bytes{0x78, 0x00, 0x00} + Aggregated(lNAL), Unit(lNAL)},
        {"a size beyond the end, then a unit", Bytes{0x78, 0x00, 0x05} + Aggregated(lNAL), Unit(lNAL)},
        {"a size that just fits", {0x78, 0x00, 0x03, 0x41, 1, 2}, Unit({0x41, 1, 2})},
        {"a size one too large", {0x78, 0x00, 0x04, 0x41, 1, 2}, {}},
        // The 2 bytes after a bad size are the next size, whatever they were meant to be.
        {"resynchronised within a unit", {0x78, 0xFF, 0xFF, 0x00, 0x01, 0x09}, Unit({0x09})},
        {"two bytes left over", Bytes{0x78} + Aggregated(lNAL) + Bytes{0x00, 0x01}, Unit(lNAL)},
        {"the largest size", {0x78, 0xFF, 0xFF, 0x41}, {}},
    };
    for (const auto& lRow : kTable) {
        Chain lChain("H264");
        lChain.Push(PacketWith(lRow.mPayload).Marker());
        if (lRow.mSample.empty()) {
            EXPECT_THAT(lChain.Samples(), IsEmpty()) << lRow.mWhat;
        } else {
            EXPECT_THAT(lChain.Samples(), ElementsAre(lRow.mSample)) << lRow.mWhat;
        }
    }
}

TEST_F(H264Test, AnAggregateOfTinyUnitsNeedsMoreRoomThanItHas) {
    Bytes lPayload = {0x78};
    Bytes lSample;
    for (Byte lIdx = 0; lIdx < 200; ++lIdx) {
        lPayload = lPayload + Aggregated({lIdx});
        lSample = lSample + Unit({lIdx});
    }
    mChain.Push(PacketWith(lPayload).Marker());
    EXPECT_THAT(mChain.Samples(), ElementsAre(lSample));
}

TEST_F(H264Test, FragmentsAreJoinedBehindTheRebuiltHeader) {
    mChain.Push(PacketWith(kStart + Bytes{1, 2}).Seq(65534));
    mChain.Push(PacketWith(kMiddle + Bytes{3}).Seq(65535));
    mChain.Push(PacketWith(kMiddle + Bytes{4}).Seq(0));
    mChain.Push(PacketWith(kLast + Bytes{5, 6}).Seq(1).Marker());
    EXPECT_THAT(mChain.Samples(), ElementsAre(Unit({0x65, 1, 2, 3, 4, 5, 6})));
}

TEST_F(H264Test, TheHeaderTakesFAndNRIOfTheIndicatorAndTheTypeOfTheStart) {
    mChain.Push(PacketWith({0xBC, 0xA7, 1}).Seq(1));  // F, NRI 1; S, reserved bit, type 7
    mChain.Push(PacketWith({0x7C, 0x65, 2}).Seq(2).Marker());
    EXPECT_THAT(mChain.Samples(), ElementsAre(Unit({0xA7, 1, 2})));
}

TEST_F(H264Test, AStartThatIsAlsoTheEndIsAWholeUnit) {
    mChain.Push(PacketWith({0x7C, 0xC5, 1, 2}).Seq(1));
    mChain.Push(PacketWith({0x7C, 0xC5}).Seq(2).Marker());
    EXPECT_THAT(mChain.Samples(), ElementsAre(Unit({0x65, 1, 2}) + Unit({0x65})));
}

TEST_F(H264Test, ALostFragmentCostsItsUnitAndNothingElse) {
    mChain.Push(PacketWith({0x67, 9}).Seq(9));
    mChain.Push(PacketWith(kStart + Bytes{1}).Seq(10));
    mChain.Push(PacketWith(kMiddle + Bytes{2}).Seq(11));
    mChain.Push(PacketWith(kLast + Bytes{4}).Seq(13));
    mChain.Push(PacketWith({0x41, 5}).Seq(14).Marker());
    EXPECT_THAT(mChain.Samples(), ElementsAre(Unit({0x67, 9}) + Unit({0x41, 5})));
}

TEST_F(H264Test, WithOnlyABrokenUnitNothingIsDelivered) {
    const struct {
        const char* mWhat;
        std::vector<TestSupport::RtpPacket> mPackets;
    } kTable[] = {
        {"a fragment lost",
         {PacketWith(kStart + Bytes{1}).Seq(10), PacketWith(kMiddle + Bytes{2}).Seq(11),
          PacketWith(kLast + Bytes{3}).Seq(13)}},
        {"the end lost", {PacketWith(kStart + Bytes{1}).Seq(10), PacketWith(kMiddle + Bytes{2}).Seq(11)}},
        {"the start lost", {PacketWith(kMiddle + Bytes{1}).Seq(10), PacketWith(kLast + Bytes{2}).Seq(11)}},
        {"out of order", {PacketWith(kStart + Bytes{1}).Seq(10), PacketWith(kLast + Bytes{3}).Seq(9)}},
        {"one number twice", {PacketWith(kStart + Bytes{1}).Seq(10), PacketWith(kLast + Bytes{3}).Seq(10)}},
        {"a header without its second byte", {PacketWith({0x7C}).Seq(10)}},
    };
    for (const auto& lRow : kTable) {
        Chain lChain("H264");
        for (const TestSupport::RtpPacket& lPacket : lRow.mPackets) {
            EXPECT_TRUE(lChain.Push(lPacket));
        }
        lChain.Link().Param("EndOfStream", "Bye");
        EXPECT_THAT(lChain.Samples(), IsEmpty()) << lRow.mWhat;
    }
}

TEST_F(H264Test, FragmentsBeforeAStartAreSkipped) {
    mChain.Push(PacketWith({0x3C, 0x05, 1}).Seq(10));  // NRI 1
    mChain.Push(PacketWith({0x3C, 0x45, 2}).Seq(11));
    mChain.Push(PacketWith(kStart + Bytes{3}).Seq(20));
    mChain.Push(PacketWith(kLast + Bytes{4}).Seq(21).Marker());
    // F and NRI are those of the packet at which the search began.
    EXPECT_THAT(mChain.Samples(), ElementsAre(Unit({0x25, 3, 4})));
}

TEST_F(H264Test, TheSearchForAStartEndsAtAnyOtherType) {
    mChain.Push(PacketWith(kMiddle + Bytes{1}).Seq(10));
    mChain.Push(PacketWith({0x41, 0x85, 2}).Seq(11));  // would be a start, were it a fragment
    mChain.Push(PacketWith(kStart + Bytes{3}).Seq(12));
    mChain.Push(PacketWith(kLast + Bytes{4}).Seq(13).Marker());
    EXPECT_THAT(mChain.Samples(), ElementsAre(Unit({0x41, 0x85, 2}) + Unit({0x65, 3, 4})));
}

TEST_F(H264Test, ANewStartEndsAnUnfinishedUnit) {
    mChain.Push(PacketWith(kStart + Bytes{1}).Seq(10));
    mChain.Push(PacketWith({0x3C, 0x81, 2}).Seq(11));
    mChain.Push(PacketWith({0x3C, 0x41, 3}).Seq(12).Marker());
    EXPECT_THAT(mChain.Samples(), ElementsAre(Unit({0x21, 2, 3})));
}

TEST_F(H264Test, AfterAGapTheWalkGoesOnAtTheNextPacketWhateverItIs) {
    mChain.Push(PacketWith(kStart + Bytes{1}).Seq(10));
    mChain.Push(PacketWith(Bytes{0x78} + Aggregated({0x41, 2})).Seq(12));
    mChain.Push(PacketWith(kStart + Bytes{3}).Seq(13));
    mChain.Push(PacketWith(kLast).Seq(14).Marker());
    EXPECT_THAT(mChain.Samples(), ElementsAre(Unit({0x41, 2}) + Unit({0x65, 3})));
}

TEST_F(H264Test, AContinuationIsKnownByItsNumberNotByItsType) {
    mChain.Push(PacketWith(kStart + Bytes{1}).Seq(10));
    mChain.Push(PacketWith({0x41, 0x00, 2}).Seq(11));           // a single unit by its type
    mChain.Push(PacketWith({0x78, 0x40, 3}).Seq(12).Marker());  // its second byte has the E bit
    EXPECT_THAT(mChain.Samples(), ElementsAre(Unit({0x65, 1, 2, 3})));
}

TEST_F(H264Test, ASecondByteWithItsTopBitIsAStartOfWhateverType) {
    mChain.Push(PacketWith(kStart + Bytes{1}).Seq(10));
    mChain.Push(PacketWith({0x41, 0x80, 2}).Seq(11).Marker());
    EXPECT_THAT(mChain.Samples(), ElementsAre(Unit({0x41, 0x80, 2})));
}

TEST_F(H264Test, AFragmentTooShortForItsHeaderAddsNothing) {
    mChain.Push(PacketWith(kStart + Bytes{1}).Seq(10));
    mChain.Push(PacketWith({0x7C}).Seq(11));
    mChain.Push(PacketWith(kLast + Bytes{2}).Seq(12).Marker());
    EXPECT_THAT(mChain.Samples(), ElementsAre(Unit({0x65, 1, 2})));
}

TEST_F(H264Test, AFragmentOfItsHeaderAloneAddsNothing) {
    mChain.Push(PacketWith(kStart).Seq(10));
    mChain.Push(PacketWith(kMiddle).Seq(11));
    mChain.Push(PacketWith(kLast + Bytes{2}).Seq(12).Marker());
    EXPECT_THAT(mChain.Samples(), ElementsAre(Unit({0x65, 2})));
}

TEST_F(H264Test, APacketWithoutPayloadIsSkipped) {
    EXPECT_TRUE(mChain.Push(PacketWith({}).Seq(10)));
    EXPECT_TRUE(mChain.Push(PacketWith({0x41, 1}).Seq(11).Marker()));
    EXPECT_THAT(mChain.Samples(), ElementsAre(Unit({0x41, 1})));
}

TEST_F(H264Test, EndOfStreamDeliversWhatIsPendingAndGoesOn) {
    const PacketPtr lFirst = Made(PacketWith({0x65, 1}));
    const PacketPtr lSecond = Made(PacketWith({0x65, 2}));
    lFirst->SetPlayTime(Time(10));
    lSecond->SetPlayTime(Time(20));
    mChain.Link().Handle(lFirst, Time(99));
    mChain.Link().Handle(lSecond, Time(99));
    mChain.Link().Param("EndOfStream", "Bye");
    EXPECT_THAT(mChain.End().mEvents, ElementsAre("sample", "EndOfStream=Bye"));
    EXPECT_THAT(mChain.Samples(), ElementsAre(Unit({0x65, 1}) + Unit({0x65, 2})));
    EXPECT_EQ(Time(10), mChain.End().mSamples[0]->PlayTime());
    EXPECT_EQ(Time(20), mChain.End().mLatest[0]) << "the newest that is known: the last packet's";
}

TEST_F(H264Test, EndOfStreamWithNothingPendingOnlyGoesOn) {
    mChain.Link().Param("EndOfStream", "Timeout");
    EXPECT_THAT(mChain.End().mEvents, ElementsAre("EndOfStream=Timeout"));
}

TEST_F(H264Test, OtherNoticesGoOnAndDeliverNothing) {
    mChain.Push(PacketWith({0x65, 1}));
    mChain.Link().Param("endofstream", "Bye");
    EXPECT_THAT(mChain.End().mEvents, ElementsAre("endofstream=Bye"));
}

TEST_F(H264Test, FlushDropsWhatIsPendingAndGoesOn) {
    mChain.Push(PacketWith({0x65, 1}).Timestamp(100));
    mChain.Link().Flush();
    EXPECT_THAT(mChain.End().mEvents, ElementsAre("flush"));
    mChain.Push(PacketWith({0x41, 2}).Timestamp(200).Marker());
    EXPECT_THAT(mChain.Samples(), ElementsAre(Unit({0x41, 2})));
}

/// Packets of one timestamp that together occupy `aTotal` bytes of the depacketizer's limit.
void FillPending(Chain& aChain, UInt aTotal) {
    constexpr UInt kOverhead = static_cast<UInt>(sizeof(Packets::RTP)) + 12;
    constexpr UInt kPayload = 60000;
    unsigned short lSeq = 0;
    UInt lLeft = aTotal;
    for (; lLeft > 2 * (kPayload + kOverhead); lLeft -= kPayload + kOverhead) {
        aChain.Push(PacketWith(Bytes(kPayload, 0x41)).Seq(lSeq++));
    }
    const UInt lHalf = lLeft / 2;
    aChain.Push(PacketWith(Bytes(lHalf - kOverhead, 0x41)).Seq(lSeq++));
    aChain.Push(PacketWith(Bytes(lLeft - lHalf - kOverhead, 0x41)).Seq(lSeq++));
}

TEST_F(H264Test, AnAccessUnitOfTheLargestSizeIsDelivered) {
    FillPending(mChain, kLimit);
    mChain.Link().Param("EndOfStream", "Bye");
    ASSERT_EQ(1U, mChain.Delivered());
    EXPECT_GT(mChain.Samples()[0].size(), kLimit - kLimit / 100);
}

TEST_F(H264Test, AnAccessUnitBeyondTheLimitIsDroppedWhole) {
    FillPending(mChain, kLimit + 1);
    EXPECT_TRUE(mChain.Push(PacketWith({0x41, 1})));
    EXPECT_TRUE(mChain.Push(PacketWith({0x41, 2}).Marker()));
    EXPECT_EQ(0U, mChain.Delivered());
    mChain.Push(PacketWith({0x41, 3}).Marker());
    EXPECT_THAT(mChain.Samples(), ElementsAre(Unit({0x41, 3}))) << "the next one is whole again";
}

TEST_F(H264Test, ADroppedAccessUnitAlsoEndsWithTheNextTimestamp) {
    FillPending(mChain, kLimit + 1);
    mChain.Push(PacketWith({0x41, 1}).Timestamp(1).Marker());
    EXPECT_THAT(mChain.Samples(), ElementsAre(Unit({0x41, 1})));
}

TEST_F(H264Test, ManyTinyPacketsCountWithWhatTheyOccupy) {
    const UInt lCost = static_cast<UInt>(sizeof(Packets::RTP)) + 12 + 1;
    const PacketPtr lTiny = Made(PacketWith({0x41}));
    const UInt lMost = kLimit / lCost;
    for (UInt lIdx = 0; lIdx < lMost; ++lIdx) {
        mChain.Link().Handle(lTiny, Time(0));
    }
    EXPECT_EQ(lMost + 1, lTiny->GetRefCount());
    mChain.Link().Handle(lTiny, Time(0));
    EXPECT_EQ(2U, lTiny->GetRefCount()) << "only the latest is still held";
    mChain.Link().Handle(lTiny, Time(0));
    EXPECT_EQ(2U, lTiny->GetRefCount());
}

TEST_F(H264Test, FlushForgetsADroppedAccessUnit) {
    FillPending(mChain, kLimit + 1);
    mChain.Link().Flush();
    mChain.Push(PacketWith({0x41, 1}).Marker());
    EXPECT_THAT(mChain.Samples(), ElementsAre(Unit({0x41, 1})));
}

TEST(H264DeathTest, DeliveringWithoutANextLinkIsAMistake) {
    Properties lFormat;
    lFormat.Insert("Transport", "RTP/AVP");
    lFormat.Insert("Format", "H264");
    const ProcessorPtr lProcessor = Processors::RTP::H264::Create(lFormat);
    EXPECT_DEATH(lProcessor->Handle(Made(PacketWith({0x41}).Marker()), Time(0)), "0 != mPtr");
    EXPECT_DEATH(lProcessor->Flush(), "0 != mPtr");
    EXPECT_DEATH(lProcessor->Param("a", "b"), "0 != mPtr");
}

}  // namespace
}  // namespace Player::Testing
