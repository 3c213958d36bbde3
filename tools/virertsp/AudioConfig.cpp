#include "AudioConfig.hpp"

#include <strings.h>

#include "Failure.hpp"
#include "FormatParameters.hpp"
#include "Player/BitReader.hpp"
#include "Player/String.hpp"

namespace Virertsp {

namespace {

constexpr unsigned kRates[] = {96000, 88200, 64000, 48000, 44100, 32000, 24000, 22050, 16000, 12000, 11025, 8000, 7350};
/// In place of an index: the rate itself follows.
constexpr unsigned kExplicitRate = 15;
constexpr unsigned kEscapedObjectType = 31;

[[noreturn]] void Refuse(const std::string& aSentence) {
    throw Failure(kExitNothingPlayable, aSentence);
}

unsigned ReadObjectType(Player::BitReader& aBits) {
    const unsigned lType = aBits.Read(5);
    return kEscapedObjectType == lType ? 32 + aBits.Read(6) : lType;
}

unsigned ReadRate(Player::BitReader& aBits) {
    const unsigned lIndex = aBits.Read(4);
    if (kExplicitRate == lIndex) { return aBits.Read(24); }
    return lIndex < sizeof(kRates) / sizeof(*kRates) ? kRates[lIndex] : 0;
}

/// Object type, rate, channels; with an extension in front its rate and the core's object type; then the first
/// bit of the AAC coders' own part.
AudioConfig ReadAudioSpecificConfig(Player::BitReader& aBits) {
    AudioConfig lConfig;
    lConfig.mObjectType = ReadObjectType(aBits);
    lConfig.mRate = ReadRate(aBits);
    lConfig.mOutputRate = lConfig.mRate;
    lConfig.mChannelConfiguration = aBits.Read(4);
    if (AudioConfig::kSBR == lConfig.mObjectType || AudioConfig::kPS == lConfig.mObjectType) {
        lConfig.mExtension = lConfig.mObjectType;
        lConfig.mOutputRate = ReadRate(aBits);
        lConfig.mObjectType = ReadObjectType(aBits);
    }
    lConfig.mShortFrames = 0 != aBits.Read(1);
    return lConfig;
}

/// StreamMuxConfig (ISO/IEC 14496-3 section 1.7.3): audioMuxVersion (1 bit), allStreamsSameTimeFraming (1),
/// numSubFrames (6), numProgram (4), numLayer (3), and in version 0 the first AudioSpecificConfig.
void StepIntoStreamMuxConfig(Player::BitReader& aBits) {
    if (0 != aBits.Read(1)) { Refuse("Its LATM configuration is of version 1, which is not understood here."); }
    aBits.Skip(1 + 6);
    if (0 != aBits.Read(4 + 3)) { Refuse("Several programs or layers are in its LATM stream."); }
}

}  // namespace

unsigned RateIndex(unsigned aRate) {
    unsigned lIndex = 0;
    for (const unsigned lRate : kRates) {
        if (lRate == aRate) { return lIndex; }
        ++lIndex;
    }
    return kExplicitRate;
}

AudioConfig AudioConfig::Of(const Player::Properties& aTrack) {
    const std::string lConfig = FormatParameters(aTrack).Config();
    if (lConfig.size() < 2) { Refuse("Its description has no audio configuration."); }
    Player::BitReader lBits(reinterpret_cast<const Player::Byte*>(lConfig.data()),
                            static_cast<Player::UInt>(lConfig.size()));
    if (0 == strcasecmp(aTrack.Get("Format").c_str(), "MP4A-LATM")) { StepIntoStreamMuxConfig(lBits); }
    const AudioConfig lAudio = ReadAudioSpecificConfig(lBits);
    if (0 == lAudio.mObjectType || 0 == lAudio.mRate) { Refuse("Its audio configuration can't be understood."); }
    return lAudio;
}

unsigned AudioConfig::Channels() const {
    constexpr unsigned kChannels[] = {0, 1, 2, 3, 4, 5, 6, 8, 0, 0, 0, 7, 8, 0, 8, 0};
    const unsigned lChannels = kChannels[mChannelConfiguration & 15];
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

}  // namespace Virertsp
