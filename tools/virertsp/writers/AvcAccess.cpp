#include "writers/AvcAccess.hpp"

#include <algorithm>
#include <string>

#include "Player/BitReader.hpp"

namespace Virertsp {

namespace {

using Player::BitReader;
using Player::Byte;
using Player::UInt;

constexpr std::size_t kLengthSize = 4;

constexpr unsigned kSlice = 1;
constexpr unsigned kInstantRefresh = 5;
constexpr unsigned kSupplement = 6;

constexpr unsigned kRecoveryPoint = 6;

// Slice types count twice: the upper half says that all slices of the picture are of that type.
constexpr UInt kSliceTypes = 5;
constexpr UInt kIntraSlice = 2;

/// Two numbers of at most 63 bits each stand in front of what is of interest in a slice.
constexpr std::size_t kSliceHead = 24;

unsigned ByteAt(std::string_view aText, std::size_t aAt) {
    return static_cast<Byte>(aText[aAt]);
}

/// The NAL units of a sample in turn; the last one ends with the sample if its length says more.
class Units {
public:
    explicit Units(std::string_view aSample) : mLeft(aSample) {}

    /// False at the end. A unit has a byte at least.
    bool Next(std::string_view& aUnit) {
        while (mLeft.size() > kLengthSize) {
            std::size_t lLength = 0;
            for (std::size_t i = 0; i < kLengthSize; ++i) {
                lLength = lLength << 8 | ByteAt(mLeft, i);
            }
            mLeft.remove_prefix(kLengthSize);
            aUnit = mLeft.substr(0, lLength);
            mLeft.remove_prefix(aUnit.size());
            if (!aUnit.empty()) { return true; }
        }
        return false;
    }

private:
    std::string_view mLeft;
};

/// What follows the header byte, without emulation prevention bytes.
std::string Payload(std::string_view aUnit) {
    std::string lPayload;
    unsigned lZeros = 0;
    for (const char lByte : aUnit.substr(1)) {
        const bool lIsPrevention = lZeros >= 2 && '\3' == lByte;
        lZeros = '\0' == lByte ? lZeros + 1 : 0;
        if (!lIsPrevention) { lPayload.push_back(lByte); }
    }
    return lPayload;
}

/// A number in bytes of 255 and a smaller one. False when the text ends before.
bool TakeNumber(std::string_view& aText, std::size_t& aNumber) {
    aNumber = 0;
    while (!aText.empty()) {
        const unsigned lByte = ByteAt(aText, 0);
        aText.remove_prefix(1);
        aNumber += lByte;
        if (0xFF != lByte) { return true; }
    }
    return false;
}

/// A recovery point without pictures to wait for: its first number is 0, which is a single bit.
bool HasRecoveryPoint(std::string_view aMessages) {
    std::size_t lType = 0;
    std::size_t lSize = 0;
    while (TakeNumber(aMessages, lType) && TakeNumber(aMessages, lSize) && lSize <= aMessages.size()) {
        if (kRecoveryPoint == lType && lSize > 0) { return 0 != (ByteAt(aMessages, 0) & 0x80); }
        aMessages.remove_prefix(lSize);
    }
    return false;
}

/// ue(v); what is missing from bits that end early counts as a number that no slice has.
UInt ReadNumber(BitReader& aBits) {
    UInt lZeros = 0;
    while (0 == aBits.Read(1)) {
        if (++lZeros > 31 || aBits.AtEnd()) { return ~UInt{0}; }
    }
    return (UInt{1} << lZeros) - 1 + aBits.Read(lZeros);
}

struct Slice {
    explicit Slice(std::string_view aUnit) {
        const std::string lPayload = Payload(aUnit.substr(0, kSliceHead));
        BitReader lBits(reinterpret_cast<const Byte*>(lPayload.data()), static_cast<UInt>(lPayload.size()));
        mFirstBlock = ReadNumber(lBits);
        mIsIntra = kIntraSlice == ReadNumber(lBits) % kSliceTypes;
    }

    UInt mFirstBlock;
    bool mIsIntra;
};

}  // namespace

bool IsAvcRandomAccess(std::string_view aSample) {
    Units lUnits(aSample);
    bool lIsAnnounced = false;
    bool lHasPicture = false;
    for (std::string_view lUnit; lUnits.Next(lUnit);) {
        switch (ByteAt(lUnit, 0) & 0x1F) {
            case kInstantRefresh: return true;
            case kSupplement: lIsAnnounced = lIsAnnounced || HasRecoveryPoint(Payload(lUnit)); break;
            case kSlice: {
                if (!lIsAnnounced) { break; }
                const Slice lSlice(lUnit);
                // A second field may need the first one.
                if (lHasPicture && 0 == lSlice.mFirstBlock) { return true; }
                if (!lSlice.mIsIntra) { return false; }
                lHasPicture = true;
                break;
            }
            default: break;
        }
    }
    return lHasPicture;
}

}  // namespace Virertsp
