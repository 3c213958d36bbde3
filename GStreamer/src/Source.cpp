#include "Source.hpp"

#include "Debug.hpp"
#include "LibraryReporter.hpp"

#define GST_CAT_DEFAULT SourceCategory()

namespace nsGstVireRtspSrc {

namespace {

/// Most presentations have sound and picture.
constexpr guint kUsualTracks = 2;

}  // namespace

GstDebugCategory* SourceCategory() {
    static GstDebugCategory* const sCategory = MakeDebugCategory("virertsp_source");
    return sCategory;
}

Source::Source(GstElement* aElement)
    : m_element(aElement),
      m_messages(aElement),
      m_player([this](const Player::Exception& aException) { handle_exception(&aException, "Setting up"); }),
      m_streams(g_ptr_array_sized_new(kUsualTracks)) {
    SourceCategory();
    InstallLibraryReporter();
}

Source::~Source() {
    delete_all_streams();
    g_ptr_array_free(m_streams, TRUE);
}

void Source::set_config_param(ConfigParamKey aKey, const char* aValue) {
    if (kLocation == aKey) {
        if (m_settings.set_location(aValue)) { new_channel(); }
    } else if (Settings::has(aKey)) {
        m_settings.set(aKey, aValue);
        guarded("Setting up", [this, aKey, aValue] {
            m_player.SetConfigParam(Settings::library_key(aKey), nullptr == aValue ? "" : aValue);
        });
    }
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
    return kNetworkAvailable == aKey && m_network.available() ? TRUE : FALSE;
}

}  // namespace nsGstVireRtspSrc
