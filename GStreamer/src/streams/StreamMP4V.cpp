#include "streams/StreamMP4V.hpp"

#include <utility>

#include "Parser/ParserMpeg4.hpp"
#include "debug/Debug.hpp"
#include "threads/Held.hpp"

#define GST_CAT_DEFAULT MP4VCategory()

namespace nsGstVireRtspSrc {

namespace {

GstDebugCategory* MP4VCategory() {
    static GstDebugCategory* const sCategory = MakeDebugCategory("virertsp_streamMP4V");
    return sCategory;
}

/// The picture size and the configuration as it is.
void SetConfig(GstCaps* aCaps, Held<GstBuffer> aConfig) {
    Parser::ParserMpeg4 lParser(GST_BUFFER_DATA(aConfig.get()),
                                static_cast<unsigned int>(GST_BUFFER_SIZE(aConfig.get())));
    lParser.Parse();
    gst_caps_set_simple(aCaps, "width", G_TYPE_INT, static_cast<int>(lParser.GetVOLWidth()), "height", G_TYPE_INT,
                        static_cast<int>(lParser.GetVOLHeight()), nullptr);
    SetCodecData(aCaps, aConfig.release());
}

GstCaps* MakeCaps(const Player::Properties& aInfo) {
    Held<GstCaps> lCaps(gst_caps_new_simple("video/mpeg", "mpegversion", G_TYPE_INT, 4, "encoding-name", G_TYPE_STRING,
                                            "MP4V-ES", "systemstream", G_TYPE_BOOLEAN, FALSE, nullptr));
    Held<GstBuffer> lConfig(NewBufferFromParam(aInfo, "config"));
    if (lConfig) { SetConfig(lCaps.get(), std::move(lConfig)); }
    return lCaps.release();
}

}  // namespace

StreamMP4V::StreamMP4V(GstElement* aElement, StreamController* aController, PlayerAccess& aPlayer, unsigned int aTrack)
    : CodecStream(aElement, aController, aPlayer, aTrack, MakeCaps(aPlayer.TrackInfo(aTrack))) {
    MP4VCategory();
    GST_INFO_OBJECT(element(), "MPEG4 pad-added");
}

GstCaps* StreamMP4V::create_caps(const Player::Properties& aInfo) {
    return MakeCaps(aInfo);
}

/// Deliberately not the buffer's time but the pipeline's, so that the position goes on counting from where
/// the pipeline is.
CodecStream::Segment StreamMP4V::segment_from(GstClockTime /*aStart*/) const {
    GstClock* const lClock = gst_element_get_clock(element());
    if (nullptr == lClock) { return {-1, 0}; }
    const GstClockTime lNow = gst_clock_get_time(lClock);
    const GstClockTime lBase = gst_element_get_base_time(element());
    gst_object_unref(lClock);
    return {-1, lNow > lBase ? static_cast<gint64>(lNow - lBase) : 0};
}

}  // namespace nsGstVireRtspSrc
