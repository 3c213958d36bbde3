#include "streams/StreamFactory.hpp"

#include "streams/StreamAAC.hpp"
#include "streams/StreamAMR.hpp"
#include "streams/StreamGeneric.hpp"
#include "streams/StreamH264.hpp"
#include "streams/StreamMP4V.hpp"

namespace nsGstVireRtspSrc {

namespace {

/// Today's servers spell the names of formats as they like. Null where it is none of these.
Stream* CreateNewer(const Player::Properties& aInfo, GstElement* aElement, StreamController* aController,
                    PlayerAccess& aPlayer, unsigned int aTrack) {
    const std::string lFormat = aInfo.Get("Format");
    const auto lIs = [&lFormat](const char* aName) { return 0 == g_ascii_strcasecmp(aName, lFormat.c_str()); };
    if (lIs(StreamH264::kFormat)) { return new StreamH264(aElement, aController, aPlayer, aTrack); }
    if (lIs(StreamAAC::kFormat)) { return new StreamAAC(aElement, aController, aPlayer, aTrack); }
    if (lIs(StreamMP4V::kFormat)) { return new StreamMP4V(aElement, aController, aPlayer, aTrack); }
    if (lIs(StreamAMR::kFormat)) { return new StreamAMR(aElement, aController, aPlayer, aTrack); }
    // The format is also that of pictures and of streams of the MPEG-4 system.
    if (lIs(StreamGeneric::kFormat) && aInfo.Is("MediaType", "audio")) {
        return new StreamGeneric(aElement, aController, aPlayer, aTrack);
    }
    return nullptr;
}

}  // namespace

Stream* StreamFactory::CreateStream(GstElement* aElement, StreamController* aController, PlayerAccess& aPlayer,
                                    unsigned int aTrack, const Profile& aProfile) {
    const Player::Properties lInfo = aPlayer.TrackInfo(aTrack);
    if (!lInfo.Has("Format")) { return nullptr; }
    const std::string lFormat = lInfo.Get("Format");
    if (StreamH264::kFormat == lFormat) { return new StreamH264(aElement, aController, aPlayer, aTrack); }
    if (StreamAAC::kFormat == lFormat) { return new StreamAAC(aElement, aController, aPlayer, aTrack); }
    if (StreamMP4V::kFormat == lFormat) { return new StreamMP4V(aElement, aController, aPlayer, aTrack); }
    if (aProfile.plays_newer_formats()) {
        Stream* const lStream = CreateNewer(lInfo, aElement, aController, aPlayer, aTrack);
        if (nullptr != lStream) { return lStream; }
    }
    throw "7630: Failed to play: no valid media session";
}

}  // namespace nsGstVireRtspSrc
