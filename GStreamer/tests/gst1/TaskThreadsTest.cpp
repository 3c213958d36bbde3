#include <chrono>
#include <condition_variable>
#include <mutex>

#include "support/SourceFixture.hpp"

namespace ElementTest {
namespace {

/// While it lives, the threads of tasks made since rest on their way out, until they may go.
class LateThreads {
public:
    LateThreads() { gThis = this; }
    LateThreads(const LateThreads&) = delete;
    LateThreads& operator=(const LateThreads&) = delete;
    ~LateThreads() { gThis = nullptr; }

    void LetGo() {
        const std::lock_guard<std::mutex> lLock(mMutex);
        mMayGo = true;
        mChanged.notify_all();
    }
    /// For the threads that leave from now on.
    static void Attach(GstTask* aTask) {
        if (nullptr != gThis) { gst_task_set_leave_callback(aTask, OnLeave, gThis, nullptr); }
    }

private:
    static void OnLeave(GstTask*, GThread*, gpointer aThis) {
        auto* const lThis = static_cast<LateThreads*>(aThis);
        std::unique_lock<std::mutex> lLock(lThis->mMutex);
        // Who waits for the thread can't let it go.
        lThis->mChanged.wait_for(lLock, std::chrono::milliseconds(300), [lThis] { return lThis->mMayGo; });
    }

    static LateThreads* gThis;
    std::mutex mMutex;
    std::condition_variable mChanged;
    bool mMayGo = false;
};

LateThreads* LateThreads::gThis = nullptr;

class TaskThreads : public SourceFixture {
protected:
    ~TaskThreads() override { mElement.Set(GST_STATE_NULL); }

    LateThreads mLate;
};

}  // namespace
}  // namespace ElementTest

extern "C" {

GstTask* __real_gst_task_new(GstTaskFunction aFunction, gpointer aData, GDestroyNotify aNotify);
GstTask* __wrap_gst_task_new(GstTaskFunction aFunction, gpointer aData, GDestroyNotify aNotify);

GstTask* __wrap_gst_task_new(GstTaskFunction aFunction, gpointer aData, GDestroyNotify aNotify) {
    GstTask* const lTask = __real_gst_task_new(aFunction, aData, aNotify);
    ElementTest::LateThreads::Attach(lTask);
    return lTask;
}
}

namespace ElementTest {
namespace {

/// GStreamer gives no other thread to a task that is started before the last one has left it.
TEST_F(TaskThreads, AStreamRunsAgainThoughItsThreadIsLateToLeave) {
    ServeH264();
    StartPlaying();
    ASSERT_EQ(GST_STATE_CHANGE_SUCCESS, mElement.Set(GST_STATE_READY));
    PushOn("Play", 1000, "again");
    ASSERT_TRUE(mElement.Play());
    mLate.LetGo();
    EXPECT_TRUE(mElement.Sink(0)->Await("buffer"));
}

}  // namespace
}  // namespace ElementTest
