#include "Processors/RTP/MPEG4Generic.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Processors/RTP/AUHeaders.hpp"

namespace Player::Testing {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

using Sample = Packets::MPEG4GenericSample;

constexpr const char* kAAC = "mode=AAC-hbr;sizelength=13;indexlength=3;indexdeltalength=3;config=1210";
constexpr UInt kLimit = Processors::RTP::MPEG4Generic::kMaxPendingBytes;

/// Headers of a stream that is described as `kAAC`.
AUHeaders AAC(const std::vector<UInt>& aSizes) {
    AUHeaders lHeaders;
    for (const UInt lSize : aSizes) {
        lHeaders.Put(13, lSize).Put(3, 0);
    }
    return lHeaders;
}

class MPEG4GenericTest : public testing::Test {
protected:
    static Chain Track(const char* aFmtParams) { return Chain("mpeg4-generic", aFmtParams); }

    Chain mChain{"mpeg4-generic", kAAC};
};

TEST_F(MPEG4GenericTest, AnAUThatFillsThePacketIsComplete) {
    const Bytes lPayload = {
        0x00, 0x10,              // 16 bits of AU headers
        0x00, 0x25,              // size 4, index 5
        0xDE, 0xAD, 0xBE, 0xEF,  // the AU
    };
    EXPECT_TRUE(mChain.Push(PacketWith(lPayload).Timestamp(1024).Marker(), Time(2048)));
    EXPECT_THAT(mChain.Samples(), ElementsAre(Bytes{0xDE, 0xAD, 0xBE, 0xEF}));
    ASSERT_NE(nullptr, mChain.Sample<Sample>(0));
    EXPECT_EQ(5U, mChain.Sample<Sample>(0)->AUIndex());
    EXPECT_FALSE(mChain.Sample<Sample>(0)->IsRandomAccessPoint());
    EXPECT_EQ(Time(1024), mChain.End().mSamples[0]->PlayTime());
    EXPECT_EQ(Time(2048), mChain.End().mLatest[0]);
}

TEST_F(MPEG4GenericTest, SeveralAUsFollowEachOther) {
    mChain.Push(PacketWith(AAC({3, 5}).Payload(Counted(8))).Timestamp(1024).Marker());
    EXPECT_THAT(mChain.Samples(), ElementsAre(Counted(3), Counted(5, 3)));
    EXPECT_EQ(Time(1024), mChain.End().mSamples[0]->PlayTime());
    EXPECT_EQ(Time(1024), mChain.End().mSamples[1]->PlayTime());
}

TEST_F(MPEG4GenericTest, BytesThatNoHeaderNamesAreLeft) {
    mChain.Push(PacketWith(AAC({3}).Payload(Counted(8))).Marker());
    EXPECT_THAT(mChain.Samples(), ElementsAre(Counted(3)));
}

TEST_F(MPEG4GenericTest, IndicesCountOnByDeltaPlusOneModuloTheirWidth) {
    const struct {
        const char* mFmtParams;
        UInt mWidth, mDeltaWidth;
        std::vector<UInt> mFields;  // first index, then deltas
        std::vector<UInt> mIndices;
    } kTable[] = {
        {"sizelength=8;indexlength=3;indexdeltalength=3", 3, 3, {6, 0, 0, 2}, {6, 7, 0, 3}},
        {"sizelength=8;indexlength=3;indexdeltalength=5", 3, 5, {1, 31}, {1, 1}},
        {"sizelength=8;indexlength=1;indexdeltalength=0", 1, 0, {1, 0, 0}, {1, 0, 1}},
        {"sizelength=8;indexlength=31;indexdeltalength=8", 31, 8, {0x7FFFFFFF, 0}, {0x7FFFFFFF, 0}},
        {"sizelength=8;indexlength=32;indexdeltalength=8", 32, 8, {0xFFFFFFFE, 0, 1}, {0xFFFFFFFE, 0xFFFFFFFF, 1}},
        {"sizelength=8;indexlength=32;indexdeltalength=32", 32, 32, {5, 0xFFFFFFFF}, {5, 5}},
        // Without a width for the index the deltas have none either.
        {"sizelength=8;indexdeltalength=3", 0, 0, {0, 0}, {0, 0}},
    };
    for (const auto& lRow : kTable) {
        Chain lChain = Track(lRow.mFmtParams);
        AUHeaders lHeaders;
        for (std::size_t lIdx = 0; lIdx < lRow.mFields.size(); ++lIdx) {
            lHeaders.Put(8, 1).Put(0 == lIdx ? lRow.mWidth : lRow.mDeltaWidth, lRow.mFields[lIdx]);
        }
        lChain.Push(PacketWith(lHeaders.Payload(Counted(10))).Marker());
        ASSERT_EQ(lRow.mIndices.size(), lChain.Delivered()) << lRow.mFmtParams;
        for (std::size_t lIdx = 0; lIdx < lRow.mIndices.size(); ++lIdx) {
            EXPECT_EQ(lRow.mIndices[lIdx], lChain.Sample<Sample>(lIdx)->AUIndex()) << lRow.mFmtParams;
        }
    }
}

TEST_F(MPEG4GenericTest, EveryPacketBeginsWithAnIndexOfItsOwn) {
    mChain.Push(PacketWith(AUHeaders().Put(13, 2).Put(3, 6).Payload(Counted(2))).Marker());
    mChain.Push(PacketWith(AUHeaders().Put(13, 2).Put(3, 1).Payload(Counted(2))).Marker());
    EXPECT_EQ(6U, mChain.Sample<Sample>(0)->AUIndex());
    EXPECT_EQ(1U, mChain.Sample<Sample>(1)->AUIndex());
}

TEST_F(MPEG4GenericTest, AllOptionalFieldsAreSteppedOver) {
    Chain lChain = Track(
        "sizeLength=8; indexLength=2; indexDeltaLength=2; CTSDeltaLength=16; DTSDeltaLength=40; "
        "randomAccessIndication=1; streamStateIndication=9");
    AUHeaders lHeaders;
    // size, index, CTS flag and delta, DTS flag and delta, random access, stream state
    lHeaders.Put(8, 2).Put(2, 1).Put(1, 1).Put(16, 0xFFFF).Put(1, 1).Put(40, ~0ULL).Put(1, 0).Put(9, 0x1FF);
    lHeaders.Put(8, 3).Put(2, 0).Put(1, 0).Put(1, 0).Put(1, 1).Put(9, 0);
    lHeaders.Put(8, 1).Put(2, 0).Put(1, 0).Put(1, 1).Put(40, 0).Put(1, 0).Put(9, 0x155);
    lChain.Push(PacketWith(lHeaders.Payload(Counted(6))).Timestamp(77).Marker());
    ASSERT_THAT(lChain.Samples(), ElementsAre(Counted(2), Counted(3, 2), Counted(1, 5)));
    const bool kIsRandomAccess[] = {false, true, false};
    for (UInt lIdx = 0; lIdx < 3; ++lIdx) {
        EXPECT_EQ(kIsRandomAccess[lIdx], lChain.Sample<Sample>(lIdx)->IsRandomAccessPoint());
        EXPECT_EQ(lIdx + 1, lChain.Sample<Sample>(lIdx)->AUIndex());
        EXPECT_EQ(Time(77), lChain.End().mSamples[lIdx]->PlayTime()) << "deltas move no play time";
    }
}

TEST_F(MPEG4GenericTest, ParametersAreReadLikeThis) {
    const struct {
        const char* mWhat;
        const char* mFmtParams;
        UInt mWidth;  // of the size
    } kTable[] = {
        {"any case of letters", "SIZELENGTH=12", 12},
        {"spaces trimmed", " \t sizeLength =\t12 ; mode = x", 12},
        {"the number in front", "sizelength=12bits", 12},
        {"empty", "sizelength=", 0},
        {"no number", "sizelength=twelve", 0},
        {"missing", "mode=x", 0},
        {"negative is no field", "sizelength=-4", 0},
        {"likewise beyond 31 bits", "sizelength=4294967292", 0},
        {"modulo 32 bits", "sizelength=4294967308", 12},
    };
    for (const auto& lRow : kTable) {
        Chain lChain = Track((std::string(lRow.mFmtParams) + ";indexlength=4").c_str());
        const AUHeaders lHeaders = AUHeaders().Put(lRow.mWidth, 2).Put(4, 9);
        lChain.Push(PacketWith(lHeaders.Payload(Counted(2))).Marker());
        EXPECT_THAT(lChain.Samples(), ElementsAre(Counted(2))) << lRow.mWhat;
        EXPECT_EQ(9U, lChain.Sample<Sample>(0)->AUIndex()) << lRow.mWhat;
    }
}

TEST_F(MPEG4GenericTest, AFragmentedAUIsJoinedAndDeliveredAtTheMarker) {
    EXPECT_TRUE(mChain.Push(PacketWith(AAC({20}).Payload(Counted(8))).Seq(1).Timestamp(5)));
    EXPECT_TRUE(mChain.Push(PacketWith(AAC({20}).Payload(Counted(8, 8))).Seq(2).Timestamp(6)));
    EXPECT_EQ(0U, mChain.Delivered());
    EXPECT_TRUE(mChain.Push(PacketWith(AAC({20}).Payload(Counted(4, 16))).Seq(3).Timestamp(7).Marker()));
    EXPECT_THAT(mChain.Samples(), ElementsAre(Counted(20)));
    EXPECT_EQ(Time(5), mChain.End().mSamples[0]->PlayTime()) << "the first fragment's";
}

TEST_F(MPEG4GenericTest, FragmentsAreJoinedInTheOrderOfArrival) {
    mChain.Push(PacketWith(AAC({20}).Payload(Counted(2, 30))).Seq(9));
    mChain.Push(PacketWith(AAC({20}).Payload(Counted(2, 10))).Seq(7).Marker());
    EXPECT_THAT(mChain.Samples(), ElementsAre(Counted(2, 30) + Counted(2, 10)));
}

TEST_F(MPEG4GenericTest, SizeZeroMeansAFragment) {
    mChain.Push(PacketWith(AAC({0}).Payload(Counted(3))));
    mChain.Push(PacketWith(AAC({0}).Payload(Counted(3, 3))).Marker());
    EXPECT_THAT(mChain.Samples(), ElementsAre(Counted(6)));
}

TEST_F(MPEG4GenericTest, AFragmentJoinsWhateverSampleIsLast) {
    mChain.Push(PacketWith(AAC({2, 2}).Payload(Counted(4))));
    mChain.Push(PacketWith(AAC({9}).Payload(Counted(2, 4))).Marker());
    EXPECT_THAT(mChain.Samples(), ElementsAre(Counted(2), Counted(4, 2)));
}

TEST_F(MPEG4GenericTest, SamplesWaitForTheMarker) {
    mChain.Push(PacketWith(AAC({2}).Payload(Counted(2))).Timestamp(1));
    mChain.Push(PacketWith(AAC({2, 1}).Payload(Counted(3, 2))).Timestamp(2));
    EXPECT_EQ(0U, mChain.Delivered());
    mChain.Push(PacketWith({0x00, 0x00}).Timestamp(3).Marker(), Time(55));  // no header, but the marker
    EXPECT_THAT(mChain.Samples(), ElementsAre(Counted(2), Counted(2, 2), Counted(1, 4)));
    for (const Time& lLatest : mChain.End().mLatest) {
        EXPECT_EQ(Time(55), lLatest);
    }
    EXPECT_EQ(Time(2), mChain.End().mSamples[1]->PlayTime());
    mChain.Push(PacketWith({0x00, 0x00}).Marker());
    EXPECT_EQ(3U, mChain.Delivered()) << "delivered once";
}

TEST_F(MPEG4GenericTest, NoHeadersGiveNoAU) {
    EXPECT_TRUE(mChain.Push(PacketWith(AUHeaders().Payload(Counted(9))).Marker()));
    EXPECT_THAT(mChain.Samples(), IsEmpty());
}

TEST_F(MPEG4GenericTest, ARefusalIsAnsweredButAllAreHandedOn) {
    const TestSupport::RtpPacket lThree = PacketWith(AAC({1, 1, 1}).Payload(Counted(4))).Marker();
    mChain.End().mAnswers = {false, true, true};
    EXPECT_FALSE(mChain.Push(lThree));
    EXPECT_EQ(3U, mChain.Delivered());
    mChain.End().mAnswers = {true, true, false};
    EXPECT_FALSE(mChain.Push(lThree));
    EXPECT_TRUE(mChain.Push(lThree));
    mChain.End().mAnswers = {false};
    EXPECT_TRUE(mChain.Push(PacketWith(AAC({1}).Payload(Counted(1))))) << "nothing handed on";
}

TEST_F(MPEG4GenericTest, EndOfStreamGoesOnAndDeliversNothing) {
    mChain.Push(PacketWith(AAC({2}).Payload(Counted(2))));
    mChain.Link().Param("EndOfStream", "Bye");
    EXPECT_THAT(mChain.End().mEvents, ElementsAre("EndOfStream=Bye"));
    mChain.Push(PacketWith({0x00, 0x00}).Marker());
    EXPECT_EQ(1U, mChain.Delivered()) << "still gathered";
}

TEST_F(MPEG4GenericTest, FlushDropsWhatIsGathered) {
    mChain.Push(PacketWith(AAC({2}).Payload(Counted(2))));
    mChain.Link().Flush();
    mChain.Push(PacketWith({0x00, 0x00}).Marker());
    EXPECT_THAT(mChain.End().mEvents, ElementsAre("flush"));
}

TEST_F(MPEG4GenericTest, AHeaderSectionEndsInTheMiddleOfAByte) {
    Chain lChain = Track("sizelength=6");
    lChain.Push(PacketWith(AUHeaders().Put(6, 1).Put(6, 2).Payload(Counted(3))).Marker());
    EXPECT_THAT(lChain.Samples(), ElementsAre(Counted(1), Counted(2, 1)));
}

TEST_F(MPEG4GenericTest, AHeaderThatCrossesTheEndOfItsSectionStillCounts) {
    // 17 bits announced: the second header begins within the section, and its last byte is data already.
    mChain.Push(PacketWith(AAC({2, 3}).PayloadWithLength(17, Counted(5, 1))).Marker());
    EXPECT_THAT(mChain.Samples(), ElementsAre(Bytes{0x18, 1}, Bytes{2, 3, 4}));
}

TEST_F(MPEG4GenericTest, TheAuxiliarySizeIsReadBesideItsPlace) {
    const struct {
        const char* mWhat;
        const char* mFmtParams;
        Bytes mPayload;
        Bytes mSample;
    } kTable[] = {
        // The size stands, it is thought, 2 bytes into the payload: in the AU header. 9 bits are 2 bytes.
        {"header of 16 bits",
         "sizelength=16;auxiliarydatasizelength=8",
         {0x00, 0x10, 0x09, 0x00, 'a', 'b', 'c', 'd'},
         {'c', 'd'}},
        // 1 byte into the payload: the low byte of the length field. 8 bits are 1 byte.
        {"header of 8 bits",
         "sizelength=8;auxiliarydatasizelength=8",
         {0x00, 0x08, 0x03, 'a', 'b', 'c', 'd'},
         {'b', 'c', 'd'}},
        {"size 0", "sizelength=16;auxiliarydatasizelength=8", {0x00, 0x10, 0x00, 0x02, 'a', 'b'}, {'a', 'b'}},
        {"a narrow size", "sizelength=16;auxiliarydatasizelength=1", {0x00, 0x10, 0x80, 0x00, 'a', 'b'}, {'b'}},
        {"beyond the payload", "sizelength=16;auxiliarydatasizelength=16", {0x00, 0x10, 0xFF, 0xFF, 'a', 'b'}, {}},
        {"the largest there is",
         "sizelength=16;auxiliarydatasizelength=32",
         {0x00, 0x10, 0xFF, 0xFF, 0xFF, 0xFF, 'c'},
         {}},
    };
    for (const auto& lRow : kTable) {
        Chain lChain = Track(lRow.mFmtParams);
        lChain.Push(PacketWith(lRow.mPayload).Marker());
        EXPECT_THAT(lChain.Samples(), ElementsAre(lRow.mSample)) << lRow.mWhat;
    }
}

TEST_F(MPEG4GenericTest, WithoutAWidthThereIsNoAuxiliarySize) {
    Chain lChain = Track("sizelength=16;auxiliarydatasizelength=0");
    lChain.Push(PacketWith({0x00, 0x10, 0x09, 0x00, 'a'}).Marker());
    EXPECT_THAT(lChain.Samples(), ElementsAre(Bytes{'a'}));
}

TEST_F(MPEG4GenericTest, ASectionBeyondThePayloadIsCut) {
    for (const UInt lBits : {33U, 40U, 0x7FFFU, 0xFFF0U, 0xFFFFU}) {
        Chain lChain("mpeg4-generic", kAAC);
        lChain.Push(PacketWith(AAC({0, 0}).PayloadWithLength(lBits, {})).Marker());
        EXPECT_THAT(lChain.Samples(), ElementsAre(Bytes())) << lBits << ": a fragment of no bytes";
    }
}

TEST_F(MPEG4GenericTest, PayloadsWithoutAHeaderGiveNoAU) {
    for (const Bytes& lPayload : {Bytes{}, Bytes{0xFF}, Bytes{0xFF, 0xFF}, Bytes{0x00, 0x10}}) {
        EXPECT_TRUE(mChain.Push(PacketWith(lPayload).Marker()));
    }
    EXPECT_THAT(mChain.Samples(), IsEmpty());
}

TEST_F(MPEG4GenericTest, ASectionOf65520BitsAndMoreCountsAsEmpty) {
    const Bytes lSection(8191, 0x00);
    const struct {
        UInt mBits;
        std::size_t mSamples;
    } kTable[] = {{65519, 1}, {65520, 0}, {65528, 0}};
    for (const auto& lRow : kTable) {
        Chain lChain = Track("sizelength=65519");
        lChain.Push(PacketWith(AUHeaders().PayloadWithLength(lRow.mBits, lSection + Counted(3))).Marker());
        EXPECT_EQ(lRow.mSamples, lChain.Delivered()) << lRow.mBits;
    }
}

TEST_F(MPEG4GenericTest, HeadersWithoutFieldsEndAfterTheFirst) {
    Chain lChain = Track("mode=generic");
    lChain.Push(PacketWith({0x00, 0x10, 0x00, 0x00, 'a', 'b'}).Marker());
    EXPECT_THAT(lChain.Samples(), ElementsAre(Bytes{'a', 'b'}));
}

TEST_F(MPEG4GenericTest, AUsBeyondThePayloadAreCut) {
    const struct {
        std::vector<UInt> mSizes;
        std::vector<Bytes> mSamples;  // of 8 bytes
    } kTable[] = {
        {{5, 3}, {Counted(5), Counted(3, 5)}},
        {{5, 4}, {Counted(5), Counted(3, 5)}},
        {{5, 7}, {Counted(5), Counted(3, 5)}},
        {{7, 7, 7}, {Counted(7), Counted(1, 7)}},  // nothing is left for the third
    };
    for (const auto& lRow : kTable) {
        Chain lChain("mpeg4-generic", kAAC);
        lChain.Push(PacketWith(AAC(lRow.mSizes).Payload(Counted(8))).Marker());
        EXPECT_THAT(lChain.Samples(), ElementsAreArray(lRow.mSamples));
    }
}

TEST_F(MPEG4GenericTest, EverySizeIsJudgedByAllTheData) {
    // What the earlier AUs took does not count: 4 fills the packet, 5 is more than it has.
    mChain.Push(PacketWith(AAC({1, 4, 5}).Payload(Counted(4))).Marker());
    EXPECT_THAT(mChain.Samples(), ElementsAre(Counted(1), Counted(4) + Counted(4)));
}

TEST_F(MPEG4GenericTest, WidthsBeyond32BitsAreSteppedOverWhole) {
    Chain lChain = Track("sizelength=40;indexlength=48;indexdeltalength=48");
    AUHeaders lHeaders;
    lHeaders.Put(40, 0xFF00000002).Put(48, 0xFFFF00000007).Put(40, 3).Put(48, 0xABCD00000001);
    lChain.Push(PacketWith(lHeaders.Payload(Counted(5))).Marker());
    EXPECT_THAT(lChain.Samples(), ElementsAre(Counted(2), Counted(3, 2)));
    EXPECT_EQ(7U, lChain.Sample<Sample>(0)->AUIndex());
    EXPECT_EQ(9U, lChain.Sample<Sample>(1)->AUIndex());
}

TEST_F(MPEG4GenericTest, TheLargestWidthsReadNothingAndEnd) {
    Chain lChain = Track(
        "sizelength=2147483647;indexlength=2147483647;indexdeltalength=2147483647;ctsdeltalength=2147483647;"
        "dtsdeltalength=2147483647;streamstateindication=2147483647;auxiliarydatasizelength=2147483647");
    lChain.Push(PacketWith(AUHeaders().PayloadWithLength(32, Bytes(20, 0xFF))).Marker());
    EXPECT_THAT(lChain.Samples(), ElementsAre(Bytes(16, 0xFF)));
}

TEST_F(MPEG4GenericTest, BytesClaimedOverAndOverAreCopiedOnlySoOften) {
    Chain lChain = Track("sizelength=1");
    // 8000 headers of size 0: a fragment each, all of the same 1000 bytes.
    const Bytes lPayload = AUHeaders().PayloadWithLength(8000, Bytes(1000, 0x00) + Bytes(1000, 0xAA));
    lChain.Push(PacketWith(lPayload).Marker());
    ASSERT_EQ(1U, lChain.Delivered());
    EXPECT_EQ(16 * lPayload.size() / 1000 + 1, lChain.End().mSamples[0]->Size() / 1000);
}

/// Packets of one AU each, with no marker, that together occupy `aTotal` bytes of the limit.
void FillWithAUs(Chain& aChain, UInt aTotal) {
    constexpr UInt kSize = 8000;
    constexpr UInt kCost = kSize + static_cast<UInt>(sizeof(Sample));
    UInt lLeft = aTotal;
    for (; lLeft > 2 * kCost; lLeft -= kCost) {
        aChain.Push(PacketWith(AAC({kSize}).Payload(Bytes(kSize, 0x55))));
    }
    const UInt lHalf = lLeft / 2;
    for (const UInt lCost : {lHalf, lLeft - lHalf}) {
        const UInt lSize = lCost - static_cast<UInt>(sizeof(Sample));
        aChain.Push(PacketWith(AAC({lSize}).Payload(Bytes(lSize, 0x55))));
    }
}

TEST_F(MPEG4GenericTest, AsManyBytesAsTheLimitAreDelivered) {
    FillWithAUs(mChain, kLimit);
    mChain.Push(PacketWith({0x00, 0x00}).Marker());
    EXPECT_GT(mChain.Delivered(), kLimit / 8100);
}

TEST_F(MPEG4GenericTest, BeyondTheLimitAllUpToTheMarkerIsDropped) {
    FillWithAUs(mChain, kLimit + 1);
    mChain.Push(PacketWith(AAC({2}).Payload(Counted(2))));
    mChain.Push(PacketWith(AAC({9}).Payload(Counted(2))));
    EXPECT_TRUE(mChain.Push(PacketWith(AAC({2}).Payload(Counted(2))).Marker()));
    EXPECT_EQ(0U, mChain.Delivered());
    mChain.Push(PacketWith(AAC({2}).Payload(Counted(2))).Marker());
    EXPECT_THAT(mChain.Samples(), ElementsAre(Counted(2))) << "then it goes on";
}

TEST_F(MPEG4GenericTest, FragmentsCountTowardsTheLimit) {
    const TestSupport::RtpPacket lFragment = PacketWith(AAC({0}).Payload(Bytes(60000, 0x55)));
    for (UInt lIdx = 0; lIdx <= kLimit / 60000; ++lIdx) {
        mChain.Push(lFragment);
    }
    mChain.Push(PacketWith(AAC({0}).Payload(Counted(2))).Marker());
    EXPECT_EQ(0U, mChain.Delivered());
}

TEST_F(MPEG4GenericTest, FlushForgetsThatTheLimitWasPassed) {
    FillWithAUs(mChain, kLimit + 1);
    mChain.Link().Flush();
    mChain.Push(PacketWith(AAC({2}).Payload(Counted(2))).Marker());
    EXPECT_THAT(mChain.Samples(), ElementsAre(Counted(2)));
}

}  // namespace
}  // namespace Player::Testing
