#pragma once

#include <glib.h>

namespace nsGstVireRtspSrc {

/// When the frames of a packet are due that come several to one, all with its play time: one after the other, each of
/// the same duration.
class FrameTimes {
public:
    /// All times here are in ns.
    explicit FrameTimes(gint64 aDuration) : m_duration(aDuration) {}

    /// `aPlayTime`: the packet's; `aAnew`: no frame before this belongs to it.
    gint64 Next(gint64 aPlayTime, bool aAnew) {
        m_frame = !aAnew && aPlayTime == m_playTime ? m_frame + 1 : 0;
        m_playTime = aPlayTime;
        return aPlayTime + m_frame * m_duration;
    }

private:
    const gint64 m_duration;
    gint64 m_playTime = G_MININT64;
    gint64 m_frame = 0;
};

}  // namespace nsGstVireRtspSrc
