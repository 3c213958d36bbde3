#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

namespace ElementTest {

/// Ends the process with words when this object lives longer than the bound: what it watches hangs, and nothing
/// that the test itself could do would end it. From the core, or under a debugger, one sees where.
class Watch {
public:
    Watch(std::string aWhat, std::chrono::seconds aBound);
    Watch(const Watch&) = delete;
    Watch& operator=(const Watch&) = delete;
    ~Watch();

private:
    void Wait();

    const std::string mWhat;
    const std::chrono::seconds mBound;
    std::mutex mMutex;
    std::condition_variable mChanged;
    bool mDone = false;
    std::thread mThread;
};

}  // namespace ElementTest
