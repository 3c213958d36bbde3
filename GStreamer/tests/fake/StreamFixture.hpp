#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "streams/Stream.hpp"
#include "streams/StreamH264.hpp"
#include "support/ElementUnderTest.hpp"
#include "support/FakeServer.hpp"

namespace ElementTest {

using nsGstVireRtspSrc::kNoData;
using nsGstVireRtspSrc::kOk;
using nsGstVireRtspSrc::kTimedOut;
using nsGstVireRtspSrc::PlayerAccess;
using nsGstVireRtspSrc::Stream;
using nsGstVireRtspSrc::StreamStatus;

using Clock = std::chrono::steady_clock;

class Controller : public nsGstVireRtspSrc::StreamController {
public:
    struct Report {
        StreamStatus mStatus;
        unsigned mTrack;
        Clock::time_point mTime;
    };

    void stream_controller_status(StreamStatus aStatus, unsigned int aTrack) override {
        const std::lock_guard<std::mutex> lLock(mMutex);
        if (mOnStatus) { mOnStatus(aStatus); }
        mReports.push_back({aStatus, aTrack, Clock::now()});
    }
    void stream_controller_exception(const Player::Exception& aException, unsigned int aTrack) override {
        const std::lock_guard<std::mutex> lLock(mMutex);
        mExceptions.emplace_back(aException.Code(), aTrack);
    }

    bool stream_controller_waits() const override { return mWaits; }
    void Wait() { mWaits = true; }

    /// Is called with each report, on its thread.
    void OnStatus(std::function<void(StreamStatus)> aAction) {
        const std::lock_guard<std::mutex> lLock(mMutex);
        mOnStatus = std::move(aAction);
    }

    std::vector<Report> Reports() const {
        const std::lock_guard<std::mutex> lLock(mMutex);
        return mReports;
    }
    std::size_t Count(StreamStatus aStatus) const {
        std::size_t lCount = 0;
        for (const Report& lReport : Reports()) {
            lCount += aStatus == lReport.mStatus;
        }
        return lCount;
    }
    std::vector<std::pair<Player::UInt, unsigned>> Exceptions() const {
        const std::lock_guard<std::mutex> lLock(mMutex);
        return mExceptions;
    }

private:
    mutable std::mutex mMutex;
    std::function<void(StreamStatus)> mOnStatus;
    std::vector<Report> mReports;
    std::vector<std::pair<Player::UInt, unsigned>> mExceptions;
    bool mWaits = false;  ///< Set before the stream runs.
};

constexpr auto kALittle = std::chrono::milliseconds(350);  // three polls

/// One stream on its own, for track 1 of what is described; its element is said to be PLAYING.
class StreamFixture : public ::testing::Test {
protected:
    ~StreamFixture() override {
        if (nullptr != mStream) { Stream::destroy(mStream); }
        mElement.Force(GST_STATE_NULL);
    }

    template <typename T>
    void Make(const FakeServer::Description& aDescription) {
        mServer.Describe({FakeServer::AAC(), aDescription});
        PlayerAccess::Hold(mPlayer)->Play("rtsp://host", Player::Time(0));
        mStream = new T(mElement.Get(), &mController, mPlayer, 1);
        mElement.Force(GST_STATE_PLAYING);
    }
    void MakeH264() { Make<nsGstVireRtspSrc::StreamH264>(FakeServer::H264()); }

    SinkPad& Sink() { return *mElement.Sink(1); }
    GstPad* Pad() { return static_cast<GstPad*>(mElement.Get()->srcpads->data); }

    FakeServer mServer;
    PlayerAccess mPlayer;
    ElementUnderTest mElement;
    Controller mController;
    Stream* mStream = nullptr;
};

}  // namespace ElementTest
