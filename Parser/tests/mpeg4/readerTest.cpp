#include "reader.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <type_traits>
#include <vector>

namespace Parser {
namespace {

using Bytes = std::vector<Byte>;

/// Opens what the classes keep to themselves.
class Probe : public reader<UInt> {
public:
    explicit Probe(const Bytes& aBytes) : reader<UInt>(aBytes.data(), static_cast<UInt>(aBytes.size())) {}

    UInt Offset() const { return m_offset; }
    UInt Bits() const { return m_bits; }
    bool AtWord(const Byte* aWord) const { return aWord == m_word; }
};

const Bytes kTwelve = {0x12, 0x34, 0x56, 0x78, 0x9a, 0xbc, 0xde, 0xf0, 0x0f, 0x1e, 0x2d, 0x3c};

static_assert(std::has_virtual_destructor<bitstream<UInt>>::value, "deleted through its base");

TEST(Reader, StartsInFrontOfTheFirstWord) {
    const Probe lReader(kTwelve);
    EXPECT_EQ(0U, lReader.Offset());
    EXPECT_EQ(32U, lReader.Bits());
    EXPECT_TRUE(lReader.AtWord(kTwelve.data()));
}

TEST(Reader, ReadsTheMostSignificantBitFirst) {
    reader<UInt> lReader(kTwelve.data(), 12);
    EXPECT_EQ(0x1U, lReader.read(4));
    EXPECT_EQ(0U, lReader.read(1));
    EXPECT_EQ(0U, lReader.read(1));
    EXPECT_EQ(1U, lReader.read(1));
    EXPECT_EQ(0U, lReader.read(1));
    EXPECT_EQ(0x345678U, lReader.read(24));
    EXPECT_EQ(0x9abcdef0U, lReader.read(32));
    EXPECT_EQ(0x0f1e2d3cU, lReader.read(32));
}

TEST(Reader, JoinsTwoWords) {
    reader<UInt> lReader(kTwelve.data(), 12);
    EXPECT_EQ(0x1234567U, lReader.read(28));
    EXPECT_EQ(0x89abcdefU, lReader.read(32));
    EXPECT_EQ(0x00U, lReader.read(8));
    EXPECT_EQ(0xf1e2d3cU, lReader.read(28));
}

TEST(Reader, ReadsAtEveryPlaceInEveryLength) {
    for (std::uint8_t lSkip = 0; lSkip <= 32; ++lSkip) {
        for (std::uint8_t lBits = 0; lBits <= 32; ++lBits) {
            reader<UInt> lReader(kTwelve.data(), 12);
            lReader.read(lSkip);
            const std::uint64_t lAll = 0x123456789abcdef0;
            const std::uint64_t lWant = 0 == lBits ? 0 : lAll << lSkip >> (64 - lBits);
            EXPECT_EQ(lWant, lReader.read(lBits)) << int{lSkip} << " " << int{lBits};
        }
    }
}

TEST(Reader, BytesBehindTheDataAreZero) {
    const Bytes lFive(kTwelve.begin(), kTwelve.begin() + 5);
    reader<UInt> lReader(lFive.data(), 5);
    EXPECT_EQ(0x12345678U, lReader.read(32));
    EXPECT_EQ(0x9a000000U, lReader.read(32));
    EXPECT_FALSE(lReader.has_bits(1));
    EXPECT_EQ(0U, lReader.read(32));
    EXPECT_EQ(0U, lReader.read(1));
    EXPECT_FALSE(lReader.has_bits(0));  // more than there is was consumed

    reader<UInt> lEmpty(nullptr, 0);
    EXPECT_TRUE(lEmpty.has_bits(0));
    EXPECT_FALSE(lEmpty.has_bits(1));
    EXPECT_EQ(0U, lEmpty.read(32));
    EXPECT_EQ(0U, lEmpty.read(7));
}

TEST(Reader, HasBitsCountsBitsAndNotWords) {
    for (UInt lSize = 0; lSize <= kTwelve.size(); ++lSize) {
        const Bytes lBytes(kTwelve.data(), kTwelve.data() + lSize);
        for (UInt lSkip = 0; lSkip <= 8 * lSize; ++lSkip) {
            reader<UInt> lReader(lBytes.data(), lSize);
            for (UInt lBit = 0; lBit < lSkip; ++lBit) {
                lReader.read(1);
            }
            for (UInt lBits = 0; lBits < 256; ++lBits) {
                EXPECT_EQ(lSkip + lBits <= 8 * lSize, lReader.has_bits(static_cast<std::uint8_t>(lBits)));
            }
        }
    }
}

TEST(Reader, HasBitsMovesNothing) {
    Probe lReader(kTwelve);
    lReader.read(5);
    lReader.has_bits(200);
    EXPECT_EQ(27U, lReader.Bits());
    EXPECT_EQ(0U, lReader.Offset());
}

TEST(Reader, TrimKeepsWholeBytesAndElseGoesToTheNextWord) {
    for (std::uint8_t lSkip = 0; lSkip <= 32; ++lSkip) {
        reader<UInt> lReader(kTwelve.data(), 12);
        lReader.read(lSkip);
        lReader.trim();
        const UInt lPlace = 0 == lSkip % 8 ? lSkip : 32;
        const std::uint64_t lAll = 0x123456789abcdef0;
        EXPECT_EQ(lAll << lPlace >> 56, lReader.read(8)) << int{lSkip};
    }
}

TEST(Reader, TrimInTheLastWordLeavesNothing) {
    const Bytes lSix(kTwelve.begin(), kTwelve.begin() + 6);
    reader<UInt> lReader(lSix.data(), 6);
    lReader.read(32);
    lReader.read(7);
    EXPECT_TRUE(lReader.has_bits(9));
    lReader.trim();
    EXPECT_FALSE(lReader.has_bits(1));
    EXPECT_EQ(0U, lReader.read(8));
}

TEST(Reader, SeeksBothWaysOverOneBorder) {
    for (int lFrom = 0; lFrom <= 96; ++lFrom) {
        for (int lMove = -32; lMove <= 32; ++lMove) {
            Probe lReader(kTwelve);
            for (int lBit = 0; lBit < lFrom; ++lBit) {
                lReader.read(1);
            }
            const int lTo = lFrom + lMove;
            const bool lWithin = 0 <= lTo && lTo <= 96;
            EXPECT_EQ(lWithin, lReader.seek(static_cast<std::int8_t>(lMove), seek_mode::kCurrent));
            const UInt lPlace = static_cast<UInt>(lWithin ? lTo : lFrom);
            EXPECT_EQ(lPlace, 8 * lReader.Offset() + 32 - lReader.Bits()) << lFrom << " " << lMove;
            EXPECT_TRUE(lReader.AtWord(kTwelve.data() + lReader.Offset()));
        }
    }
}

TEST(Reader, SeeksRelativeToTheCurrentPlaceOnly) {
    Probe lReader(kTwelve);
    lReader.read(8);
    EXPECT_FALSE(lReader.seek(8, seek_mode::kBegin));
    EXPECT_FALSE(lReader.seek(-8, seek_mode::kEnd));
    EXPECT_EQ(24U, lReader.Bits());
    EXPECT_EQ(0x34U, lReader.read(8));
}

TEST(Reader, SeeksBackAtTheEndOfTheData) {
    const Bytes lSix(kTwelve.begin(), kTwelve.begin() + 6);
    reader<UInt> lReader(lSix.data(), 6);
    lReader.read(16);
    EXPECT_EQ(0x56789abcU, lReader.read(32));
    EXPECT_TRUE(lReader.seek(-24, seek_mode::kCurrent));
    EXPECT_FALSE(lReader.has_bits(32));
    EXPECT_EQ(0x789abcU, lReader.read(24));
}

/// The same rules, bit by bit.
struct Model {
    UInt Limit() const { return 32 * std::max<UInt>(1, static_cast<UInt>(mBytes.size() + 3) / 4); }
    UInt Read(UInt aBits) {
        UInt lValue = 0;
        for (; aBits > 0; --aBits) {
            const bool lBit = mPos / 8 < mBytes.size() && 0 != (mBytes[mPos / 8] >> (7 - mPos % 8) & 1);
            lValue = lValue << 1 | (lBit ? 1 : 0);
            mPos = std::min(mPos + 1, Limit());
        }
        return lValue;
    }
    bool Seek(int aBits) {
        const int lTo = static_cast<int>(mPos) + aBits;
        if (lTo < 0 || lTo > static_cast<int>(Limit())) { return false; }
        mPos = static_cast<UInt>(lTo);
        return true;
    }
    void Trim() {
        if (0 != mPos % 8) { mPos = (mPos + 31) / 32 * 32; }
    }

