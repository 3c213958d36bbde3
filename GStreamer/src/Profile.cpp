#include "Profile.hpp"

namespace nsGstVireRtspSrc {

namespace {

/// Failures are left to the application, which reads the application message: an error would end its pipeline.
class Classic : public Profile {
public:
    bool plays_newer_formats() const override { return false; }
    bool waits_for_media() const override { return false; }
    const char* formats() const override { return "H.264, MPEG-4 video and MPEG-4 audio (LATM)"; }
    GstMessageType failure() const override { return GST_MESSAGE_WARNING; }
    bool posts_refusals() const override { return false; }
};

class Modern : public Profile {
public:
    bool plays_newer_formats() const override { return true; }
    bool waits_for_media() const override { return true; }
    const char* formats() const override { return "H.264, MPEG-4 video, MPEG-4 audio (LATM and generic) and AMR"; }
    GstMessageType failure() const override { return GST_MESSAGE_ERROR; }
    bool posts_refusals() const override { return true; }
};

}  // namespace

const Profile& Profile::Named(Name aName) {
    static const Classic sClassic;
    static const Modern sModern;
    if (kModern == aName) { return sModern; }
    return sClassic;
}

}  // namespace nsGstVireRtspSrc
