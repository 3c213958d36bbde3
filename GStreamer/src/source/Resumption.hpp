#pragma once

#include <gst/gst.h>

#include <atomic>

namespace nsGstVireRtspSrc {

/// How a presentation goes on after it was stopped, sought or left. Belongs to who has the turn, but for the loss.
class Resumption {
public:
    enum class Occasion {
        kPlaying,         ///< The element goes to PLAYING, and the server was paused.
        kChange,          ///< A seek or another location while the server plays.
        kNetworkReturned  ///< As `kPlaying`, for an element that got there without the server.
    };
    enum class Way { kPlay, kResume, kSeek };

    Way Choose(Occasion aOccasion, bool aLive) const;
    /// Where `Way::kSeek` seeks to, in ns; -1 is nowhere.
    gint64 position() const { return m_resumePosition; }

    /// An application seeks.
    void sought(gint64 aPosition);
    /// A track got to there: the earliest counts.
    void reached(gint64 aPosition);
    /// The position was made for.
    void arrived() { m_resumePosition = -1; }

    bool server_paused() const { return m_serverPaused; }
    void set_server_paused(bool aPaused) { m_serverPaused = aPaused; }
    /// From any thread.
    void network_lost() { m_networkWasLost = true; }

    /// What belongs to one presentation, or one pause of it. The server stays as it is.
    void Forget();

private:
    bool m_serverPaused = false;  ///< The server was paused while the element is PAUSED.
    bool m_seekPending = false;   ///< m_resumePosition was asked for while the server was paused.
    gint64 m_resumePosition = -1;
    std::atomic<bool> m_networkWasLost{false};
};

}  // namespace nsGstVireRtspSrc
