#pragma once

#include <gst/gst.h>

#include "threads/Lock.hpp"

namespace nsGstVireRtspSrc {

/// A seek that is to be done.
struct Seek {
    gint64 mPosition = -1;   ///< In ns.
    guint32 mSeqnum = 0;     ///< Of its event, for those that follow from it; 0 for none.
    bool mAccurate = false;  ///< What comes before the position is not wanted.
};

/// Which seeks a presentation allows: those in time, at its own speed, that flush. From any thread.
class Seeking {
public:
    /// In ns; an end of -1 is that of a presentation in which nothing can be sought.
    void set_range(gint64 aStart, gint64 aEnd);
    /// There is no presentation.
    void forget() { set_range(0, -1); }

    /// What is to be done for the event, within the range; false for one that can't be done.
    bool find(GstEvent* aEvent, Seek& aSeek) const;
    /// Nothing is left to play from there.
    bool is_end(gint64 aPosition) const;
    /// Answers a query for what can be sought; false for another format than time.
    bool answer(GstQuery* aQuery) const;

private:
    Mutex m_mutex;  // A leaf.
    gint64 m_start VIRE_GUARDED_BY(m_mutex) = 0;
    gint64 m_end VIRE_GUARDED_BY(m_mutex) = -1;
};

}  // namespace nsGstVireRtspSrc
