#include "support/DebugCapture.hpp"

#include <algorithm>

#include "support/Leg.hpp"

namespace ElementTest {

namespace {

/// What a level is called, the padding of its column left off.
std::string NameOf(GstDebugLevel aLevel) {
    std::string lName = gst_debug_level_get_name(aLevel);
    lName.erase(std::remove(lName.begin(), lName.end(), ' '), lName.end());
    return lName;
}

}  // namespace

DebugCapture::DebugCapture(const char* aCategory) : mCategory(aCategory) {
    gst_debug_set_active(TRUE);
    gst_debug_set_threshold_for_name(aCategory, GST_LEVEL_TRACE);
    gst_debug_remove_log_function(gst_debug_log_default);
    AddLogFunction(OnMessage, this);
}

DebugCapture::~DebugCapture() {
    gst_debug_remove_log_function_by_data(this);
    gst_debug_unset_threshold_for_name(mCategory.c_str());
}

std::size_t DebugCapture::Count(GstDebugLevel aLevel, const std::string& aText) const {
    const std::lock_guard<std::mutex> lLock(mMutex);
    return static_cast<std::size_t>(std::count(mMessages.begin(), mMessages.end(), NameOf(aLevel) + " " + aText));
}

std::vector<std::string> DebugCapture::All() const {
    const std::lock_guard<std::mutex> lLock(mMutex);
    return mMessages;
}

void DebugCapture::OnMessage(GstDebugCategory* aCategory, GstDebugLevel aLevel, const gchar*, const gchar*, gint,
                             GObject*, GstDebugMessage* aMessage, gpointer aThis) {
    auto* const lThis = static_cast<DebugCapture*>(aThis);
    if (lThis->mCategory != gst_debug_category_get_name(aCategory)) { return; }
    const std::lock_guard<std::mutex> lLock(lThis->mMutex);
    lThis->mMessages.push_back(NameOf(aLevel) + " " + gst_debug_message_get(aMessage));
}

}  // namespace ElementTest
