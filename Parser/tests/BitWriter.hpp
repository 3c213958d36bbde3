#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Parser/Types.hpp"

namespace Parser::Test {

/// Writes a header bit by bit. Every member returns the writer, so that a header reads as one sentence.
class BitWriter {
public:
    BitWriter& u(UInt aBits, UInt aValue) {
        for (UInt lBit = aBits; lBit-- > 0;) {
            Bit(0 != (aValue >> lBit & 1));
        }
        return *this;
    }
    BitWriter& ue(UInt aValue) {
        const std::uint64_t lCode = std::uint64_t{aValue} + 1;
        UInt lLength = 0;
        while (0 != lCode >> (lLength + 1)) {
            ++lLength;
        }
        u(lLength, 0).Bit(true);
        return u(lLength, static_cast<UInt>(lCode));
    }
    BitWriter& se(SInt aValue) {
        const auto lValue = std::int64_t{aValue};
        return ue(static_cast<UInt>(lValue > 0 ? 2 * lValue - 1 : -2 * lValue));
    }
    BitWriter& Bytes(const std::vector<Byte>& aBytes) {
        for (const Byte lByte : aBytes) {
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
    BitWriter& Fill(UInt aBits) {
        while (0 != mBits.size() % aBits) {
            Bit(true);
        }
        return *this;
    }

    UInt Size() const { return static_cast<UInt>(mBits.size()); }

    /// The first `aBits` bits, the last byte filled up with zeros.
    std::vector<Byte> Prefix(UInt aBits) const {
        std::vector<Byte> lBytes((aBits + 7) / 8);
        for (UInt lBit = 0; lBit < aBits; ++lBit) {
            if (mBits[lBit]) { lBytes[lBit / 8] = static_cast<Byte>(lBytes[lBit / 8] | 0x80 >> lBit % 8); }
        }
        return lBytes;
    }
    std::vector<Byte> All() const { return Prefix(Size()); }

    /// A NAL unit: the header byte, and the bits with trailing bits and emulation prevention.
    std::string Nal(Byte aHeader) const {
        std::string lNal(1, static_cast<char>(aHeader));
        UInt lZeros = 0;
        for (const Byte lByte : BitWriter(*this).u(1, 1).All()) {
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

/// Hexadecimal digits to bytes.
inline std::string FromHex(const std::string& aText) {
    std::string lBytes;
    for (std::size_t lPos = 0; lPos + 1 < aText.size(); lPos += 2) {
        lBytes += static_cast<char>(std::stoul(aText.substr(lPos, 2), nullptr, 16));
    }
    return lBytes;
}

}  // namespace Parser::Test
