#include "Source.hpp"

#include "Debug.hpp"
#include "ElementState.hpp"
#include "LibraryReporter.hpp"

#define GST_CAT_DEFAULT SourceCategory()

namespace nsGstVireRtspSrc {

GstDebugCategory* SourceCategory() {
    static GstDebugCategory* const sCategory = MakeDebugCategory("virertsp_source");
    return sCategory;
}

Source::Source(GstElement* aElement)
    : m_element(aElement),
      m_messages(aElement, m_options),
      m_player([this](const Player::Exception& aException) { handle_exception(&aException, "Setting up"); }),
      m_buffering(m_messages),
      m_pauseTimer(aElement,
                   [this](GstClockID aId) {
                       m_requests.ask_pause_check(aId);
                       heed_requests();
                   }),
      m_requestTimer(aElement, [this](GstClockID /*aId*/) { heed_requests(); }) {
    SourceCategory();
    InstallLibraryReporter();
}

Source::~Source() {
    delete_all_streams();
}

GstState Source::state() const {
    GST_OBJECT_LOCK(m_element);
    const GstState lState = GST_STATE(m_element);
    const GstState lNext = GST_STATE_NEXT(m_element);
    GST_OBJECT_UNLOCK(m_element);
    return lNext == m_reached ? lNext : lState;
}

void Source::set_config_param(ConfigParamKey aKey, const char* aValue) {
    if (kLocation == aKey) {
        m_requests.ask_location([this, aValue] { return m_settings.set_location(aValue); });
        heed_requests();
    } else if (Settings::has(aKey)) {
        m_settings.set(aKey, aValue);
        guarded("Setting up", [this, aKey, aValue] {
            m_player.SetConfigParam(Settings::library_key(aKey), nullptr == aValue ? "" : aValue);
        });
    }
}

void Source::set_option(guint aId, const GValue* aValue) {
    const std::string lText = m_options.set(aId, aValue);
    guarded("Setting up", [&] { m_player.SetConfigParam(Options::library_key(aId), lText); });
}

const char* Source::get_config_param(ConfigParamKey aKey) const {
    return m_settings.get(aKey);
}

gchar* Source::dup_config_param(ConfigParamKey aKey) const {
    return m_settings.dup(aKey);
}

void Source::set_config_boolean_param(ConfigParamKey aKey, int aValue) {
    if (kNetworkAvailable == aKey) { set_network_available(aValue); }
}

int Source::get_config_boolean_param(ConfigParamKey aKey) const {
    return kNetworkAvailable == aKey && m_network.said_available() ? TRUE : FALSE;
}

}  // namespace nsGstVireRtspSrc
