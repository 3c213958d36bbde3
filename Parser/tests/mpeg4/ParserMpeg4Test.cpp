#include "Parser/ParserMpeg4.hpp"

#include <gtest/gtest.h>

#include <random>

#include "support/BitWriter.hpp"
#include "support/Bytes.hpp"

namespace Parser {
namespace {

using TestSupport::BitWriter;
using TestSupport::FromHex;
using Bytes = std::vector<Byte>;

struct Size {
    explicit Size(const Bytes& aBytes) {
        const Bytes lExact(aBytes.begin(), aBytes.end());
        ParserMpeg4 lParser(lExact.data(), static_cast<unsigned int>(lExact.size()));
        EXPECT_EQ(0U, lParser.GetVOLWidth());
        EXPECT_EQ(0U, lParser.GetVOLHeight());
        lParser.Parse();
        mWidth = lParser.GetVOLWidth();
        mHeight = lParser.GetVOLHeight();
    }
    explicit Size(const BitWriter& aBits) : Size(aBits.All()) {}
    Size(UInt aWidth, UInt aHeight) : mWidth(aWidth), mHeight(aHeight) {}

    bool operator==(const Size& aOther) const { return mWidth == aOther.mWidth && mHeight == aOther.mHeight; }

    UInt mWidth = 0, mHeight = 0;
};

std::ostream& operator<<(std::ostream& aStream, const Size& aSize) {
    return aStream << aSize.mWidth << "x" << aSize.mHeight;
}

const Size kNone(0, 0);

BitWriter StartCode(Byte aCode) {
    return BitWriter().u(24, 1).u(8, aCode);
}

// A video object layer with its parts set one by one.
struct Layer {
    Byte mCode = 0x20;
    bool mIdentifier = false;
    UInt mVerId = 0;
    UInt mAspect = 1;
    bool mControl = false;
    bool mBufferModel = false;
    UInt mShape = 0;
    bool mExtension = false;  // written, whether or not it should be there
    UInt mResolution = 25;
    UInt mIncrementBits = 0;  // 0: no fixed rate
    UInt mMarker = 1;
    UInt mWidth = 176, mHeight = 144;

