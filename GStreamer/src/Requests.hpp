#pragma once

#include <gst/gst.h>

#include <functional>
#include <string>

#include "Lock.hpp"

namespace nsGstVireRtspSrc {

/// What is to be done to the session and has not been begun: a new location, then a seek in it, then a look whether
/// the element stayed PAUSED. The last of a kind counts. From any thread.
class Requests {
public:
    bool any() const;

    /// `aStore` stores a location and says whether there is one, with the lock of this held: a start takes either
    /// the old location, and the request stays, or the new one together with it. A seek in the old one is forgotten.
    void ask_location(const std::function<bool()>& aStore);
    /// The location that `aRead` gives, which is about to be played; its request is forgotten.
    std::string take_location(const std::function<std::string()>& aRead);
    /// Whether there was a request, which is forgotten.
    bool take_location();

    void ask_seek(gint64 aPosition);
    bool take_seek(gint64& aPosition);

    /// `aId`: of the clock's request that was due.
    void ask_pause_check(GstClockID aId);
    bool take_pause_check(GstClockID& aId);

private:
    Mutex m_mutex;  // A leaf but for the settings.
    bool m_location VIRE_GUARDED_BY(m_mutex) = false;
    bool m_seek VIRE_GUARDED_BY(m_mutex) = false;
    gint64 m_position VIRE_GUARDED_BY(m_mutex) = -1;
    GstClockID m_pauseCheck VIRE_GUARDED_BY(m_mutex) = nullptr;  ///< Only compared.
};

}  // namespace nsGstVireRtspSrc
