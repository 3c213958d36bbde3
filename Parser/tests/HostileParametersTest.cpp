// Codec configurations that nobody should send: the values that come out, 0 for what can't be read.
#include <gtest/gtest.h>

#include "Parser/Base64.hpp"
#include "Parser/ParserMpeg4.hpp"
#include "Parser/SpsPpsParser.hpp"
#include "h264/Sets.hpp"

namespace Parser {

/// What "sprop-parameter-sets" says, and the picture's size.
struct SetsRow {
    const char* mName;
    std::string mSps;
    std::string mPps;
    UInt mWidth;
    UInt mHeight;
};

/// A set as text, and its bytes.
struct TextRow {
    const char* mName;
    std::string mText;
    std::string mBytes;
};

/// A visual configuration, and the picture's size.
struct VisualRow {
    const char* mName;
    std::vector<Byte> mBytes;
    UInt mWidth;
    UInt mHeight;
};

template <typename Row>
auto operator<<(std::ostream& aOut, const Row& aRow) -> decltype(aOut << aRow.mName) {
    return aOut << aRow.mName;
}

namespace {

using Test::PlainChroma;
using Test::PlainOrder;
using Test::PlainPps;
using Test::PlainSps;
using Test::PpsHead;
using Test::SpsHead;
using Test::SpsTail;
using TestSupport::BitWriter;

constexpr Byte kSpsHeader = 0x67;
constexpr Byte kPpsHeader = 0x68;

std::string Sps(const BitWriter& aBits) {
    return aBits.Nal(kSpsHeader);
}
std::string Pps(const BitWriter& aBits) {
    return aBits.Nal(kPpsHeader);
}

const std::string kSps = Sps(PlainSps());
const std::string kPps = Pps(PlainPps());

/// A code with so many zeros in front.
BitWriter Overlong(UInt aZeros) {
    BitWriter lBits;
    for (UInt i = 0; i < aZeros; ++i) {
        lBits.u(1, 0);
    }
    return lBits.u(1, 1).u(32, 0xFFFFFFFF).u(32, 0xFFFFFFFF);
}

/// A set whose identifier is that code.
BitWriter WithIdentifier(const BitWriter& aCode) {
    return BitWriter().u(8, 66).u(8, 0).u(8, 30).Append(aCode);
}

const SetsRow kSets[] = {
    {"AProperPair", kSps, kPps, 176, 144},
    {"Nothing", "", "", 0, 0},
    {"NoSequenceSet", "", kPps, 0, 0},
    {"NoPictureSet", kSps, "", 0, 0},
    {"HeadersAlone", "\x67", "\x68", 0, 0},
    {"TheWrongWayRound", kPps, kSps, 0, 0},
    {"ZerosOnly", std::string(1000, '\0'), kPps, 0, 0},
    // Every code is 0, and that can be.
    {"OnesOnly", std::string(1000, '\xFF'), kPps, 16, 16},
    {"ASetOfAMegabyte", kSps + std::string(1 << 20, '\x55'), kPps, 176, 144},
    {"ACodeOf31Zeros", Sps(WithIdentifier(Overlong(31))), kPps, 0, 0},
    {"ACodeOf32Zeros", Sps(WithIdentifier(Overlong(32))), kPps, 0, 0},
    {"ACodeOf40Zeros", Sps(WithIdentifier(Overlong(40))), kPps, 0, 0},
    {"ACodeOf10000Zeros", Sps(WithIdentifier(Overlong(10000))), kPps, 0, 0},
    {"ACodeThatIsCut", Sps(BitWriter().u(8, 66).u(8, 0).u(8, 30).u(20, 0)), kPps, 0, 0},
    {"AnIdentifierOf32", Sps(SpsHead(66, 30, 32).Append(PlainOrder()).Append(SpsTail(10, 8))), kPps, 0, 0},
    {"AFrameCycleOf256", Sps(SpsHead(66).ue(0).ue(1).u(1, 0).se(0).se(0).ue(256).Append(SpsTail(10, 8))), kPps, 0, 0},
    {"AFrameCycleOf4294967294", Sps(SpsHead(66).ue(0).ue(1).u(1, 0).se(0).se(0).ue(0xFFFFFFFE).Append(SpsTail(10, 8))),
     kPps, 0, 0},
    {"SidesThatWrap", Sps(SpsHead(66).Append(PlainOrder()).Append(SpsTail(0xFFFFFFFE, 0x0FFFFFFF))), kPps, 0xFFFFFFF0,
     0},
    {"SliceGroupsWithoutNumber", kSps, Pps(PpsHead().ue(0xFFFFFFFE)), 0, 0},
    {"SliceGroupsOfMoreThanEight", kSps, Pps(PpsHead().ue(8)), 0, 0},
    {"AMapOfAllUnits", kSps, Pps(PpsHead().ue(1).ue(6).ue(0xFFFFFFFE)), 0, 0},
    {"AStartCodeWithinTheSet", kSps.substr(0, 3) + std::string("\0\0\1", 3) + kSps.substr(3), kPps, 0, 0},
    {"EmulationPreventionOfNothing", kSps.substr(0, 3) + std::string("\0\0\3\4", 4) + kSps.substr(3), kPps, 0, 0},
    {"AHighProfileWithoutItsChroma", Sps(SpsHead(100)), kPps, 0, 0},
    {"AHighProfile", Sps(SpsHead(100).Append(PlainChroma()).Append(PlainOrder()).Append(SpsTail(10, 8))), kPps, 176,
     144},
};

class HostileSetsTest : public testing::TestWithParam<SetsRow> {};

TEST_P(HostileSetsTest, GiveASizeOrNone) {
    const SetsRow& lRow = GetParam();
    const SpsPpsParser lParser(lRow.mSps, lRow.mPps);
    EXPECT_EQ(lRow.mWidth, lParser.GetWidth());
    EXPECT_EQ(lRow.mHeight, lParser.GetHeight());
    if (0 == lRow.mWidth) {
        EXPECT_EQ(0U, lParser.GetProfileIndication());
        EXPECT_EQ(0U, lParser.GetLevelIndication());
    }
}

const auto kNameOfRow = [](const auto& aInfo) { return std::string(aInfo.param.mName); };

INSTANTIATE_TEST_SUITE_P(Rows, HostileSetsTest, testing::ValuesIn(kSets), kNameOfRow);

// ---------------------------------------------------------------------------- as text

const TextRow kTexts[] = {
    {"Nothing", "", ""},
    {"OneCharacter", "Z", ""},
    {"PaddingAlone", "====", ""},
    {"PaddingFirst", "=Z0I=", ""},
    {"ACommaAlone", ",", ""},
    {"ACommaFirst", ",aOvj", ""},
    {"ABlankFirst", " Z0IA", ""},
    {"AForeignCharacter", "Z0!A", "\x67"},
    {"ANul", std::string("Z0IA\0Z0IA", 9), std::string("\x67\x42\0", 3)},
    {"BinaryNoise", "\xFF\xFE\x80\x90", ""},
    {"TheOtherAlphabet", "Z0I-_", "\x67\x42"},
    {"ALineFolded", "Z0IA\r\nZ0IA", std::string("\x67\x42\0", 3)},
    {"AMegabyte", std::string(1 << 20, 'A'), std::string((1 << 20) / 4 * 3, '\0')},
};

class HostileTextTest : public testing::TestWithParam<TextRow> {};

TEST_P(HostileTextTest, GivesTheBytesBeforeTheFirstForeignCharacter) {
    EXPECT_EQ(GetParam().mBytes, Base64Decode(GetParam().mText));
    // Whatever it is, the parser takes it.
    const SpsPpsParser lParser(Base64Decode(GetParam().mText), kPps);
    EXPECT_EQ(0U, lParser.GetWidth());
}

INSTANTIATE_TEST_SUITE_P(Rows, HostileTextTest, testing::ValuesIn(kTexts), kNameOfRow);

// ---------------------------------------------------------------------------- visual configurations

/// A layer up to its shape, which is rectangular, and its clock.
BitWriter Layer(UInt aResolution, bool aFixedRate) {
    return BitWriter()
        .u(24, 1)
        .u(8, 0x20)
        .u(1, 0)
        .u(8, 1)
        .u(1, 0)
        .u(4, 1)
        .u(1, 0)
        .u(2, 0)
        .u(1, 1)
        .u(16, aResolution)
        .u(1, 1)
        .u(1, aFixedRate ? 1 : 0);
}

BitWriter Sides(UInt aWidth, UInt aHeight) {
    return BitWriter().u(1, 1).u(13, aWidth).u(1, 1).u(13, aHeight).u(1, 1);
}

std::vector<Byte> StartCodes(unsigned aCount) {
    std::vector<Byte> lBytes;
    for (unsigned i = 0; i < aCount; ++i) {
        lBytes.insert(lBytes.end(), {0, 0, 1, static_cast<Byte>(i)});
    }
    return lBytes;
}

const VisualRow kVisuals[] = {
    {"AProperLayer", Layer(25, false).Append(Sides(176, 144)).All(), 176, 144},
    {"Nothing", {}, 0, 0},
    {"HalfAStartCode", {0, 0, 1}, 0, 0},
    {"AStartCodeAlone", {0, 0, 1, 0x20}, 0, 0},
    {"ZerosOnly", std::vector<Byte>(10000, 0), 0, 0},
    {"OnesOnly", std::vector<Byte>(10000, 0xFF), 0, 0},
    {"OnesBehindALayersCode",
     [] {
         std::vector<Byte> lBytes(100, 0xFF);
         lBytes[0] = lBytes[1] = 0;
         lBytes[2] = 1;
         lBytes[3] = 0x20;
         return lBytes;
     }(),
     0, 0},
    {"StartCodesOfUserDataOnly", std::vector<Byte>{0, 0, 1, 0xB2, 0, 0, 1, 0xB2, 0, 0, 1, 0xB2}, 0, 0},
    {"AClockOf0WithAFixedRate", Layer(0, true).u(32, 1).Append(Sides(176, 144)).All(), 176, 144},
    {"AClockOf65535WithAFixedRate", Layer(65535, true).u(16, 1).Append(Sides(176, 144)).All(), 176, 144},
    {"SidesOf0", Layer(25, false).Append(Sides(0, 0)).All(), 0, 0},
    {"SidesOf13Bits", Layer(25, false).Append(Sides(8191, 8191)).All(), 8191, 8191},
    {"ALayerThatEndsAtItsClock", Layer(25, false).All(), 0, 0},
    {"ALayerThatEndsWithinItsSides", Layer(25, false).u(1, 1).u(7, 5).All(), 0, 0},
};

class HostileVisualTest : public testing::TestWithParam<VisualRow> {};

TEST_P(HostileVisualTest, GivesASizeOrNone) {
    const std::vector<Byte> lBytes(GetParam().mBytes.begin(), GetParam().mBytes.end());
    ParserMpeg4 lParser(lBytes.data(), static_cast<UInt>(lBytes.size()));
    lParser.Parse();
    EXPECT_EQ(GetParam().mWidth, lParser.GetVOLWidth());
    EXPECT_EQ(GetParam().mHeight, lParser.GetVOLHeight());
}

INSTANTIATE_TEST_SUITE_P(Rows, HostileVisualTest, testing::ValuesIn(kVisuals), kNameOfRow);

// Nothing is known of what each code begins; the scan ends.
TEST(HostileVisualScanTest, EveryStartCodeIsSteppedOver) {
    const std::vector<Byte> lBytes = StartCodes(256 * 64);
    ParserMpeg4 lParser(lBytes.data(), static_cast<UInt>(lBytes.size()));
    lParser.Parse();
    EXPECT_LE(lParser.GetVOLWidth(), 8191U);
    EXPECT_LE(lParser.GetVOLHeight(), 8191U);
}

}  // namespace
}  // namespace Parser
