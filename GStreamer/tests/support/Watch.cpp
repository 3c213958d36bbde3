#include "support/Watch.hpp"

#include <cstdlib>
#include <iostream>
#include <utility>

namespace ElementTest {

Watch::Watch(std::string aWhat, std::chrono::seconds aBound)
    : mWhat(std::move(aWhat)), mBound(aBound), mThread([this] { Wait(); }) {}

Watch::~Watch() {
    {
        const std::lock_guard<std::mutex> lLock(mMutex);
        mDone = true;
    }
    mChanged.notify_all();
    mThread.join();
}

void Watch::Wait() {
    std::unique_lock<std::mutex> lLock(mMutex);
    if (mChanged.wait_for(lLock, mBound, [this] { return mDone; })) { return; }
    std::cerr << "Hangs: " << mWhat << std::endl;
    std::abort();
}

}  // namespace ElementTest
