#pragma once

#include <gst/gst.h>

#include <string>
#include <vector>

namespace ElementTest {

/// Catches what one of the element's debug categories is told, at any level, while it lives.
class DebugCapture {
public:
    /// To be called once, before there are other threads: GStreamer can't take a log function back while some
    /// thread may be in it.
    static void Install();

    explicit DebugCapture(const char* aCategory);
    DebugCapture(const DebugCapture&) = delete;
    DebugCapture& operator=(const DebugCapture&) = delete;
    ~DebugCapture();

    /// How often exactly this was said, at that level.
    std::size_t Count(GstDebugLevel aLevel, const std::string& aText) const;
    /// All, each after its level: "DEBUG No location".
    std::vector<std::string> All() const;

private:
    static void OnMessage(GstDebugCategory* aCategory, GstDebugLevel aLevel, const gchar*, const gchar*, gint, GObject*,
                          GstDebugMessage* aMessage, gpointer);

    const std::string mCategory;
    std::vector<std::string> mMessages;
};

}  // namespace ElementTest