    BitWriter UpToSize() const {
        BitWriter lBits = StartCode(mCode).u(1, 0).u(8, 1).u(1, mIdentifier ? 1 : 0);
        if (mIdentifier) { lBits.u(4, mVerId).u(3, 1); }
        lBits.u(4, mAspect);
        if (15 == mAspect) { lBits.u(8, 12).u(8, 11); }
        lBits.u(1, mControl ? 1 : 0);
        if (mControl) {
            lBits.u(2, 1).u(1, 0).u(1, mBufferModel ? 1 : 0);
            // bit rate, buffer size, occupancy
            if (mBufferModel) { lBits.u(15, 1).u(1, mMarker).u(15, 2).u(1, mMarker); }
            if (mBufferModel) { lBits.u(15, 3).u(1, mMarker).u(3, 4).u(11, 5).u(1, mMarker).u(15, 6).u(1, mMarker); }
        }
        lBits.u(2, mShape);
        if (mExtension) { lBits.u(4, 0); }
        lBits.u(1, mMarker).u(16, mResolution).u(1, mMarker).u(1, 0 != mIncrementBits ? 1 : 0);
        return lBits.u(mIncrementBits, 1);
    }
    BitWriter Bits() const {
        if (0 != mShape) { return UpToSize(); }
        return UpToSize().u(1, mMarker).u(13, mWidth).u(1, mMarker).u(13, mHeight).u(1, mMarker);
    }
};

BitWriter LayerOf(UInt aWidth, UInt aHeight) {
    Layer lLayer;
    lLayer.mWidth = aWidth;
    lLayer.mHeight = aHeight;
    return lLayer.Bits();
}

/// The byte at which the scan goes on after an element that ends at `aBits`.
UInt ResumesAt(UInt aBits) {
    return 0 == aBits % 8 ? aBits / 8 : (aBits + 31) / 32 * 4;
}

/// `aElement` behind `aPad` bytes, and at byte `aPlace` a layer of 32x48.
Size WithLayerAt(const BitWriter& aElement, UInt aPad, UInt aPlace) {
    BitWriter lBits;
    for (UInt lByte = 0; lByte < aPad; ++lByte) {
        lBits.u(8, 0xff);
    }
    lBits.Append(aElement).Fill(8);
    while (lBits.Size() < 8 * aPlace) {
        lBits.u(8, 0xff);
    }
    EXPECT_EQ(8 * aPlace, lBits.Size());
    return Size(lBits.Append(LayerOf(32, 48)));
}

/// Asserts the length of an element by the first place behind it where a layer is seen.
void ExpectBits(const BitWriter& aElement, const Size& aOwnSize, const std::string& aName) {
    for (UInt lPad = 0; lPad < 4; ++lPad) {
        const UInt lEnd = 8 * lPad + aElement.Size();
        const UInt lPlace = ResumesAt(lEnd);
        EXPECT_EQ(Size(32, 48), WithLayerAt(aElement, lPad, lPlace)) << aName << " behind " << lPad;
        for (UInt lEarly = (lEnd + 7) / 8; lEarly < lPlace; ++lEarly) {
            EXPECT_EQ(aOwnSize, WithLayerAt(aElement, lPad, lEarly)) << aName << " behind " << lPad;
        }
    }
}

TEST(MyLog2, IsTheLogarithmRoundedDown) {
    const struct {
        unsigned int mIn, mOut;
    } kCases[] = {{0, 0},      {1, 0},      {2, 1},      {3, 1},           {4, 2},           {5, 2},
                  {7, 2},      {8, 3},      {24, 4},     {255, 7},         {256, 8},         {29999, 14},
                  {65534, 15}, {65535, 15}, {65536, 16}, {0x7fffffff, 30}, {0x80000000, 31}, {0xffffffff, 31}};
    for (const auto& lCase : kCases) {
        EXPECT_EQ(lCase.mOut, myLog2(lCase.mIn)) << lCase.mIn;
    }
    for (unsigned int lPower = 1; lPower < 32; ++lPower) {
        EXPECT_EQ(lPower, myLog2(1U << lPower));
        EXPECT_EQ(lPower - 1, myLog2((1U << lPower) - 1));
    }
}

TEST(ParserMpeg4, ReadsATypicalConfiguration) {
    const BitWriter lConfig = BitWriter()
                                  .Bytes({0x00, 0x00, 0x01, 0xb0, 0x01})  // visual object sequence
                                  .Bytes({0x00, 0x00, 0x01, 0xb5, 0x09})  // visual object: video
                                  .Bytes({0x00, 0x00, 0x01, 0x00})        // video object
                                  .Bytes({0x00, 0x00, 0x01, 0x20, 0x00})  // video object layer
                                  .Bytes({0x84, 0x40, 0x06, 0x68, 0x2c, 0x20, 0x90, 0xa2, 0x1f});
    EXPECT_EQ(Size(176, 144), Size(lConfig));
}

TEST(ParserMpeg4, FindsNothingWithoutAStartCode) {
    EXPECT_EQ(kNone, Size(Bytes()));
    EXPECT_EQ(kNone, Size(Bytes{0}));
    EXPECT_EQ(kNone, Size(Bytes(100, 0)));
    EXPECT_EQ(kNone, Size(Bytes(101, 0xff)));
    EXPECT_EQ(kNone, Size(Bytes{0, 0, 2, 0x20, 0, 0x84, 0x40, 0x06, 0x68, 0x2c, 0x20, 0x90, 0xa2, 0x1f}));
    EXPECT_EQ(kNone, Size(Bytes{0, 0, 1}));
    EXPECT_EQ(kNone, Size(Bytes{0, 0, 1, 0x20}));
    ParserMpeg4 lNothing(nullptr, 0);
    lNothing.Parse();
    EXPECT_EQ(0U, lNothing.GetVOLWidth());
}

TEST(ParserMpeg4, AllThreeBytesOfAPrefixCount) {
    const Bytes lLayer = Layer().Bits().All();
    for (std::size_t lByte = 0; lByte < 3; ++lByte) {
        for (std::size_t lBit = 0; lBit < 8; ++lBit) {
            Bytes lBytes = lLayer;
            lBytes[lByte] = static_cast<Byte>(lBytes[lByte] ^ 1 << lBit);
            EXPECT_EQ(kNone, Size(lBytes)) << lByte << " " << lBit;
        }
    }
}

TEST(ParserMpeg4, FindsALayerBehindAnyNumberOfBytes) {
    BitWriter lPad;
    for (UInt lCount = 0; lCount < 9; ++lCount) {
        EXPECT_EQ(Size(176, 144), Size(BitWriter(lPad).Append(Layer().Bits()))) << lCount;
        lPad.u(8, 0);  // zeros in front of a start code belong to none
    }
}

TEST(ParserMpeg4, EveryCodeOfALayerIsALayer) {
    for (UInt lCode = 0; lCode < 256; ++lCode) {
        Layer lLayer;
        lLayer.mCode = static_cast<Byte>(lCode);
        EXPECT_EQ(0x20 <= lCode && lCode <= 0x3f ? Size(176, 144) : kNone, Size(lLayer.Bits())) << lCode;
    }
}

TEST(ParserMpeg4, ElementsWithoutALayerAreSteppedOver) {
    for (UInt lCode = 0; lCode < 256; ++lCode) {
        const bool lOwnRules = (0x20 <= lCode && lCode <= 0x3f) || 0xb0 == lCode || 0xb5 == lCode;
        if (!lOwnRules) { ExpectBits(StartCode(static_cast<Byte>(lCode)), kNone, "code " + std::to_string(lCode)); }
    }
    ExpectBits(StartCode(0xb0).u(8, 0xf5), kNone, "sequence");
    // The byte of the profile is a part of the element, also when it looks like the start of a start code.
    EXPECT_EQ(kNone, Size(StartCode(0xb0).Append(Layer().Bits())));
    EXPECT_EQ(Size(176, 144), Size(StartCode(0xb1).Append(Layer().Bits())));
    EXPECT_EQ(Size(176, 144), Size(StartCode(0xb2).Append(Layer().Bits())));
}

TEST(ParserMpeg4, ReadsAllPartsOfAVisualObject) {
    for (const bool lIdentifier : {false, true}) {
        BitWriter lHead = StartCode(0xb5).u(1, lIdentifier ? 1 : 0);
        if (lIdentifier) { lHead.u(4, 2).u(3, 1); }
        const std::string lName = lIdentifier ? "identifier, type " : "type ";
        for (UInt lType = 0; lType < 16; ++lType) {
            BitWriter lBits = BitWriter(lHead).u(4, lType);
            if (1 == lType || 2 == lType) {
                ExpectBits(BitWriter(lBits).u(1, 0), kNone, lName + std::to_string(lType));
                lBits.u(1, 1).u(3, 5).u(1, 1);
                ExpectBits(BitWriter(lBits).u(1, 0), kNone, lName + std::to_string(lType) + ", signal");
                lBits.u(1, 1).u(8, 0x55).u(8, 0xaa).u(8, 0x77);
            }
            ExpectBits(lBits, kNone, lName + std::to_string(lType) + ", all");
        }
    }
}

TEST(ParserMpeg4, ReadsAllPartsOfALayer) {
    for (const UInt lVerId : {0U, 1U, 2U, 15U}) {
        for (const UInt lAspect : {1U, 14U, 15U}) {
            for (UInt lModel = 0; lModel < 3; ++lModel) {
                for (const UInt lMarker : {0U, 1U}) {
                    Layer lLayer;
                    lLayer.mIdentifier = 0 != lVerId;
                    lLayer.mVerId = lVerId;
                    lLayer.mAspect = lAspect;
                    lLayer.mControl = lModel > 0;
                    lLayer.mBufferModel = lModel > 1;
                    lLayer.mMarker = lMarker;  // not looked at
                    EXPECT_EQ(Size(176, 144), Size(lLayer.Bits())) << lVerId << " " << lAspect << " " << lModel;
                    ExpectBits(lLayer.Bits(), Size(176, 144), "layer");
                }
            }
        }
    }
}

TEST(ParserMpeg4, TheFixedIncrementHasAsManyBitsAsTheResolutionNeeds) {
    const struct {
        UInt mResolution, mBits;
    } kCases[] = {
        {1, 1},  {2, 1},     {3, 2},      {4, 2},      {5, 3},      {24, 5},     {25, 5}, {30, 5},
        {33, 6}, {1000, 10}, {30000, 15}, {32768, 15}, {32769, 16}, {65535, 16}, {0, 32}};  // one less than none is the
                                                                                            // most there is
    for (const auto& lCase : kCases) {
        Layer lLayer;
        lLayer.mResolution = lCase.mResolution;
        lLayer.mIncrementBits = lCase.mBits;
        EXPECT_EQ(Size(176, 144), Size(lLayer.Bits())) << lCase.mResolution;
        ExpectBits(lLayer.Bits(), Size(176, 144), "resolution " + std::to_string(lCase.mResolution));
        lLayer.mIncrementBits = 0;
        EXPECT_EQ(Size(176, 144), Size(lLayer.Bits())) << lCase.mResolution;
    }
}

TEST(ParserMpeg4, OtherShapesHaveNoSize) {
    for (const UInt lShape : {1U, 2U, 3U}) {
        Layer lLayer;
        lLayer.mShape = lShape;
        lLayer.mExtension = 3 == lShape;
        EXPECT_EQ(kNone, Size(lLayer.Bits().u(1, 1).u(13, 176).u(1, 1).u(13, 144).u(1, 1)));
        ExpectBits(lLayer.Bits(), kNone, "shape " + std::to_string(lShape));
    }
}

TEST(ParserMpeg4, OnlyTheFirstVersionHasNoShapeExtension) {
    for (UInt lVerId = 0; lVerId < 16; ++lVerId) {
        for (const bool lIdentifier : {false, true}) {
            if (!lIdentifier && 0 != lVerId) { continue; }
            Layer lLayer;
            lLayer.mShape = 3;
            lLayer.mIdentifier = lIdentifier;
            lLayer.mVerId = lVerId;
            lLayer.mExtension = 1 != lVerId;  // also when there is no identifier
            lLayer.mResolution = 1000;
            lLayer.mIncrementBits = 10;
            ExpectBits(lLayer.Bits(), kNone, "version " + std::to_string(lVerId));
        }
    }
}

TEST(ParserMpeg4, SidesHave13Bits) {
    EXPECT_EQ(Size(8191, 1), Size(LayerOf(8191, 1)));
    EXPECT_EQ(Size(1, 8191), Size(LayerOf(1, 8191)));
    EXPECT_EQ(kNone, Size(LayerOf(0, 0)));
}

TEST(ParserMpeg4, LaterLayersOverwriteTheSize) {
    const BitWriter lFirst = LayerOf(176, 144).Fill(32);
    EXPECT_EQ(Size(352, 288), Size(BitWriter(lFirst).Append(LayerOf(352, 288))));
    EXPECT_EQ(kNone, Size(BitWriter(lFirst).Append(LayerOf(0, 0))));
    Layer lBinary;
    lBinary.mShape = 1;
    EXPECT_EQ(Size(176, 144), Size(BitWriter(lFirst).Append(lBinary.Bits())));
    EXPECT_EQ(Size(352, 288), Size(lBinary.Bits().Fill(32).Append(LayerOf(352, 288))));
}

TEST(ParserMpeg4, ALayerInTheWordWhereAnElementEndsIsNotSeen) {
    const BitWriter lObject = StartCode(0xb5).u(8, 0x09);  // ends within the sixth byte of eight
    EXPECT_EQ(kNone, Size(BitWriter(lObject).Append(Layer().Bits())));
    EXPECT_EQ(Size(176, 144), Size(BitWriter(lObject).u(24, 0xffffff).Append(Layer().Bits())));
}

TEST(ParserMpeg4, EveryShorterLayerGivesTheWholeSidesItHas) {
    Layer lLayer;
    lLayer.mControl = lLayer.mBufferModel = true;
    lLayer.mWidth = lLayer.mHeight = 8191;
    const UInt lWidthEnd = lLayer.UpToSize().Size() + 1 + 13;
    const BitWriter lBits = lLayer.Bits();
    for (UInt lPad = 0; lPad < 4; ++lPad) {
        Bytes lBytes(lPad, 0xff);
        const Bytes lAll = lBits.All();
        for (UInt lSize = 0; lSize <= lAll.size(); ++lSize) {
            EXPECT_EQ(Size(8 * lSize >= lWidthEnd ? 8191 : 0, 8 * lSize >= lWidthEnd + 14 ? 8191 : 0), Size(lBytes))
                << lSize << " bytes behind " << lPad;
            if (lSize < lAll.size()) { lBytes.push_back(lAll[lSize]); }
        }
    }
}

TEST(ParserMpeg4, ALaterLayerThatIsCutKeepsTheSizeBefore) {
    const BitWriter lSecond = LayerOf(352, 288);
    const UInt lWidthEnd = Layer().UpToSize().Size() + 1 + 13;
    for (UInt lBits = 32; lBits <= lSecond.Size(); lBits += 8) {
        const BitWriter lCut = LayerOf(176, 144).Fill(32).Bytes(lSecond.Prefix(lBits));
        EXPECT_EQ(Size(lBits >= lWidthEnd ? 352 : 176, lBits >= lWidthEnd + 14 ? 288 : 144), Size(lCut)) << lBits;
    }
}

TEST(ParserMpeg4, KeepsACopyOfTheBytes) {
    Bytes lBytes = Layer().Bits().All();
    ParserMpeg4 lParser(lBytes.data(), static_cast<unsigned int>(lBytes.size()));
    lBytes.assign(lBytes.size(), 0xff);
    lParser.Parse();
    EXPECT_EQ(176U, lParser.GetVOLWidth());
    lParser.Parse();  // nothing is left
    EXPECT_EQ(144U, lParser.GetVOLHeight());
}

TEST(ParserMpeg4, StandsAnyBytes) {
    std::mt19937 lRandom(2);
    for (int lRound = 0; lRound < 5000; ++lRound) {
        Bytes lBytes(lRandom() % 64);
        for (Byte& lByte : lBytes) {
            lByte = static_cast<Byte>(lRandom());
        }
        // Start codes everywhere, of the kinds that are looked into.
        for (std::size_t lPos = lRandom() % 8; lPos + 4 <= lBytes.size(); lPos += 4 + lRandom() % 12) {
            const Byte kCodes[] = {0xb0, 0xb5, 0x00, 0x20, 0x2f, 0xb1, 0xb2, 0xb6};
            lBytes[lPos] = lBytes[lPos + 1] = 0;
            lBytes[lPos + 2] = 1;
            lBytes[lPos + 3] = kCodes[lRandom() % 8];
        }
        const Size lSize(lBytes);
        EXPECT_LE(lSize.mWidth, 8191U);
        EXPECT_LE(lSize.mHeight, 8191U);
    }
}

// Clips of other encoders.

struct Encoded {
    const char* mName;
    const char* mConfig;
    UInt mWidth, mHeight;
};

std::ostream& operator<<(std::ostream& aStream, const Encoded& aEncoded) {
    return aStream << aEncoded.mName;
}

const Encoded kEncoded[] = {
#include "EncodedVectors.inc"
};

class EncodedConfigs : public testing::TestWithParam<Encoded> {
protected:
    Bytes Config() const {
        const std::string lConfig = TestSupport::AsText(FromHex(GetParam().mConfig));
        return Bytes(lConfig.begin(), lConfig.end());
    }
    Size Whole() const { return Size(GetParam().mWidth, GetParam().mHeight); }
};

TEST_P(EncodedConfigs, GiveTheSize) {
    EXPECT_EQ(Whole(), Size(Config())) << GetParam().mName;
}

TEST_P(EncodedConfigs, GiveWholeSidesOrNone) {
    Bytes lConfig = Config();
    Size lBefore = Whole();
    while (!lConfig.empty()) {
        lConfig.pop_back();
        const Size lSize(lConfig);
        EXPECT_TRUE(lSize.mWidth == lBefore.mWidth || 0 == lSize.mWidth) << lConfig.size();
        EXPECT_TRUE(lSize.mHeight == lBefore.mHeight || 0 == lSize.mHeight) << lConfig.size();
        lBefore = lSize;
    }
    EXPECT_EQ(kNone, lBefore);
}

TEST_P(EncodedConfigs, StandEveryFlippedBit) {
    const Bytes lConfig = Config();
    for (std::size_t lBit = 0; lBit < 8 * lConfig.size(); ++lBit) {
        Bytes lFlipped = lConfig;
        lFlipped[lBit / 8] = static_cast<Byte>(lFlipped[lBit / 8] ^ 0x80 >> lBit % 8);
        const Size lSize(lFlipped);
        EXPECT_LE(lSize.mWidth, 8191U);
        EXPECT_LE(lSize.mHeight, 8191U);
    }
}

INSTANTIATE_TEST_SUITE_P(ParserMpeg4, EncodedConfigs, testing::ValuesIn(kEncoded));

}  // namespace
}  // namespace Parser
