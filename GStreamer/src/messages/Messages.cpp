#include "messages/Messages.hpp"

#include <cstring>

#include "Player/String.hpp"
#include "Player/URL.hpp"
#include "debug/Debug.hpp"
#include "threads/ThreadMark.hpp"

#define GST_CAT_DEFAULT SourceCategory()

namespace nsGstVireRtspSrc {

namespace {

using Player::Area;

bool IsOf(Area aArea, const Player::Exception& aWhy) {
    return static_cast<unsigned short>(aArea) == aWhy.Category();
}

/// A status line refused the request: the error is the status read as a hexadecimal number.
bool IsStatus(const Player::Exception& aWhy) {
    return IsOf(Area::kRTSP, aWhy) && Player::ErrorCode::kFirstStatus <= aWhy.Error() &&
           aWhy.Error() <= Player::ErrorCode::kLastStatus;
}

std::string StatusReason(unsigned int aStatus) {
    switch (aStatus) {
        case 0x401: return "the server wants a user name and a password (401)";
        case 0x403: return "the server does not allow it (403)";
        case 0x404: return "the server has no such presentation (404); check the path";
        case 0x407: return "the proxy wants credentials (407); set \"proxy-authorization\"";
        case 0x453: return "the server says the bandwidth does not suffice (453)";
        case 0x454: return "the server has forgotten the session (454); go to READY and play again";
        case 0x503: return "the server is overloaded (503); try again later";
        default: return Player::StringWithFormat("the server answered %03x", aStatus);
    }
}

std::string Reason(const Player::Exception& aWhy) {
    if (IsStatus(aWhy)) { return StatusReason(aWhy.Error()); }
    switch (static_cast<Area>(aWhy.Category())) {
        case Area::kNetwork:
            return "the server could not be reached or does not answer; check the address and the network";
        case Area::kRTSP:
            return Player::ErrorCode::kMulticastOnly == aWhy.Error()
                       ? "the server offers multicast only, which is not supported"
                       : "the server did not keep to the protocol";
        case Area::kSDP: return "the server's description of the presentation cannot be used";
        case Area::kRTP:
            return "no ports for the media could be opened; check the UDP port range and the local address";
        default: return "the system refused";
    }
}

/// 0.10 has no code of its own for it.
gint NotAuthorized() {
    const gpointer lClass = g_type_class_ref(GST_TYPE_RESOURCE_ERROR);
    const GEnumValue* const lValue = g_enum_get_value_by_nick(static_cast<GEnumClass*>(lClass), "not-authorized");
    const gint lCode = nullptr == lValue ? gint{GST_RESOURCE_ERROR_OPEN_READ} : lValue->value;
    g_type_class_unref(lClass);
    return lCode;
}

/// The code of a resource message that applications may sort by.
gint ResourceCode(const Player::Exception& aWhy) {
    if (IsStatus(aWhy)) {
        switch (aWhy.Error()) {
            case 0x401:
            case 0x403:
            case 0x407: return NotAuthorized();
            case 0x404: return GST_RESOURCE_ERROR_NOT_FOUND;
            default: return GST_RESOURCE_ERROR_FAILED;
        }
    }
    return IsOf(Area::kNetwork, aWhy) ? GST_RESOURCE_ERROR_OPEN_READ : GST_RESOURCE_ERROR_FAILED;
}

}  // namespace

void Messages::send() const {
    if (ThreadMark::Kind::kTransition != ThreadMark::Of(m_element)) { m_outbox.send(); }
}

void Messages::post(GstMessage* aMessage) const {
    m_outbox.put(aMessage);
    send();
}

void Messages::error(gint aCode) const {
    GstStructure* const lStructure = gst_structure_new("VIRE_RTSP_SRC_MESSAGE", "Error", G_TYPE_INT, aCode, nullptr);
    post(gst_message_new_application(GST_OBJECT(m_element), lStructure));
}

void Messages::put_buffering(gint aPercent) const {
    m_outbox.put(gst_message_new_buffering(GST_OBJECT(m_element), aPercent));
}

void Messages::duration(gint64 aDuration) const {
    post(gst_message_new_duration(GST_OBJECT(m_element), GST_FORMAT_TIME, aDuration));
}

void Messages::fail(GstMessageType aType, GQuark aDomain, gint aCode, gchar* aText, const char* aDebug) const {
    GST_ERROR_OBJECT(m_element, "%s", aText);
    GError* const lError = g_error_new_literal(aDomain, aCode, aText);
    const auto lNew = GST_MESSAGE_ERROR == aType ? gst_message_new_error : gst_message_new_warning;
    post(lNew(GST_OBJECT(m_element), lError, aDebug));
    g_error_free(lError);
    g_free(aText);
}

/// What was to be changed while it plays, and what is over anyway, leaves the rest as it is.
GstMessageType Messages::TypeOf(const char* aWhat) const {
    for (const char* const lGoesOn : {"Setting up", "Pausing", "Closing", "Seeking in"}) {
        if (0 == std::strcmp(lGoesOn, aWhat)) { return GST_MESSAGE_WARNING; }
    }
    return m_options.profile().failure();
}

void Messages::warn_no_tracks(const std::string& aLocation) const {
    fail(m_options.profile().failure(), GST_STREAM_ERROR, GST_STREAM_ERROR_WRONG_TYPE,
         g_strdup_printf("%s has no track that can be played: %s can.", DisplayedLocation(aLocation).c_str(),
                         m_options.profile().formats()),
         nullptr);
}

void Messages::warn_timed_out(const std::string& aLocation) const {
    fail(m_options.profile().failure(), GST_RESOURCE_ERROR, GST_RESOURCE_ERROR_READ,
         g_strdup_printf("No media comes from %s any more: the server or the network has gone, or a firewall keeps "
                         "the UDP packets away. Go to READY and play again.",
                         DisplayedLocation(aLocation).c_str()),
         nullptr);
}

void Messages::warn_failed(const char* aWhat, const std::string& aLocation, const Player::Exception& aWhy) const {
    const std::string lReason = Reason(aWhy);
    fail(TypeOf(aWhat), GST_RESOURCE_ERROR, ResourceCode(aWhy),
         g_strdup_printf("%s %s failed: %s.", aWhat, DisplayedLocation(aLocation).c_str(), lReason.c_str()),
         aWhy.Message());
}

void Messages::warn_failed(const char* aWhat, const std::string& aLocation, const char* aWhy) const {
    fail(TypeOf(aWhat), GST_RESOURCE_ERROR, GST_RESOURCE_ERROR_FAILED,
         g_strdup_printf("%s %s failed: %s.", aWhat, DisplayedLocation(aLocation).c_str(), aWhy), nullptr);
}

void Messages::fail_flow(unsigned int aTrack, GstFlowReturn aResult) const {
    const char* const lName = gst_flow_get_name(aResult);
    const std::string lDebug =
        Player::StringWithFormat("streaming stopped, reason %s (%d)", lName, static_cast<int>(aResult));
    gchar* const lText = GST_FLOW_NOT_LINKED == aResult
                             ? g_strdup("Nothing is linked to any pad.")
                             : g_strdup_printf("What is linked to src%u does not take its media: %s.", aTrack, lName);
    fail(GST_MESSAGE_ERROR, GST_STREAM_ERROR, GST_STREAM_ERROR_FAILED, lText, lDebug.c_str());
}

void Messages::refuse(GstResourceError aCode, const char* aText) const {
    GST_WARNING_OBJECT(m_element, "%s", aText);
    if (!m_options.profile().posts_refusals()) { return; }
    fail(GST_MESSAGE_ERROR, GST_RESOURCE_ERROR, aCode, g_strdup_printf("%s.", aText), nullptr);
}

bool IsRefusal(const Player::Exception& aWhy) {
    return IsStatus(aWhy);
}

std::string DisplayedLocation(const std::string& aLocation) {
    return std::string::npos == aLocation.find("://") ? aLocation : Player::URL::WithoutUserInfo(aLocation);
}

}  // namespace nsGstVireRtspSrc
