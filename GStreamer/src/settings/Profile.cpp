#include "settings/Profile.hpp"

namespace nsGstVireRtspSrc {

namespace {

/// Failures are left to the application, which reads the application message: an error would end its pipeline.
class Classic : public Profile {
public:
    bool plays_newer_formats() const override { return false; }
    bool waits_for_media() const override { return false; }
    const char* formats() const override { return "H.264, MPEG-4 video and MPEG-4 audio (LATM)"; }
    GstMessageType failure() const override { return GST_MESSAGE_WARNING; }
    bool secures() const override { return false; }
    bool posts_refusals() const override { return false; }
    bool pauses_in_place() const override { return false; }
    bool heeds_events() const override { return false; }
    bool ends_with_its_peer() const override { return false; }
    bool fails_with_its_peers() const override { return false; }
    bool keeps_settings() const override { return false; }
    bool positions_are_of_media() const override { return false; }
    bool prints_notes() const override { return true; }
};

class Modern : public Profile {
public:
    bool plays_newer_formats() const override { return true; }
    bool waits_for_media() const override { return true; }
    const char* formats() const override { return "H.264, MPEG-4 video, MPEG-4 audio (LATM and generic) and AMR"; }
    GstMessageType failure() const override { return GST_MESSAGE_ERROR; }
    bool secures() const override { return true; }
    bool posts_refusals() const override { return true; }
    bool pauses_in_place() const override { return true; }
    bool heeds_events() const override { return true; }
    bool ends_with_its_peer() const override { return true; }
    bool fails_with_its_peers() const override { return true; }
    bool keeps_settings() const override { return true; }
    bool positions_are_of_media() const override { return true; }
    bool prints_notes() const override { return false; }
};

}  // namespace

const Profile& Profile::Named(Name aName) {
    static const Classic sClassic;
    static const Modern sModern;
    if (kModern == aName) { return sModern; }
    return sClassic;
}

}  // namespace nsGstVireRtspSrc
