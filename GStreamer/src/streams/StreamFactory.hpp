#pragma once

#include "settings/Profile.hpp"
#include "streams/Stream.hpp"

namespace nsGstVireRtspSrc {

class StreamFactory {
public:
    /// A new stream for the track, by the "Format" of its description; null when it has none. A format that no
    /// stream is there for throws a plain text.
    static Stream* CreateStream(GstElement* aElement, StreamController* aController, PlayerAccess& aPlayer,
                                unsigned int aTrack, const Profile& aProfile = Profile::Named(Profile::kClassic));
};

}  // namespace nsGstVireRtspSrc
