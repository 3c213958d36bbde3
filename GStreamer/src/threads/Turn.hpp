#pragma once

#include <condition_variable>
#include <mutex>
#include <thread>

namespace nsGstVireRtspSrc {

/// Whose turn it is to change the session: one thread's at a time, for as long as a server may take. State changes
/// wait for it; whoever else finds it taken leaves a request for the one who has it.
class Turn {
public:
    /// Waits. False when the calling thread has it already and would wait for itself.
    bool take();
    /// Waits for nothing.
    bool try_take();
    void leave();

private:
    std::mutex m_stateMutex;  // A leaf; guards the rest.
    std::condition_variable m_left;
    std::thread::id m_owner;  ///< No thread's id when it is free.
};

}  // namespace nsGstVireRtspSrc
