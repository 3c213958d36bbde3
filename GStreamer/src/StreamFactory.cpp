#include "StreamFactory.hpp"

#include "StreamAAC.hpp"
#include "StreamH264.hpp"
#include "StreamMP4V.hpp"

namespace nsGstVireRtspSrc {

Stream* StreamFactory::CreateStream(GstElement* aElement, StreamController* aController, PlayerAccess& aPlayer,
                                    unsigned int aTrack) {
    const Player::Properties lInfo = aPlayer.TrackInfo(aTrack);
    if (!lInfo.Has("Format")) { return nullptr; }
    const std::string lFormat = lInfo.Get("Format");
    if (StreamH264::kFormat == lFormat) { return new StreamH264(aElement, aController, aPlayer, aTrack); }
    if (StreamAAC::kFormat == lFormat) { return new StreamAAC(aElement, aController, aPlayer, aTrack); }
    if (StreamMP4V::kFormat == lFormat) { return new StreamMP4V(aElement, aController, aPlayer, aTrack); }
    throw "7630: Failed to play: no valid media session";
}

}  // namespace nsGstVireRtspSrc
