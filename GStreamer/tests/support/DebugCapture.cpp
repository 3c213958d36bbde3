#include "support/DebugCapture.hpp"

#include <algorithm>
#include <mutex>

#include "support/Leg.hpp"

namespace ElementTest {

namespace {

/// What a level is called, the padding of its column left off.
std::string NameOf(GstDebugLevel aLevel) {
    std::string lName = gst_debug_level_get_name(aLevel);
    lName.erase(std::remove(lName.begin(), lName.end(), ' '), lName.end());
    return lName;
}

/// Those that live, and under the mutex their messages as well.
std::mutex gMutex;
std::vector<DebugCapture*> gCaptures;

}  // namespace

void DebugCapture::Install() {
    gst_debug_set_active(TRUE);
    gst_debug_remove_log_function(gst_debug_log_default);
    AddLogFunction(OnMessage, nullptr);
}

DebugCapture::DebugCapture(const char* aCategory) : mCategory(aCategory) {
    {
        const std::lock_guard<std::mutex> lLock(gMutex);
        gCaptures.push_back(this);
    }
    gst_debug_set_threshold_for_name(aCategory, GST_LEVEL_TRACE);
}

DebugCapture::~DebugCapture() {
    gst_debug_unset_threshold_for_name(mCategory.c_str());
    const std::lock_guard<std::mutex> lLock(gMutex);
    gCaptures.erase(std::find(gCaptures.begin(), gCaptures.end(), this));
}

std::size_t DebugCapture::Count(GstDebugLevel aLevel, const std::string& aText) const {
    const std::lock_guard<std::mutex> lLock(gMutex);
    return static_cast<std::size_t>(std::count(mMessages.begin(), mMessages.end(), NameOf(aLevel) + " " + aText));
}

std::vector<std::string> DebugCapture::All() const {
    const std::lock_guard<std::mutex> lLock(gMutex);
    return mMessages;
}

void DebugCapture::OnMessage(GstDebugCategory* aCategory, GstDebugLevel aLevel, const gchar*, const gchar*, gint,
                             GObject*, GstDebugMessage* aMessage, gpointer) {
    // Not copied: a test may have let the heap run out.
    const char* const lName = gst_debug_category_get_name(aCategory);
    const std::lock_guard<std::mutex> lLock(gMutex);
    for (DebugCapture* const lCapture : gCaptures) {
        if (lCapture->mCategory != lName) { continue; }
        lCapture->mMessages.push_back(NameOf(aLevel) + " " + gst_debug_message_get(aMessage));
    }
}

}  // namespace ElementTest
