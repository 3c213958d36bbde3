#pragma once

#include <functional>

#include "messages/Messages.hpp"
#include "threads/Lock.hpp"

namespace nsGstVireRtspSrc {

/// Buffering messages: 0 % when no track has data any more, 100 % when it goes on. From any thread.
class BufferingReports {
public:
    explicit BufferingReports(const Messages& aMessages) : m_messages(aMessages) {}

    /// A track has no data. Posts 0 % once `aAll` says so of all tracks, and only once; returns whether it did.
    bool no_data(const std::function<bool()>& aAll);
    /// A track that had no data has some. Returns whether it posted 100 %.
    bool data();
    /// Tasks run again: a 0 % that was posted is followed by 100 %.
    void answer();
    /// There is a new player, for which nothing was posted yet.
    void forget();

private:
    const Messages& m_messages;
    Mutex m_bufferingMutex;  // Then the outbox's; a message is decided on and put in one.
    bool m_buffering VIRE_GUARDED_BY(m_bufferingMutex) = false;            ///< 0 % was put since the player was made.
    bool m_bufferingUnanswered VIRE_GUARDED_BY(m_bufferingMutex) = false;  ///< 0 % was the last that was put.
};

}  // namespace nsGstVireRtspSrc
