#include "source/Source.hpp"

#include "Player/String.hpp"
#include "debug/Debug.hpp"
#include "debug/LibraryReporter.hpp"
#include "threads/ElementState.hpp"

#define GST_CAT_DEFAULT SourceCategory()

namespace nsGstVireRtspSrc {

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
        if (kRtpBufferSize == aKey) {
            m_gathers = nullptr == aValue || '\0' == *aValue || 0 != Player::DecimalToUInt(aValue);
        }
        give(Settings::library_key(aKey), nullptr == aValue ? "" : aValue);
        if (m_options.profile().keeps_settings()) { give_time_outs(); }
    }
}

/// Bins, and pipelines, send an end of stream to the elements that call themselves sources.
void Source::change_profile() {
    give_time_outs();
    constexpr guint kSource = GST_ELEMENT_IS_SOURCE;
    GST_OBJECT_LOCK(m_element);
    guint lFlags = GST_OBJECT_FLAGS(m_element) & ~kSource;
    if (m_options.profile().heeds_events()) { lFlags |= kSource; }
    GST_OBJECT_FLAGS(m_element) = lFlags;
    GST_OBJECT_UNLOCK(m_element);
}

void Source::give(const char* aKey, const std::string& aText) {
    guarded("Setting up", [&] { m_player.SetConfigParam(aKey, aText); });
}

void Source::give_time_outs() {
    const bool lFollow = m_options.profile().keeps_settings();
    for (const ConfigParamKey lKey : {kTimeoutRtspAfter, kTimeoutRtpAfter}) {
        const std::string lText = m_settings.text(lKey);
        // None at all would end everything at once; the library does not take it.
        const bool lGood = lFollow && 0 != Player::DecimalToUInt(lText);
        give(Settings::session_key(lKey), lGood ? lText : "");
    }
}

void Source::give_settings() {
    for (int lKey = kUseProxy; lKey < kNetworkAvailable; ++lKey) {
        const std::string lText = m_settings.text(static_cast<ConfigParamKey>(lKey));
        if (!lText.empty()) { give(Settings::library_key(static_cast<ConfigParamKey>(lKey)), lText); }
    }
    for (guint lId = Options::kProfile; lId < Options::kEnd; ++lId) {
        const std::string lText = m_options.text(lId);
        if (!lText.empty()) { give(Options::library_key(lId), lText); }
    }
    give_time_outs();
}

void Source::set_option(guint aId, const GValue* aValue) {
    const std::string lText = m_options.set(aId, aValue);
    give(Options::library_key(aId), lText);
    if (Options::kProfile == aId) { change_profile(); }
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
