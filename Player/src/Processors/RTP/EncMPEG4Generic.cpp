#include "Processors/RTP/EncMPEG4Generic.hpp"

#include <cstdint>

namespace Player::Processors::RTP {

namespace {

constexpr UInt kFlagAndReservedBits = 8;
constexpr std::uint64_t kBitsOfByte = 8;

}  // namespace

// Three of the names have letters missing or in another order. Deliberate: so they are looked up.
EncMPEG4Generic::EncMPEG4Generic(Properties& aFormat)
    : MPEG4Generic(aFormat),
      mIsVideo("mpeg4-video" == Mode()),
      mHasEncryptedFlag(0 != Parameter("ismarypselectiveencryption")),
      mHasKeyIndicatorPerAU(0 != Parameter("ismacrypkeyindicatorperau")),
      mIVWidth(Width("isamcrypivlength")),
      mDeltaIVWidth(Width("isamcrypdeltaivlength")),
      mKeyIndicatorWidth(Width("ismacrypkeyindicatorlength")) {
    mHasSeveralAUs = false;
}

void EncMPEG4Generic::ReadFormatSpecificFields(const unsigned char* aPayload, unsigned int& aBitPos) {
    if (mHasEncryptedFlag) { SkipBits(aPayload, aBitPos, kFlagAndReservedBits); }
    SkipBits(aPayload, aBitPos, kBitsOfByte * (IsFirstAU() ? mIVWidth : mDeltaIVWidth));
    if (IsFirstAU() || mHasKeyIndicatorPerAU) { SkipBits(aPayload, aBitPos, kBitsOfByte * mKeyIndicatorWidth); }
}

void EncMPEG4Generic::SplitPayloadToSamples(const PacketPtr& aPacket) {
    if (mIsVideo) {
        GetFragmentedAU(aPacket);
    } else {
        MPEG4Generic::SplitPayloadToSamples(aPacket);
    }
}

}  // namespace Player::Processors::RTP
