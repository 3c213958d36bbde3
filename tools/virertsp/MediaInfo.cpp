#include "MediaInfo.hpp"

#include <strings.h>

#include "CodecParameters.hpp"
#include "Failure.hpp"
#include "FormatName.hpp"
#include "Parser/ParserMpeg4.hpp"
#include "Parser/SpsPpsParser.hpp"
#include "Player/String.hpp"
#include "writers/Writer.hpp"

namespace Virertsp {

namespace {

using Player::Properties;
using Player::StringWithFormat;

struct Named {
    unsigned mNumber;
    const char* mName;
};

/// ITU-T H.264 annex A.
constexpr Named kH264Profiles[] = {
    {66, "Baseline"},
    {77, "Main"},
    {88, "Extended"},
    {100, "High"},
    {110, "High 10"},
    {122, "High 4:2:2"},
    {244, "High 4:4:4 Predictive"},
};

/// ISO/IEC 14496-2 annex G: profile and level in one byte.
constexpr Named kVisualProfiles[] = {
    {0x01, "Simple@L1"},          {0x02, "Simple@L2"},          {0x03, "Simple@L3"},
    {0x04, "Simple@L4a"},         {0x05, "Simple@L5"},          {0x06, "Simple@L6"},
    {0x08, "Simple@L0"},          {0x09, "Simple@L0b"},         {0xF0, "Advanced Simple@L0"},
    {0xF1, "Advanced Simple@L1"}, {0xF2, "Advanced Simple@L2"}, {0xF3, "Advanced Simple@L3"},
    {0xF4, "Advanced Simple@L4"}, {0xF5, "Advanced Simple@L5"}, {0xF7, "Advanced Simple@L3b"},
};

template <std::size_t N>
std::string NameOf(const Named (&aTable)[N], unsigned aNumber) {
    for (const Named& lNamed : aTable) {
        if (lNamed.mNumber == aNumber) { return lNamed.mName; }
    }
    return StringWithFormat("%u", aNumber);
}

/// profile_idc, constraint flags and level_idc: the first three bytes of each sequence parameter set.
void TellH264Profile(unsigned aProfile, unsigned aConstraints, unsigned aLevel, MediaInfo& aInfo) {
    constexpr unsigned kBaseline = 66;
    constexpr unsigned kConstrained = 0x40;
    aInfo.mProfile = NameOf(kH264Profiles, aProfile);
    if (kBaseline == aProfile && 0 != (aConstraints & kConstrained)) { aInfo.mProfile = "Constrained Baseline"; }
    aInfo.mLevel = StringWithFormat("%u", aLevel / 10);
    if (0 != aLevel % 10) { aInfo.mLevel += StringWithFormat(".%u", aLevel % 10); }
}

void TellH264(const Properties& aTrack, MediaInfo& aInfo) {
    aInfo.mFormat = "H.264";
    const std::vector<std::string> lSets = ParameterSetsOf(aTrack);
    if (lSets.size() >= 2) {
        const Parser::SpsPpsParser lParser(lSets[0], lSets[1]);
        if (0 != lParser.GetWidth()) {
            aInfo.mWidth = lParser.GetWidth();
            aInfo.mHeight = lParser.GetHeight();
            const auto lConstraints = static_cast<unsigned char>(lSets[0][2]);
            return TellH264Profile(lParser.GetProfileIndication(), lConstraints, lParser.GetLevelIndication(), aInfo);
        }
    }
    const std::string lText = FormatParametersOf(aTrack).Get("profile-level-id");
    const unsigned lValue = Player::HexToUInt(lText);
    if (!lText.empty()) { TellH264Profile(lValue >> 16 & 0xFF, lValue >> 8 & 0xFF, lValue & 0xFF, aInfo); }
}

/// The byte after the start code of a visual object sequence; else "profile-level-id", which is 1 if it is not there
/// (RFC 6416 section 7.1).
unsigned VisualProfile(const Player::FormatParameters& aParameters) {
    constexpr char kSequence[] = {0, 0, 1, '\xB0'};
    const std::string lConfig = aParameters.Config();
    const std::size_t lAt = lConfig.find(kSequence, 0, sizeof(kSequence));
    if (std::string::npos != lAt && lAt + sizeof(kSequence) < lConfig.size()) {
        return static_cast<unsigned char>(lConfig[lAt + sizeof(kSequence)]);
    }
    return Player::DecimalToUInt(aParameters.Get("profile-level-id"), 1);
}

void TellVisual(const Properties& aTrack, MediaInfo& aInfo) {
    aInfo.mFormat = "MPEG-4 visual";
    const Player::FormatParameters lParameters = FormatParametersOf(aTrack);
    aInfo.mProfile = NameOf(kVisualProfiles, VisualProfile(lParameters));
    const std::string lConfig = lParameters.Config();
    Parser::ParserMpeg4 lParser(reinterpret_cast<const unsigned char*>(lConfig.data()),
                                static_cast<unsigned>(lConfig.size()));
    lParser.Parse();
    aInfo.mWidth = lParser.GetVOLWidth();
    aInfo.mHeight = lParser.GetVOLHeight();
}

void TellAudioOfDescription(const Properties& aTrack, MediaInfo& aInfo) {
    aInfo.mRate = Player::DecimalToUInt(aTrack.Get("TimeRes"));
    aInfo.mChannels = Player::DecimalToUInt(aTrack.Get("EncParams"), 1);
}

void TellAudio(const Properties& aTrack, MediaInfo& aInfo) {
    aInfo.mFormat = "MPEG-4 audio";
    try {
        const Parser::AudioConfig lConfig = AudioConfigOf(aTrack);
        aInfo.mFormat = lConfig.Name();
        aInfo.mRate = lConfig.mOutputRate;
        aInfo.mChannels = lConfig.Channels();
    } catch (const Failure&) { TellAudioOfDescription(aTrack, aInfo); }
}

void TellEncryptedAudio(const Properties& aTrack, MediaInfo& aInfo) {
    TellAudio(aTrack, aInfo);
    aInfo.mFormat += ", encrypted";
}

void TellAmr(const Properties& aTrack, MediaInfo& aInfo) {
    aInfo.mFormat = "AMR";
    TellAudioOfDescription(aTrack, aInfo);
}

struct Format {
    const char* mName;
    void (*mTell)(const Properties& aTrack, MediaInfo& aInfo);
};

constexpr Format kFormats[] = {
    {"H264", TellH264},           {"MP4V-ES", TellVisual}, {"MP4A-LATM", TellAudio},
    {"mpeg4-generic", TellAudio}, {"AMR", TellAmr},        {"enc-mpeg4-generic", TellEncryptedAudio},
};

void TellFile(const Properties& aTrack, MediaInfo& aInfo) {
    try {
        aInfo.mExtension = FileExtension(aTrack);
    } catch (const Failure& lFailure) { aInfo.mObstacle = lFailure.what(); }
}

}  // namespace

MediaInfo MediaInfo::Of(const Properties& aTrack) {
    MediaInfo lInfo;
    lInfo.mFormat = FormatName(aTrack);
    const std::string lName = lInfo.mFormat;
    for (const Format& lFormat : kFormats) {
        if (0 == strcasecmp(lName.c_str(), lFormat.mName)) {
            lInfo.mPlayedAs = lFormat.mName;
            lFormat.mTell(aTrack, lInfo);
        }
    }
    if (0 == lInfo.mWidth || 0 == lInfo.mHeight) {
        lInfo.mWidth = Player::DecimalToUInt(aTrack.Get("Width"));
        lInfo.mHeight = Player::DecimalToUInt(aTrack.Get("Height"));
    }
    TellFile(aTrack, lInfo);
    return lInfo;
}

std::string MediaInfo::Summary() const {
    std::string lText = mFormat;
    if (!mProfile.empty()) { lText += " " + mProfile; }
    if (!mLevel.empty()) { lText += ", level " + mLevel; }
    if (0 != mWidth) { lText += StringWithFormat(", %ux%u", mWidth, mHeight); }
    if (0 != mRate) { lText += StringWithFormat(", %u Hz", mRate); }
    if (0 != mChannels) { lText += StringWithFormat(", %u channel%s", mChannels, 1 == mChannels ? "" : "s"); }
    return lText;
}

}  // namespace Virertsp