    Bytes mBytes;
    UInt mPos = 0;
};

TEST(Reader, DoesAsTheModelDoes) {
    std::mt19937 lRandom(1);
    for (int lRound = 0; lRound < 400; ++lRound) {
        Model lModel;
        lModel.mBytes.resize(lRandom() % 20);
        std::generate(lModel.mBytes.begin(), lModel.mBytes.end(), [&] { return static_cast<Byte>(lRandom()); });
        const Bytes lBytes(lModel.mBytes.begin(), lModel.mBytes.end());
        reader<UInt> lReader(lBytes.data(), static_cast<UInt>(lBytes.size()));
        for (int lStep = 0; lStep < 60; ++lStep) {
            const UInt lBits = static_cast<UInt>(lRandom() % 33);
            switch (lRandom() % 4) {
                case 0: {
                    const int lMove = static_cast<int>(lRandom() % 65) - 32;
                    EXPECT_EQ(lModel.Seek(lMove), lReader.seek(static_cast<std::int8_t>(lMove), seek_mode::kCurrent));
                    break;
                }
                case 1:
                    if (0 == lRandom() % 4) {
                        lModel.Trim();
                        lReader.trim();
                    }
                    break;
                default: EXPECT_EQ(lModel.Read(lBits), lReader.read(static_cast<std::uint8_t>(lBits)));
            }
            EXPECT_EQ(lModel.mPos + lBits <= 8 * lBytes.size(), lReader.has_bits(static_cast<std::uint8_t>(lBits)));
        }
    }
}

TEST(Reader, WiderWordsHoldTheSameBits) {
    reader<std::uint64_t> lReader(kTwelve.data(), 12);
    EXPECT_EQ(0x1234U, lReader.read(16));
    EXPECT_EQ(0x56789abcdef00f1eU, lReader.read(64));
    EXPECT_TRUE(lReader.seek(-32, seek_mode::kCurrent));
    EXPECT_EQ(0xdef00f1e2d3c0000U, lReader.read(64));
    EXPECT_FALSE(lReader.has_bits(1));
}

TEST(ReaderDeathTest, ReadsAWordAtMost) {
    reader<UInt> lReader(kTwelve.data(), 12);
    EXPECT_DEATH(lReader.read(33), "Assertion failed: a_bits <= sizeof\\(T\\)\\*8\n");
    EXPECT_DEATH(lReader.read(255), "a_bits <= sizeof\\(T\\)\\*8");
}

TEST(ReaderDeathTest, SeeksAWordAtMost) {
    reader<UInt> lReader(kTwelve.data(), 12);
    EXPECT_DEATH(lReader.seek(33, seek_mode::kCurrent), "Assertion failed: a_bits >= -32 && a_bits <= 32\n");
    EXPECT_DEATH(lReader.seek(-33, seek_mode::kCurrent), "a_bits >= -32 && a_bits <= 32");
    EXPECT_DEATH(lReader.seek(127, seek_mode::kBegin), "a_bits >= -32 && a_bits <= 32");
    EXPECT_DEATH(lReader.seek(-128, seek_mode::kCurrent), "a_bits >= -32 && a_bits <= 32");
}

}  // namespace
}  // namespace Parser
