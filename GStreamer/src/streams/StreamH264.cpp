#include "streams/StreamH264.hpp"

#include "Parser/Base64.hpp"
#include "Parser/SpsPpsParser.hpp"
#include "Player/String.hpp"
#include "debug/Debug.hpp"
#include "threads/Held.hpp"

#define GST_CAT_DEFAULT H264Category()

namespace nsGstVireRtspSrc {

namespace {

constexpr const char* kParameterSets = "sprop-parameter-sets=";

GstDebugCategory* H264Category() {
    static GstDebugCategory* const sCategory = MakeDebugCategory("virertsp_streamH264");
    return sCategory;
}

/// A parameter set, preceded by its 16-bit big-endian length.
void AppendSet(std::string& aBytes, const std::string& aSet) {
    aBytes += static_cast<char>(aSet.size() >> 8 & 0xFF);
    aBytes += static_cast<char>(aSet.size() & 0xFF);
    aBytes += aSet;
}

GstCaps* MakeCaps(const Player::Properties& aInfo) {
    Held<GstCaps> lCaps(gst_caps_new_simple("video/x-h264", "encoding-name", G_TYPE_STRING, "H264", nullptr));
    const std::string lParams = aInfo.Get("FmtParams");
    const auto lFound = lParams.find(kParameterSets);
    if (std::string::npos == lFound) { return lCaps.release(); }

    std::string lBytes;
    unsigned int lWidth = 0;
    unsigned int lHeight = 0;
    // To the end of the text: the parameter is expected to come last.
    StreamH264::GetDecoderSpecificInfo(lParams.substr(lFound + std::string(kParameterSets).size()), lBytes, lWidth,
                                       lHeight);
    if (0 != lWidth && 0 != lHeight) {
        GST_DEBUG("Set Width = %d\n", static_cast<int>(lWidth));
        GST_DEBUG("Set Hight = %d\n", static_cast<int>(lHeight));
        gst_caps_set_simple(lCaps.get(), "width", G_TYPE_INT, static_cast<int>(lWidth), "height", G_TYPE_INT,
                            static_cast<int>(lHeight), nullptr);
    }
    SetCodecData(lCaps.get(), NewBuffer(lBytes.data(), lBytes.size()));
    return lCaps.release();
}

}  // namespace

StreamH264::StreamH264(GstElement* aElement, StreamController* aController, PlayerAccess& aPlayer, unsigned int aTrack)
    : CodecStream(aElement, aController, aPlayer, aTrack, MakeCaps(aPlayer.TrackInfo(aTrack))) {
    H264Category();
    GST_INFO_OBJECT(element(), "H264 pad-added");
}

GstCaps* StreamH264::create_caps(const Player::Properties& aInfo) {
    return MakeCaps(aInfo);
}

void StreamH264::GetDecoderSpecificInfo(const std::string& aSprop, std::string& aBytes, unsigned int& aWidth,
                                        unsigned int& aHeight) {
    std::vector<std::string> lSets;
    // With a comma of its own at its end even an empty piece counts.
    Player::Split(aSprop + ",", ',', lSets, "");
    if (2 != lSets.size()) {
        GST_ERROR("Parameter vector has size: %d != 2\n", static_cast<int>(lSets.size()));
        lSets.resize(2);
    }
    const std::string lSps = Parser::Base64Decode(lSets[0]);
    const std::string lPps = Parser::Base64Decode(lSets[1]);
    const Parser::SpsPpsParser lParser(lSps, lPps);
    aWidth = lParser.GetWidth();
    aHeight = lParser.GetHeight();

    aBytes.clear();
    aBytes += '\x01';  // version
    aBytes += static_cast<char>(lParser.GetProfileIndication());
    aBytes += lSps.size() > 2 ? lSps[2] : '\0';  // constraint flags
    aBytes += static_cast<char>(lParser.GetLevelIndication());
    aBytes += '\xFF';  // NAL unit lengths take 4 bytes
    aBytes += '\xE1';  // one SPS
    AppendSet(aBytes, lSps);
    aBytes += '\x01';  // one PPS
    AppendSet(aBytes, lPps);
}

}  // namespace nsGstVireRtspSrc
