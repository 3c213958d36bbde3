#pragma once

#include <atomic>
#include <string>
#include <thread>

#include "commands/SessionOptions.hpp"
#include "watch/Location.hpp"

namespace Virertsp {

/// Plays a location in a thread of its own, again and again after growing pauses, and drops its media.
class Watcher {
public:
    /// The options outlive this; the library's reporter must be set before.
    Watcher(const SessionOptions& aSession, const std::string& aURL);
    Watcher(const Watcher&) = delete;
    Watcher& operator=(const Watcher&) = delete;
    /// Waits for the thread.
    ~Watcher();

    /// The thread leaves the server as soon as that lets it, and ends.
    void Stop() { mStop = true; }
    bool HasEnded() const { return mEnded; }

    const Location& Watched() const { return mLocation; }

private:
    void Run();
    /// Until the session has ended, or is stopped. Gives the reason, which is empty when it was stopped.
    std::string PlayOnce();
    std::string Receive(ProbePlayer& aPlayer);
    void Pause(Location::Clock::time_point aUntil) const;

    const SessionOptions& mSession;
    std::string mURL;
    Location mLocation;
    std::atomic<bool> mStop{false};
    std::atomic<bool> mEnded{false};
    std::thread mThread;
};

}  // namespace Virertsp
