#include "Parser/AudioConfig.hpp"

#include "Player/BitReader.hpp"
#include "Player/String.hpp"

namespace Parser {

namespace {

using Player::BitReader;

constexpr UInt kRates[] = {96000, 88200, 64000, 48000, 44100, 32000, 24000, 22050, 16000, 12000, 11025, 8000, 7350};
/// In place of an index: the rate itself follows.
constexpr UInt kExplicitRate = 15;
constexpr UInt kEscapedObjectType = 31;

BitReader BitsOf(const std::string& aBytes) {
    return {reinterpret_cast<const Byte*>(aBytes.data()), static_cast<UInt>(aBytes.size())};
}

UInt ReadObjectType(BitReader& aBits) {
    const UInt lType = aBits.Read(5);
    return kEscapedObjectType == lType ? 32 + aBits.Read(6) : lType;
}

UInt ReadRate(BitReader& aBits) {
    const UInt lIndex = aBits.Read(4);
    if (kExplicitRate == lIndex) { return aBits.Read(24); }
    return lIndex < sizeof(kRates) / sizeof(*kRates) ? kRates[lIndex] : 0;
}

}  // namespace

UInt RateIndex(UInt aRate) {
    UInt lIndex = 0;
    for (const UInt lRate : kRates) {
        if (lRate == aRate) { return lIndex; }
        ++lIndex;
    }
    return kExplicitRate;
}

StreamMuxConfig::StreamMuxConfig(const std::string& aBytes) {
    BitReader lBits = BitsOf(aBytes);
    mVersion = lBits.Read(1);
    lBits.Skip(1 + 6);
    mIsOneLayer = 0 == lBits.Read(4 + 3);
    if (aBytes.size() <= 1 || 0 != mVersion) { return; }
    while (!lBits.AtEnd()) {
        mAudioSpecificConfig += static_cast<char>(lBits.Read(8));
    }
}

/// Object type, rate, channels; with an extension in front its rate and the core's object type; then the first
/// bit of the AAC coders' own part.
AudioConfig::AudioConfig(const std::string& aAudioSpecificConfig) {
    BitReader lBits = BitsOf(aAudioSpecificConfig);
    mObjectType = ReadObjectType(lBits);
    mRate = ReadRate(lBits);
    mOutputRate = mRate;
    mChannelConfiguration = lBits.Read(4);
    if (kSBR == mObjectType || kPS == mObjectType) {
        mExtension = mObjectType;
        mOutputRate = ReadRate(lBits);
        mObjectType = ReadObjectType(lBits);
    }
    mShortFrames = 0 != lBits.Read(1);
}

UInt AudioConfig::Channels() const {
    constexpr UInt kChannels[] = {0, 1, 2, 3, 4, 5, 6, 8, 0, 0, 0, 7, 8, 0, 8, 0};
    const UInt lChannels = kChannels[mChannelConfiguration & 15];
    // Parametric stereo makes two out of one.
    return kPS == mExtension && 1 == lChannels ? 2 : lChannels;
}

std::string AudioConfig::Name() const {
    if (kPS == mExtension) { return "HE-AAC v2"; }
    if (kSBR == mExtension) { return "HE-AAC"; }
    switch (mObjectType) {
        case kMain: return "AAC Main";
        case kLC: return "AAC LC";
        case kSSR: return "AAC SSR";
        case kLTP: return "AAC LTP";
        default: return Player::StringWithFormat("MPEG-4 audio object type %u", mObjectType);
    }
}

}  // namespace Parser
