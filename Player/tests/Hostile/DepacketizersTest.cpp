// Payloads, format by format: what comes out of them, and that the next proper packet does.
#include <gmock/gmock.h>

#include "Hostile/Row.hpp"
#include "Processors/RTP/AUHeaders.hpp"

namespace Player::Hostile {

using Testing::AUHeaders;
using Testing::Chain;
using Testing::Counted;
using Testing::PacketWith;
using TestSupport::Bytes;
using TestSupport::RtpPacket;
using TestSupport::operator+;

/// A format, and a packet of it that is right: one sample.
struct Format {
    const char* mName;
    const char* mParameters;
    Bytes mPayload;
    Bytes mSample;
};

struct PayloadRow {
    const char* mName;
    const Format& mFormat;
    std::vector<RtpPacket> mPackets;
    /// What comes out before the sample of the packet that is right.
    std::vector<Bytes> mSamples;
};

namespace {

const Format kH264 = {"H264", "", {0x65, 0x99}, {0, 0, 0, 2, 0x65, 0x99}};
const Format kLATM = {"MP4A-LATM", "", {2, 0x99, 0x98}, {0x99, 0x98}};
const Format kMP4V = {"MP4V-ES", "", {0, 0, 1, 0x99}, {0, 0, 1, 0x99}};
const Format kAMR = {"AMR", "", {0xF0, 0x44, 9, 8, 7, 6, 5}, {9, 8, 7, 6, 5}};
const Format kAAC = {
    "mpeg4-generic", "sizelength=13;indexlength=3;indexdeltalength=3", {0, 16, 0, 16, 0x99, 0x98}, {0x99, 0x98}};
// Too wide, negative and no numbers: fields that are not there, or that are stepped over to the end.
const Format kWide = {"mpeg4-generic",
                      "sizelength=-1;indexlength=99999999999;ctsdeltalength=2147483647;dtsdeltalength=x;"
                      "randomaccessindication=-5;streamstateindication=4294967295;auxiliarydatasizelength=0",
                      {0, 8, 0, 0x99},
                      {0x99}};
const Format kAuxiliary = {
    "mpeg4-generic", "sizelength=13;indexlength=3;auxiliarydatasizelength=32", {0, 16, 0, 16, 0, 0, 0x99}, {}};
const Format kVideo = {"enc-mpeg4-generic",
                       "mode=mpeg4-video;sizelength=16;isamcrypivlength=255;ismacrypkeyindicatorlength=255",
                       {0, 8, 0, 0x99},
                       {0x99}};

RtpPacket Of(const Bytes& aPayload) {
    return PacketWith(aPayload);
}

RtpPacket Marked(const Bytes& aPayload) {
    return PacketWith(aPayload).Marker();
}

/// A fragment of a NAL unit of type 5: 0x80 starts it, 0x40 ends it.
RtpPacket Fragment(unsigned short aSeq, Byte aFlags, const Bytes& aBytes) {
    return PacketWith(Bytes{0x7C, static_cast<Byte>(aFlags | 5)} + aBytes).Seq(aSeq);
}

Bytes NAL(const Bytes& aBytes) {
    const std::size_t lSize = aBytes.size();
    return Bytes{0, 0, static_cast<Byte>(lSize >> 8), static_cast<Byte>(lSize)} + aBytes;
}

std::vector<RtpPacket> Fragments(unsigned aCount, Byte aFlags) {
    std::vector<RtpPacket> lPackets;
    for (unsigned i = 0; i < aCount; ++i) {
        lPackets.push_back(Fragment(static_cast<unsigned short>(i), aFlags, {1}));
    }
    return lPackets;
}

const PayloadRow kPayloads[] = {
    // Single units and aggregates
    {"H264OfOneByte", kH264, {Marked({0x65})}, {NAL({0x65})}},
    {"H264OfEveryTypeThatIsNone",
     kH264,
     {Of({0}), Of({25, 1}), Of({26, 1}), Of({27, 1}), Of({29, 1}), Of({30, 1}), Marked({31, 1})},
     {}},
    {"AnAggregateWithoutAUnit", kH264, {Marked({0x78})}, {}},
    {"AnAggregateOfHalfASize", kH264, {Marked({0x78, 0})}, {}},
    {"AnAggregateOfASizeAlone", kH264, {Marked({0x78, 0, 1})}, {}},
    {"AnAggregateOfEmptyUnits", kH264, {Marked(Bytes{0x78} + Bytes(1000, 0))}, {}},
    {"AnAggregateOfSizesBeyondIt", kH264, {Marked(Bytes{0x78} + Bytes(1000, 0xFF))}, {}},
    {"AnAggregateThatGoesOnBehindABadSize",
     kH264,
     {Marked({0x78, 0xFF, 0xFF, 0, 1, 0x41, 0, 0, 0, 1, 0x42})},
     {NAL({0x41}) + NAL({0x42})}},
    {"AnAggregateOneByteTooShort", kH264, {Marked({0x78, 0, 1, 0x41, 0, 3, 0x42, 0})}, {NAL({0x41})}},
    {"AnAggregateOfAnAggregate", kH264, {Marked({0x78, 0, 4, 0x78, 0, 1, 0x41})}, {NAL({0x78, 0, 1, 0x41})}},

    // Fragments
    {"AFragmentWithoutItsHeader", kH264, {Marked({0x7C})}, {}},
    {"AFragmentOfItsHeaderAlone", kH264, {Marked({0x7C, 0x85})}, {}},
    {"AFragmentThatNeverStarts", kH264, Fragments(100, 0), {}},
    {"FragmentsThatAllStart", kH264, Fragments(100, 0x80), {}},
    {"FragmentsThatAllEnd", kH264, Fragments(100, 0x40), {}},
    {"FragmentsThatAllStartAndEnd", kH264, Fragments(2, 0xC0), {NAL({0x65, 1}) + NAL({0x65, 1})}},
    {"FragmentsWithoutAnEnd", kH264, {Fragment(1, 0x80, {1}), Fragment(2, 0, {2})}, {}},
    {"FragmentsOfWhichOneIsLost",
     kH264,
     {Fragment(1, 0x80, {1}), Fragment(3, 0x40, {3}), PacketWith({0x41, 4}).Seq(4).Marker()},
     {NAL({0x41, 4})}},
    {"FragmentsAcrossTheWrap",
     kH264,
     {Fragment(65535, 0x80, {1}), Fragment(0, 0x40, {2}).Marker()},
     {NAL({0x65, 1, 2})}},
    {"FragmentsOfTwoUnitsMixed",
     kH264,
     {Fragment(1, 0x80, {1}), Fragment(2, 0x80, {2}), Fragment(3, 0x40, {3}), Fragment(4, 0x40, {4}).Marker()},
     {NAL({0x65, 2, 3})}},
    {"FragmentsOfEveryOtherTimestamp",
     kH264,
     {Fragment(1, 0x80, {1}).Timestamp(1), Fragment(2, 0, {2}).Timestamp(2), Fragment(3, 0x40, {3}).Timestamp(3)},
     {}},

    // LATM
    {"LATMWithoutALength", kLATM, {Marked({})}, {}},
    {"LATMOfLengthsWithoutEnd", kLATM, {Marked(Bytes(1400, 0xFF))}, {}},
    {"LATMOfALengthThatIsRightInItsLow16Bits", kLATM, {Marked(Bytes(257, 0xFF) + Bytes{5} + Counted(10))}, {}},
    {"LATMOneByteTooShort", kLATM, {Marked({2, 0x11})}, {}},
    {"LATMBehindALengthOf0", kLATM, {Marked({1, 0x11, 0, 1, 0x22})}, {{0x11}}},
    {"LATMOf700Frames",
     kLATM,
     {Marked([] {
         Bytes lPayload;
         for (int i = 0; i < 700; ++i) {
             lPayload.insert(lPayload.end(), {1, 0x11});
         }
         return lPayload;
     }())},
     std::vector<Bytes>(700, {0x11})},

    // MPEG-4 visual
    {"VideoThatNeverStarts", kMP4V, {Of({0, 0, 2}), Of({0, 0}), Marked({1})}, {}},
    {"VideoThatNeverEnds",
     kMP4V,
     {PacketWith({0, 0, 1, 1}).Seq(1), PacketWith({2}).Seq(2), PacketWith({3}).Seq(3)},
     {}},
    {"VideoOfWhichOneIsLost", kMP4V, {PacketWith({0, 0, 1, 1}).Seq(1), PacketWith({3}).Seq(3).Marker()}, {}},
    {"VideoOfOnePacketOverAndOver",
     kMP4V,
     {PacketWith({0, 0, 1, 1}).Seq(1), PacketWith({2}).Seq(2), PacketWith({2}).Seq(2), PacketWith({3}).Seq(3).Marker()},
     {{0, 0, 1, 1, 2, 3}}},

    // AMR
    {"AMRWithoutATable", kAMR, {Marked({0xF0})}, {}},
    {"AMROfATableWithoutEnd", kAMR, {Marked(Bytes{0xF0} + Bytes(100, 0xC4))}, std::vector<Bytes>(100, Bytes(5, 0))},
    {"AMROfFramesThatAreNotThere", kAMR, {Marked({0xF0, 0xBC, 0x3C, 1})}, {Bytes{1} + Bytes(30, 0), Bytes(31, 0)}},
    {"AMROfTypesWithoutFrames", kAMR, {Marked({0xF0, 0xE4, 0xEC, 0xF4, 0x7C, 1, 2, 3})}, {}},

    // mpeg4-generic
    {"GenericWithoutALength", kAAC, {Of({}), Of({0})}, {}},
    {"GenericOfHeadersOf65535Bits",
     kAAC,
     {Of({0xFF, 0xFF, 0, 16, 1, 2})},
     // The headers take all there is, and no byte is left for the units that they announce.
     {{}}},
    {"GenericOfHeadersOf65535BitsAlone", kAAC, {Of({0xFF, 0xFF})}, {}},
    {"GenericWithoutHeaders", kAAC, {Of({0, 0, 1, 2, 3})}, {}},
    {"GenericOfHeadersOf1Bit", kAAC, {Of({0, 1, 0, 16, 0x11, 0x12})}, {{16, 0x11}}},
    {"GenericOfEmptyUnits", kAAC, {Marked({0, 16, 0, 0})}, {{}}},
    {"GenericOfUnitsBeyondTheData", kAAC, {Marked(AUHeaders().Put(13, 8191).Put(3, 0).Payload({1, 2}))}, {{1, 2}}},
    {"GenericOfMoreUnitsThanData",
     kAAC,
     {Marked(AUHeaders().Put(13, 2).Put(3, 0).Put(13, 2).Put(3, 0).Put(13, 2).Put(3, 0).Payload({1, 2, 3}))},
     {{1, 2}, {3}}},
    {"GenericOfWidthsThatCannotBe", kWide, {Marked(Bytes{0xFF, 0x00} + Bytes(100, 0xFF))}, {Bytes{}}},
    {"GenericOfAuxiliaryDataBeyondThePayload", kAuxiliary, {Marked({0, 16, 0xFF, 0xFF, 0xFF, 0xFF, 1, 2, 3})}, {{}}},
    {"EncryptedOfFieldsBeyondThePayload", kVideo, {Marked({0, 16, 1, 2, 3, 4})}, {{3, 4}}},
};

class HostilePayloadTest : public testing::TestWithParam<PayloadRow> {};

TEST_P(HostilePayloadTest, GivesWhatIsWhole) {
    const PayloadRow& lRow = GetParam();
    Chain lChain(lRow.mFormat.mName, lRow.mFormat.mParameters);
    for (const RtpPacket& lPacket : lRow.mPackets) {
        lChain.Push(lPacket);
    }
    lChain.Push(PacketWith(lRow.mFormat.mPayload).Seq(1000).Timestamp(99000).Marker());
    std::vector<Bytes> lExpected = lRow.mSamples;
    lExpected.push_back(lRow.mFormat.mSample);
    EXPECT_THAT(lChain.Samples(), testing::ElementsAreArray(lExpected));
}

INSTANTIATE_TEST_SUITE_P(Rows, HostilePayloadTest, testing::ValuesIn(kPayloads), NameOfRow());

}  // namespace
}  // namespace Player::Hostile
