#include "CodecParameters.hpp"

#include <strings.h>

#include "Failure.hpp"
#include "Parser/Base64.hpp"
#include "Player/String.hpp"

namespace Virertsp {

namespace {

[[noreturn]] void Refuse(const std::string& aSentence) {
    throw Failure(kExitNothingPlayable, aSentence);
}

std::string AudioSpecificConfigIn(const std::string& aStreamMuxConfig) {
    const Parser::StreamMuxConfig lMux(aStreamMuxConfig);
    if (0 != lMux.mVersion) { Refuse("Its LATM configuration is of version 1, which is not supported."); }
    if (!lMux.mIsOneLayer) { Refuse("Several programs or layers are in its LATM stream."); }
    return lMux.mAudioSpecificConfig;
}

}  // namespace

Player::FormatParameters FormatParametersOf(const Player::Properties& aTrack) {
    return Player::FormatParameters(aTrack.Get("FmtParams"));
}

std::vector<std::string> ParameterSetsOf(const Player::Properties& aTrack) {
    std::vector<std::string> lSets;
    Player::Split(FormatParametersOf(aTrack).Get("sprop-parameter-sets"), ',', lSets);
    for (std::string& lSet : lSets) {
        lSet = Parser::Base64Decode(lSet);
    }
    return lSets;
}

Parser::AudioConfig AudioConfigOf(const Player::Properties& aTrack) {
    std::string lConfig = FormatParametersOf(aTrack).Config();
    if (lConfig.size() < 2) { Refuse("Its description has no audio configuration."); }
    if (0 == strcasecmp(aTrack.Get("Format").c_str(), "MP4A-LATM")) { lConfig = AudioSpecificConfigIn(lConfig); }
    const Parser::AudioConfig lAudio(lConfig);
    if (!lAudio.IsUnderstood()) { Refuse("Its audio configuration can't be understood."); }
    return lAudio;
}

}  // namespace Virertsp
