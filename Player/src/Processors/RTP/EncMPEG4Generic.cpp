#include "Processors/RTP/EncMPEG4Generic.hpp"

#include <cstdint>

namespace Player::Processors::RTP {

namespace {

constexpr UInt kFlagAndReservedBits = 8;

void SkipBytes(BitReader& aBits, UInt aBytes) {
    aBits.Skip(std::uint64_t{aBytes} * 8);
}

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

void EncMPEG4Generic::ReadFormatSpecificFields(BitReader& aBits) {
    if (mHasEncryptedFlag) { aBits.Skip(kFlagAndReservedBits); }
    SkipBytes(aBits, IsFirstAU() ? mIVWidth : mDeltaIVWidth);
    if (IsFirstAU() || mHasKeyIndicatorPerAU) { SkipBytes(aBits, mKeyIndicatorWidth); }
}

void EncMPEG4Generic::SplitPayloadToSamples(const Packets::RTP& aPacket) {
    if (mIsVideo) {
        GetFragmentedAU(aPacket);
    } else {
        MPEG4Generic::SplitPayloadToSamples(aPacket);
    }
}

}  // namespace Player::Processors::RTP
