#pragma once

#include <functional>

#include "Lock.hpp"
#include "Messages.hpp"

namespace nsGstVireRtspSrc {

/// Buffering messages: 0 % when no track has data any more, 100 % when it goes on. From any thread.
class BufferingReports {
public:
    explicit BufferingReports(const Messages& aMessages) : m_messages(aMessages) {}

    /// No data for a track. Whether that was told: nothing is while `aAll` does not say it of all, or again.
    bool no_data(const std::function<bool()>& aAll);
    /// Data for a track that had none. Whether that was told.
    bool data();
    /// Tasks are run again: who was told to wait for data is told to go on.
    void answer();
    /// There is a new player, of which nothing was told yet.
    void forget();

private:
    const Messages& m_messages;
    Mutex m_bufferingMutex;              // Then the outbox's; a message is decided on and put in one.
    bool m_buffering = false;            ///< 0 % was put since the player was made.
    bool m_bufferingUnanswered = false;  ///< 0 % was the last that was put.
};

}  // namespace nsGstVireRtspSrc
