#pragma once

#include <atomic>
#include <chrono>
#include <thread>

#include "support/FakeServer.hpp"

namespace ElementTest {

/// Media without end for both tracks. A change waits for a packet, which a task may have taken before it:
/// there is always another.
class Feeder {
public:
    explicit Feeder(FakeServer& aServer)
        : mThread([this, &aServer] {
              while (!mDone) {
                  aServer.Push(0, 1, "x");
                  aServer.Push(1, 1, "y");
                  std::this_thread::sleep_for(std::chrono::milliseconds(1));
              }
          }) {}
    Feeder(const Feeder&) = delete;
    Feeder& operator=(const Feeder&) = delete;
    ~Feeder() {
        mDone = true;
        mThread.join();
    }

private:
    std::atomic<bool> mDone{false};
    std::thread mThread;
};

}  // namespace ElementTest
