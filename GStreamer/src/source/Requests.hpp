#pragma once

#include <gst/gst.h>

#include <functional>
#include <string>

#include "source/Seeking.hpp"
#include "threads/Lock.hpp"

namespace nsGstVireRtspSrc {

/// What is to be done to the session and has not been begun: a new location, then a seek in it, then its end, then a
/// look whether the element stayed PAUSED. The last of a kind counts. From any thread.
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

    /// One with a number that comes again, by another pad, is not asked for twice.
    void ask_seek(const Seek& aSeek);
    bool take_seek(Seek& aSeek);

    /// The end of all streams.
    void ask_end(guint32 aSeqnum);
    bool take_end(guint32& aSeqnum);

    /// `aId`: of the clock's request that was due.
    void ask_pause_check(GstClockID aId);
    bool take_pause_check(GstClockID& aId);

private:
    Mutex m_mutex;  // A leaf but for the settings.
    bool m_location VIRE_GUARDED_BY(m_mutex) = false;
    bool m_seek VIRE_GUARDED_BY(m_mutex) = false;
    Seek m_lastSeek VIRE_GUARDED_BY(m_mutex);
    bool m_end VIRE_GUARDED_BY(m_mutex) = false;
    guint32 m_endSeqnum VIRE_GUARDED_BY(m_mutex) = 0;
    GstClockID m_pauseCheck VIRE_GUARDED_BY(m_mutex) = nullptr;  ///< Only compared.
};

}  // namespace nsGstVireRtspSrc
