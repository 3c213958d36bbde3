#include "settings/Options.hpp"

namespace nsGstVireRtspSrc {

namespace {

constexpr guint kUdp = 1;
constexpr guint kTcp = 2;

GType ProfileType() {
    static gsize sType = 0;
    if (g_once_init_enter(&sType)) {
        static const GEnumValue kValues[] = {{Profile::kClassic, "As it always was", "classic"},
                                             {Profile::kModern, "For today's servers and players", "modern"},
                                             {0, nullptr, nullptr}};
        g_once_init_leave(&sType, g_enum_register_static("GstVireRtspSrcProfile", kValues));
    }
    return sType;
}

GType TransportsType() {
    static gsize sType = 0;
    if (g_once_init_enter(&sType)) {
        static const GFlagsValue kValues[] = {
            {kUdp, "UDP", "udp"}, {kTcp, "TCP, within the RTSP connection", "tcp"}, {0, nullptr, nullptr}};
        g_once_init_leave(&sType, g_flags_register_static("GstVireRtspSrcTransports", kValues));
    }
    return sType;
}

GParamSpec* ProfileSpec() {
    return g_param_spec_enum("profile", "Profile",
                             "Whether to behave as ever (classic) or as today's servers and players need it (modern)",
                             ProfileType(), Profile::kClassic, G_PARAM_READWRITE);
}

GParamSpec* UserIdSpec() {
    return g_param_spec_string("user-id", "User name",
                               "Name for servers that ask for one (empty = that of the location)", nullptr,
                               G_PARAM_READWRITE);
}

GParamSpec* UserPwSpec() {
    return g_param_spec_string("user-pw", "Password", "Password that goes with the user name", nullptr,
                               G_PARAM_READWRITE);
}

GParamSpec* TransportsSpec() {
    return g_param_spec_flags("transports", "Transports",
                              "Transports to ask for, UDP first (none = UDP in the profile classic, both in modern)",
                              TransportsType(), 0, G_PARAM_READWRITE);
}

GParamSpec* UdpBufferSizeSpec() {
    return g_param_spec_uint("udp-buffer-size", "UDP buffer size",
                             "Receive buffer of each track's socket in bytes (0 = the profile's)", 0, G_MAXINT, 0,
                             G_PARAM_READWRITE);
}

GParamSpec* StatsSpec() {
    return g_param_spec_boxed("stats", "Statistics", "A structure with one per track: packets, bytes, losses, times",
                              GST_TYPE_STRUCTURE, G_PARAM_READABLE);
}

GParamSpec* TlsAuthoritiesSpec() {
    return g_param_spec_string("tls-authorities", "TLS authorities",
                               "File of certificates (PEM) that vouch for rtsps servers (empty = the system's)",
                               nullptr, G_PARAM_READWRITE);
}

std::string ProfileText(const GValue* aValue) {
    return Profile::kModern == g_value_get_enum(aValue) ? "modern" : "classic";
}

std::string StringText(const GValue* aValue) {
    const gchar* const lText = g_value_get_string(aValue);
    return nullptr == lText ? "" : lText;
}

std::string TransportsText(const GValue* aValue) {
    const guint lChosen = g_value_get_flags(aValue);
    if ((kUdp | kTcp) == lChosen) { return "udp,tcp"; }
    return kUdp == lChosen ? "udp" : kTcp == lChosen ? "tcp" : "";
}

std::string SizeText(const GValue* aValue) {
    const guint lSize = g_value_get_uint(aValue);
    return 0 == lSize ? "" : std::to_string(lSize);
}

struct Option {
    const char* mLibraryKey;
    GParamSpec* (*mSpec)();
    std::string (*mText)(const GValue*);
};

/// By id.
constexpr Option kOptions[] = {{"RTSP:Profile", ProfileSpec, ProfileText},
                               {"RTSP:UserName", UserIdSpec, StringText},
                               {"RTSP:Password", UserPwSpec, StringText},
                               {"RTSP:Transports", TransportsSpec, TransportsText},
                               {"RTSP:UDPBuffer", UdpBufferSizeSpec, SizeText},
                               {nullptr, StatsSpec, nullptr},
                               {"RTSP:TLSAuthorities", TlsAuthoritiesSpec, StringText}};

const Option& OptionOf(guint aId) {
    return kOptions[aId - Options::kProfile];
}

}  // namespace

void Options::install(GObjectClass* aClass) {
    for (guint lId = kProfile; lId < kEnd; ++lId) {
        g_object_class_install_property(aClass, lId, OptionOf(lId).mSpec());
    }
}

const char* Options::library_key(guint aId) {
    return has(aId) ? OptionOf(aId).mLibraryKey : nullptr;
}

Options::Options() {
    for (guint lId = kProfile; lId < kEnd; ++lId) {
        if (!has(lId)) { continue; }
        GParamSpec* const lSpec = g_param_spec_ref_sink(OptionOf(lId).mSpec());
        GValue* const lValue = &m_values[lId - kProfile];
        g_value_init(lValue, G_PARAM_SPEC_VALUE_TYPE(lSpec));
        g_param_value_set_default(lSpec, lValue);
        g_param_spec_unref(lSpec);
    }
}

Options::~Options() {
    for (guint lId = kProfile; lId < kEnd; ++lId) {
        if (has(lId)) { g_value_unset(&m_values[lId - kProfile]); }
    }
}

std::string Options::set(guint aId, const GValue* aValue) {
    if (!has(aId)) { return std::string(); }
    {
        const Lock lLock(m_mutex);
        g_value_copy(aValue, &m_values[aId - kProfile]);
    }
    if (kProfile == aId) { m_profile = &Profile::Named(static_cast<Profile::Name>(g_value_get_enum(aValue))); }
    return OptionOf(aId).mText(aValue);
}

std::string Options::text(guint aId) const {
    if (!has(aId)) { return std::string(); }
    const Lock lLock(m_mutex);
    return OptionOf(aId).mText(&m_values[aId - kProfile]);
}

void Options::get(guint aId, GValue* aValue) const {
    if (!has(aId)) { return; }
    const Lock lLock(m_mutex);
    g_value_copy(&m_values[aId - kProfile], aValue);
}

}  // namespace nsGstVireRtspSrc
