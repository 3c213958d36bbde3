#include "Parser/SpsPpsParser.hpp"

#include <gtest/gtest.h>

#include "Parser/Base64.hpp"
#include "Sets.hpp"
#include "support/Bytes.hpp"

namespace Parser {
namespace {

using namespace Test;
using TestSupport::AsText;
using TestSupport::FromHex;

constexpr Byte kSps = 0x67;
constexpr Byte kPps = 0x68;

struct Values {
    explicit Values(const SpsPpsParser& aParser)
        : Values(aParser.GetWidth(), aParser.GetHeight(), aParser.GetProfileIndication(),
                 aParser.GetLevelIndication()) {}
    Values(const std::string& aSps, const std::string& aPps) : Values(SpsPpsParser(aSps, aPps)) {}
    Values(UInt aWidth, UInt aHeight, UInt aProfile, UInt aLevel)
        : mWidth(aWidth), mHeight(aHeight), mProfile(aProfile), mLevel(aLevel) {}

    bool operator==(const Values& aOther) const {
        return mWidth == aOther.mWidth && mHeight == aOther.mHeight && mProfile == aOther.mProfile &&
               mLevel == aOther.mLevel;
    }

    UInt mWidth, mHeight, mProfile, mLevel;
};

std::ostream& operator<<(std::ostream& aStream, const Values& aValues) {
    return aStream << aValues.mWidth << "x" << aValues.mHeight << ", profile " << aValues.mProfile << ", level "
                   << aValues.mLevel;
}

const Values kNothing(0, 0, 0, 0);

TEST(SpsPpsParser, CountsMacroblocks) {
    EXPECT_EQ(Values(176, 144, 66, 30), Values(PlainSps().Nal(kSps), PlainPps().Nal(kPps)));
}

TEST(SpsPpsParser, TakesWhatADescriptionCarries) {
    EXPECT_EQ(Values(1920, 1088, 100, 42),
              Values(Base64Decode("Z2QAKqzZQHgCJ+XARAAAAwAEAAADAZA8YMZY"), Base64Decode("aOvjyyLA")));
}

TEST(SpsPpsParser, AppliesNoCropping) {
    const std::string lSps = SpsHead(66)
                                 .Append(PlainOrder())
                                 .ue(1)
                                 .u(1, 0)
                                 .ue(119)
                                 .ue(67)
                                 .u(1, 1)
                                 .u(1, 1)
                                 .u(1, 1)  // frame_cropping_flag
                                 .ue(0)
                                 .ue(0)
                                 .ue(0)
                                 .ue(4)
                                 .u(1, 0)
                                 .Nal(kSps);
    EXPECT_EQ(Values(1920, 1088, 66, 30), Values(lSps, PlainPps().Nal(kPps)));
}

TEST(SpsPpsParser, ReportsTheHeightOfOneField) {
    const std::string lSps = SpsHead(77)
                                 .Append(PlainOrder())
                                 .ue(1)
                                 .u(1, 0)
                                 .ue(119)
                                 .ue(33)
                                 .u(1, 0)  // frame_mbs_only_flag
                                 .u(1, 0)
                                 .u(1, 1)
                                 .u(1, 0)
                                 .u(1, 0)
                                 .Nal(kSps);
    EXPECT_EQ(Values(1920, 544, 77, 30), Values(lSps, PlainPps().Nal(kPps)));
}

TEST(SpsPpsParser, SidesWrapInUnsignedArithmetic) {
    const BitWriter lBits = SpsHead(66).Append(PlainOrder()).Append(SpsTail(0xfffffffe, 0x10000000));
    EXPECT_EQ(Values(0xfffffff0, 16, 66, 30), Values(lBits.Nal(kSps), PlainPps().Nal(kPps)));
    const BitWriter lWhole = SpsHead(66).Append(PlainOrder()).Append(SpsTail(0x0fffffff, 0));
    EXPECT_EQ(Values(0, 16, 66, 30), Values(lWhole.Nal(kSps), PlainPps().Nal(kPps)));
}

TEST(SpsPpsParser, TheKindOfNalUnitIsNotLookedAt) {
    for (unsigned int lHeader = 0; lHeader < 256; ++lHeader) {
        const Byte lByte = static_cast<Byte>(lHeader);
        EXPECT_EQ(Values(176, 144, 66, 30), Values(PlainSps().Nal(lByte), PlainPps().Nal(lByte)));
    }
}

TEST(SpsPpsParser, OneBadSetMakesAllValuesZero) {
    const std::string lSps = PlainSps().Nal(kSps);
    const std::string lPps = PlainPps().Nal(kPps);
    const std::string lBad[] = {
        "",                                                           // no NAL unit
        std::string("\x67"),                                          // only its header
        std::string("\x67\x00", 2),                                   // no one that would open the trailing bits
        std::string("\x67\x80", 2),                                   // only trailing bits
        std::string("\x67\x00\x00\x00", 4),                           // three zeros
        std::string("\x67\x00\x00\x01\xff\xff\xff\xff\xff\xff", 10),  // a start code
        std::string("\x67\x00\x00\x03\x04\xff\xff\xff\xff\xff", 10),  // protection that nothing needs
    };
    for (const std::string& lSet : lBad) {
        EXPECT_EQ(kNothing, Values(lSet, lPps));
        EXPECT_EQ(kNothing, Values(lSps, lSet));
        EXPECT_EQ(kNothing, Values(lSet, lSet));
    }
    EXPECT_EQ(kNothing, Values(lSps, PpsHead(0, 32).ue(0).Append(PpsTail()).Nal(kPps)));
}

TEST(SpsPpsParser, EmulationPreventionIsRemoved) {
    const std::string lPps = PlainPps().Nal(kPps);
    for (UInt lLevel = 1; lLevel < 8; ++lLevel) {
        const std::string lSps = PlainSps(0, lLevel).Nal(kSps);  // profile 0 and no flags: two zero bytes
        EXPECT_EQ(lLevel <= 3, '\3' == lSps[3] && '\3' >= lSps[4]) << lLevel;
        EXPECT_EQ(Values(176, 144, 0, lLevel), Values(lSps, lPps)) << lLevel;

        std::string lOther = lSps;
        if (lLevel <= 3) {
            lOther.erase(3, 1);  // not protected where it must be; level 3 then looks like protection
        } else {
            lOther.insert(3, 1, '\3');  // protected where it must not be
        }
        EXPECT_EQ(kNothing, Values(lOther, lPps)) << lLevel;
    }
}

TEST(SpsPpsParser, AZeroWordBehindTheTrailingBitsIsDropped) {
    const std::string lSps = PlainSps().Nal(kSps);
    const std::string lPps = PlainPps().Nal(kPps);
    const std::string lWord("\0\0\3", 3);
    EXPECT_EQ(Values(176, 144, 66, 30), Values(lSps + lWord, lPps + lWord));
    EXPECT_EQ(Values(176, 144, 66, 30), Values(lSps + std::string(2, '\0'), lPps + std::string(1, '\0')));
    EXPECT_EQ(kNothing, Values(lSps + std::string(3, '\0'), lPps));
}

TEST(SpsPpsParser, TheChromaFormatReachesThePictureSet) {
    BitWriter lPps = PlainPps().u(1, 1).u(1, 1);
    for (UInt lList = 0; lList < 12; ++lList) {
        lPps.u(1, 1).se(-8);
    }
    lPps.se(0);
    const BitWriter lFull =
        SpsHead(244).ue(3).u(1, 0).ue(0).ue(0).u(1, 0).u(1, 0).Append(PlainOrder()).Append(SpsTail(10, 8));
    EXPECT_EQ(Values(176, 144, 244, 30), Values(lFull.Nal(kSps), lPps.Nal(kPps)));
}

// Clips of other encoders.

struct Encoded {
    const char* mName;
    const char* mSps;
    const char* mPps;
    UInt mWidth, mHeight, mProfile, mLevel;
};

std::ostream& operator<<(std::ostream& aStream, const Encoded& aEncoded) {
    return aStream << aEncoded.mName;
}

const Encoded kEncoded[] = {
#include "EncodedVectors.inc"
};

class EncodedSets : public testing::TestWithParam<Encoded> {
protected:
    std::string Sps() const { return AsText(FromHex(GetParam().mSps)); }
    std::string Pps() const { return AsText(FromHex(GetParam().mPps)); }
    Values Whole() const {
        return Values(GetParam().mWidth, GetParam().mHeight, GetParam().mProfile, GetParam().mLevel);
    }
};

TEST_P(EncodedSets, GiveSizeProfileAndLevel) {
    EXPECT_EQ(Whole(), Values(Sps(), Pps())) << GetParam().mName;
}

TEST_P(EncodedSets, GiveNothingForAnyShorterSps) {
    const std::string lSps = Sps();
    for (std::size_t lSize = 0; lSize < lSps.size(); ++lSize) {
        EXPECT_EQ(kNothing, Values(lSps.substr(0, lSize), Pps())) << GetParam().mName << ", " << lSize << " bytes";
    }
}

TEST_P(EncodedSets, GiveAllOrNothingForAShorterPps) {
    const std::string lPps = Pps();
    std::size_t lWhole = 0;
    for (std::size_t lSize = 0; lSize < lPps.size(); ++lSize) {
        const Values lValues(Sps(), lPps.substr(0, lSize));
        EXPECT_TRUE(kNothing == lValues || Whole() == lValues) << GetParam().mName << ", " << lSize << " bytes";
        if (Whole() == lValues) { ++lWhole; }
    }
    EXPECT_LE(lWhole, 1U) << "only a cut between the set and its extension leaves a set";
}

TEST_P(EncodedSets, StandEveryFlippedBit) {
    const std::string lSps = Sps();
    const std::string lPps = Pps();
    for (std::size_t lBit = 0; lBit < 8 * lSps.size(); ++lBit) {
        std::string lFlipped = lSps;
        lFlipped[lBit / 8] = static_cast<char>(lFlipped[lBit / 8] ^ 0x80 >> lBit % 8);
        const Values lValues(lFlipped, lPps);
        if (lBit < 8) { EXPECT_EQ(Whole(), lValues); }
        if (kNothing == lValues) { continue; }
        EXPECT_EQ(static_cast<Byte>(lFlipped[1]), lValues.mProfile);
        EXPECT_EQ(static_cast<Byte>(lFlipped[3]), lValues.mLevel);
        EXPECT_EQ(0U, lValues.mWidth % 16);
        EXPECT_EQ(0U, lValues.mHeight % 16);
    }
    for (std::size_t lBit = 0; lBit < 8 * lPps.size(); ++lBit) {
        std::string lFlipped = lPps;
        lFlipped[lBit / 8] = static_cast<char>(lFlipped[lBit / 8] ^ 0x80 >> lBit % 8);
        const Values lValues(lSps, lFlipped);
        EXPECT_TRUE(kNothing == lValues || Whole() == lValues) << GetParam().mName << ", bit " << lBit;
    }
}

TEST_P(EncodedSets, StandBeingSwapped) {
    const Values lSwapped(Pps(), Sps());
    EXPECT_EQ(0U, lSwapped.mWidth % 16);
    const Values lTwice(Sps(), Sps());
    EXPECT_TRUE(kNothing == lTwice || Whole() == lTwice);
}

INSTANTIATE_TEST_SUITE_P(SpsPpsParser, EncodedSets, testing::ValuesIn(kEncoded));

}  // namespace
}  // namespace Parser
