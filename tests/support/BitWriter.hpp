#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace TestSupport {

/// Writes a header bit by bit. Every member returns the writer, so that a header reads as one sentence.
class BitWriter {
public:
    BitWriter& u(unsigned aBits, unsigned aValue) {
        for (unsigned lBit = aBits; lBit-- > 0;) {
            Bit(0 != (aValue >> lBit & 1));
        }
        return *this;
    }
    BitWriter& ue(unsigned aValue) {
        const std::uint64_t lCode = std::uint64_t{aValue} + 1;
        unsigned lLength = 0;
        while (0 != lCode >> (lLength + 1)) {
            ++lLength;
        }
        u(lLength, 0).Bit(true);
        return u(lLength, static_cast<unsigned>(lCode));
    }
    BitWriter& se(int aValue) {
        const auto lValue = std::int64_t{aValue};
        return ue(static_cast<unsigned>(lValue > 0 ? 2 * lValue - 1 : -2 * lValue));
    }
    BitWriter& Bytes(const std::vector<std::uint8_t>& aBytes) {
        for (const std::uint8_t lByte : aBytes) {
            u(8, lByte);
        }
        return *this;
    }
    BitWriter& Append(const BitWriter& aOther) {
        for (const bool lBit : aOther.mBits) {
            Bit(lBit);
        }
        return *this;
    }
    /// Fills up with ones to a multiple of `aBits`.
    BitWriter& Fill(unsigned aBits) {
        while (0 != mBits.size() % aBits) {
            Bit(true);
        }
        return *this;
    }

    unsigned Size() const { return static_cast<unsigned>(mBits.size()); }

    /// The first `aBits` bits, the last byte filled up with zeros.
    std::vector<std::uint8_t> Prefix(unsigned aBits) const {
        std::vector<std::uint8_t> lBytes((aBits + 7) / 8);
        for (unsigned lBit = 0; lBit < aBits; ++lBit) {
            if (mBits[lBit]) { lBytes[lBit / 8] = static_cast<std::uint8_t>(lBytes[lBit / 8] | 0x80 >> lBit % 8); }
        }
        return lBytes;
    }
    std::vector<std::uint8_t> All() const { return Prefix(Size()); }

    /// A NAL unit: the header byte, and the bits with trailing bits and emulation prevention.
    std::string Nal(std::uint8_t aHeader) const {
        std::string lNal(1, static_cast<char>(aHeader));
        unsigned lZeros = 0;
        for (const std::uint8_t lByte : BitWriter(*this).u(1, 1).All()) {
            if (2 == lZeros && lByte <= 3) {
                lNal += '\3';
                lZeros = 0;
            }
            lZeros = 0 == lByte ? lZeros + 1 : 0;
            lNal += static_cast<char>(lByte);
        }
        return lNal;
    }

private:
    void Bit(bool aBit) { mBits.push_back(aBit); }

    std::vector<bool> mBits;
};

}  // namespace TestSupport
