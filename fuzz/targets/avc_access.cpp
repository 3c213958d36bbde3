// Whether a decoder of H.264 can begin with a sample: samples that were written by hand are judged by what was written;
// for any others the answer stays what it is with units that say nothing about it, and "yes" needs a reason.

#include "support/BitWriter.hpp"
#include "support/Target.hpp"
#include "writers/AvcAccess.hpp"

namespace Fuzz {

/// A sample is copied once with units added, and a unit is once more there without its escapes.
const Bounds kBounds{4096, 8};

namespace {

constexpr unsigned kSlice = 1;
constexpr unsigned kRefresh = 5;
constexpr unsigned kSupplement = 6;
constexpr unsigned kParameters = 8;
constexpr unsigned kRecoveryPoint = 6;

bool IsAccess(const Bytes& aSample) {
    return Virertsp::IsAvcRandomAccess({reinterpret_cast<const char*>(aSample.data()), aSample.size()});
}

void Append(Bytes& aBytes, const Bytes& aMore) {
    aBytes.insert(aBytes.end(), aMore.begin(), aMore.end());
}

/// A unit with its length in front; its data get the bytes that keep start codes out.
Bytes Unit(unsigned aType, const Bytes& aData) {
    Bytes lUnit = {static_cast<std::uint8_t>(0x60 | aType)};
    unsigned lZeros = 0;
    for (const std::uint8_t lByte : aData) {
        if (lZeros >= 2 && lByte <= 3) {
            lUnit.push_back(3);
            lZeros = 0;
        }
        lZeros = 0 == lByte ? lZeros + 1 : 0;
        lUnit.push_back(lByte);
    }
    const std::size_t lSize = lUnit.size();
    Bytes lWhole = {0, static_cast<std::uint8_t>(lSize >> 16), static_cast<std::uint8_t>(lSize >> 8),
                    static_cast<std::uint8_t>(lSize)};
    Append(lWhole, lUnit);
    return lWhole;
}

/// Type and size of a message: 255 as often as it fits, and the rest.
void PutNumber(Bytes& aMessages, std::size_t aNumber) {
    aMessages.insert(aMessages.end(), aNumber / 255, 255);
    aMessages.push_back(static_cast<std::uint8_t>(aNumber % 255));
}

/// Writes a sample and keeps the answer that it asks for.
class Written {
public:
    /// Messages of a unit; the first recovery point of a unit counts.
    void Supplement(Input& aInput) {
        Bytes lMessages;
        bool lHasPoint = false;
        for (unsigned lLeft = aInput.Below(4); 0 != lLeft; --lLeft) {
            const std::size_t lType = aInput.Flag() ? kRecoveryPoint : aInput.Word16() % 1024;
            const Bytes lMessage = aInput.Take(aInput.Word16() % 600);
            PutNumber(lMessages, lType);
            PutNumber(lMessages, lMessage.size());
            Append(lMessages, lMessage);
            if (kRecoveryPoint != lType || lHasPoint || lMessage.empty()) { continue; }
            lHasPoint = true;
            // recovery_frame_cnt begins the message: 0 is a single bit.
            mIsAnnounced = mIsAnnounced || 0 != (lMessage[0] & 0x80);
        }
        lMessages.push_back(0x80);
        Append(mSample, Unit(kSupplement, lMessages));
    }
    void Slice(Input& aInput) {
        const unsigned lFirstBlock = aInput.Flag() ? 0 : aInput.Word32() >> 1;
        const unsigned lType = aInput.Below(10);
        Bytes lSlice = TestSupport::BitWriter().ue(lFirstBlock).ue(lType).u(1, 1).All();
        Append(lSlice, aInput.Take(aInput.Byte()));
        lSlice.push_back(0x80);
        Append(mSample, Unit(kSlice, lSlice));
        if (!mIsAnnounced || mIsDecided) { return; }
        if (mHasPicture && 0 == lFirstBlock) {  // Another field: the first one is whole.
            mIsDecided = true;
        } else if (2 == lType % 5) {
            mHasPicture = true;
        } else {
            mHasPicture = false;
            mIsDecided = true;
        }
    }
    void Other(Input& aInput) {
        const unsigned lType = aInput.Below(32);
        Bytes lData = aInput.Take(aInput.Byte());
        lData.push_back(0x80);
        if (kSlice == lType || kSupplement == lType) { return; }
        Append(mSample, Unit(lType, lData));
        if (kRefresh == lType && !mIsDecided) { mHasPicture = mIsDecided = true; }
    }

    const Bytes& Sample() const { return mSample; }
    bool Answer() const { return mHasPicture; }

private:
    Bytes mSample;
    bool mIsAnnounced = false;
    bool mHasPicture = false;
    bool mIsDecided = false;
};

bool HasType(const Bytes& aSample, unsigned aType) {
    for (const std::uint8_t lByte : aSample) {
        if (aType == (lByte & 0x1F)) { return true; }
    }
    return false;
}

void CheckWritten(Input& aInput) {
    Written lWritten;
    while (!aInput.Empty()) {
        switch (aInput.Below(3)) {
            case 0: lWritten.Supplement(aInput); break;
            case 1: lWritten.Slice(aInput); break;
            default: lWritten.Other(aInput); break;
        }
    }
    FUZZ_CHECK(IsAccess(lWritten.Sample()) == lWritten.Answer());
}

void CheckAnything(const Bytes& aSample) {
    const bool lIsAccess = IsAccess(aSample);
    FUZZ_CHECK(!lIsAccess || HasType(aSample, kRefresh) || (HasType(aSample, kSupplement) && HasType(aSample, kSlice)));
    for (const unsigned lType : {kParameters, kRefresh}) {
        Bytes lLonger = Unit(lType, {0x88});
        Append(lLonger, aSample);
        FUZZ_CHECK(IsAccess(lLonger) == (lIsAccess || kRefresh == lType));
    }
}

}  // namespace

void Run(Input& aInput) {
    if (aInput.Flag()) {
        CheckWritten(aInput);
    } else {
        CheckAnything(aInput.Rest());
    }
}

}  // namespace Fuzz
