#include "debug/LibraryReporter.hpp"

#include "Player/Report.hpp"
#include "debug/Debug.hpp"

namespace nsGstVireRtspSrc {

namespace {

GstDebugLevel LevelOf(Player::Severity aSeverity) {
    switch (aSeverity) {
        case Player::Trace: return GST_LEVEL_TRACE;
        case Player::Debug: return GST_LEVEL_DEBUG;
        case Player::Info: return GST_LEVEL_INFO;
        case Player::Warning: return GST_LEVEL_WARNING;
        case Player::Error: return GST_LEVEL_ERROR;
    }
    return GST_LEVEL_LOG;
}

class LibraryReporter : public Player::Reporter {
public:
    void Report(const char* aFile, Player::UInt aLine, Player::Severity aSeverity, const char* aMessage) override {
        gst_debug_log(m_category, LevelOf(aSeverity), aFile, "", static_cast<gint>(aLine), nullptr, "%s", aMessage);
    }

private:
    GstDebugCategory* m_category = MakeDebugCategory("virertsp_player");
};

}  // namespace

void InstallLibraryReporter() {
    // Never destroyed: the library may report until the process ends.
    static LibraryReporter* const sReporter = [] {
        auto* const lReporter = new LibraryReporter;
        Player::SetReporter(lReporter);
        return lReporter;
    }();
    static_cast<void>(sReporter);
}

}  // namespace nsGstVireRtspSrc
