#pragma once

#include <glib.h>

#include <mutex>
#include <string>
#include <vector>

namespace ElementTest {

/// Catches the warnings and criticals that GLib logs for a domain (null: for none) while it lives.
class LogCapture {
public:
    explicit LogCapture(const gchar* aDomain) : mDomain(aDomain) {
        mHandler = g_log_set_handler(mDomain, static_cast<GLogLevelFlags>(G_LOG_LEVEL_WARNING | G_LOG_LEVEL_CRITICAL),
                                     OnLog, this);
    }
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;
    ~LogCapture() { g_log_remove_handler(mDomain, mHandler); }

    /// How many contain the text.
    std::size_t Count(const std::string& aText) const {
        const std::lock_guard<std::mutex> lLock(mMutex);
        std::size_t lCount = 0;
        for (const std::string& lMessage : mMessages) {
            lCount += std::string::npos != lMessage.find(aText);
        }
        return lCount;
    }

private:
    static void OnLog(const gchar*, GLogLevelFlags, const gchar* aMessage, gpointer aThis) {
        auto* const lThis = static_cast<LogCapture*>(aThis);
        const std::lock_guard<std::mutex> lLock(lThis->mMutex);
        lThis->mMessages.emplace_back(aMessage);
    }

    const gchar* const mDomain;
    guint mHandler;
    mutable std::mutex mMutex;
    std::vector<std::string> mMessages;
};

}  // namespace ElementTest
