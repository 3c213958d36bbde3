#include "Player/MediaHandler.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>

#include "Player/Exception.hpp"
#include "support/ReportCapture.hpp"
#include "support/Throws.hpp"

namespace Player {
namespace {

using testing::ElementsAre;

using Calls = std::vector<std::string>;

/// Writes down what it is asked for; the answer to a pump call is whether the track is 1.
class FakeSession : public MediaSession {
public:
    explicit FakeSession(Calls& aCalls) : mCalls(aCalls) {}

    void Configure(const Properties& aConfig) override {
        std::string lCall = "Configure";
        for (auto lEntry = aConfig.Begin(); lEntry != aConfig.End(); ++lEntry) {
            lCall += " " + lEntry->Key() + "=" + lEntry->Val();
        }
        mCalls.push_back(lCall);
    }
    void Play(MediaHandler& aHandler, const std::string& aURL, Time aStart) override {
        mHandler = &aHandler;
        mCalls.push_back("Play " + aURL + " " + std::to_string(aStart.Get()));
    }
    void Seek(MediaHandler& aHandler, Time aTo) override { Note("Seek " + std::to_string(aTo.Get()), aHandler); }
    void Pause(MediaHandler& aHandler) override { Note("Pause", aHandler); }
    void Resume(MediaHandler& aHandler) override { Note("Resume", aHandler); }
    void Stop(MediaHandler& aHandler) override { Note("Stop", aHandler); }
    void Close(MediaHandler& /*aHandler*/) override { throw RTSPErr(0x454, "as the session throws it"); }
    bool Fill(UInt aTrack) override { return Pump("Fill", aTrack); }
    bool Fetch(UInt aTrack) override { return Pump("Fetch", aTrack); }
    bool Produce(UInt aTrack) override { return Pump("Produce", aTrack); }

private:
    void Note(const std::string& aCall, const MediaHandler& aHandler) {
        EXPECT_EQ(mHandler, &aHandler);
        mCalls.push_back(aCall);
    }
    bool Pump(const char* aCall, UInt aTrack) {
        mCalls.push_back(std::string(aCall) + " " + std::to_string(aTrack));
        return 1 == aTrack;
    }

    Calls& mCalls;
    MediaHandler* mHandler = nullptr;
};

class Handler : public MediaHandler {
public:
    using MediaHandler::Session;
    using MediaHandler::SetSession;

    void SelectTracks(const SharedPtr<Properties, SharedObject>& /*aSession*/,
                      std::list<SharedPtr<Properties, SharedObject>>& /*aTracks*/) override {}
    SharedPtr<Processor, SharedObject> AcceptTrack(const SharedPtr<Properties, SharedObject>& /*aTrack*/) override {
        return {};
    }
    void AvailableRange(const Time& /*aBegin*/, const Time& /*aEnd*/) override {}
    void PlayingRange(const Time& /*aBegin*/, const Time& /*aEnd*/) override {}
    void Reset() override {}
};

TEST(MediaHandlerTest, NothingWorksWithoutASession) {
    Handler lHandler;
    const std::pair<const char*, std::function<void()>> kOperations[] = {
        {"Produce", [&] { lHandler.Produce(0); }}, {"Fetch", [&] { lHandler.Fetch(0); }},
        {"Fill", [&] { lHandler.Fill(0); }},       {"Seek", [&] { lHandler.Seek(Time(0)); }},
        {"Pause", [&] { lHandler.Pause(); }},      {"Resume", [&] { lHandler.Resume(); }},
        {"Stop", [&] { lHandler.Stop(); }},        {"Close", [&] { lHandler.Close(); }},
    };
    for (const auto& [lName, lOperation] : kOperations) {
        TestSupport::ExpectThrow<SystemErr>(1, std::string("MediaHandler::") + lName + "(): No valid media session",
                                            lOperation);
    }
    lHandler.SetConfigParam("RTSP:TimeOutAfter", "1");
    EXPECT_EQ(nullptr, lHandler.Session().Ptr()) << "a setting alone makes no session";
}

TEST(MediaHandlerTest, OperationsGoToTheSession) {
    Calls lCalls;
    Handler lHandler;
    lHandler.SetConfigParam("b", "1");
    lHandler.SetConfigParam("a", "2");
    lHandler.SetSession(SharedPtr<MediaSession, SharedObject>(new FakeSession(lCalls)));
    lHandler.Play("vire://any/thing", Time(7));
    EXPECT_THAT(lCalls, ElementsAre("Configure b=1 a=2", "Play vire://any/thing 7"));

    lCalls.clear();
    lHandler.SetConfigParam("b", "3");
    EXPECT_THAT(lCalls, ElementsAre("Configure b=3 a=2")) << "reaches the session at once";

    lCalls.clear();
    EXPECT_FALSE(lHandler.Fill(0));
    EXPECT_TRUE(lHandler.Fill(1));
    EXPECT_FALSE(lHandler.Fetch(0));
    EXPECT_TRUE(lHandler.Fetch(1));
    EXPECT_FALSE(lHandler.Produce(0));
    EXPECT_TRUE(lHandler.Produce(1));
    lHandler.Seek(Time(9));
    lHandler.Pause();
    lHandler.Resume();
    lHandler.Stop();
    EXPECT_THAT(lCalls, ElementsAre("Fill 0", "Fill 1", "Fetch 0", "Fetch 1", "Produce 0", "Produce 1", "Seek 9",
                                    "Pause", "Resume", "Stop"));
    EXPECT_EQ("17/1108 as the session throws it", TestSupport::Thrown([&] { lHandler.Close(); }));
}

TEST(MediaHandlerTest, PlayMakesASessionOnceWhateverTheScheme) {
    const TestSupport::ReportCapture lReports;
    Handler lHandler;
    for (const char* lURL : {"http:///clip", "nothing at all", ""}) {
        const MediaSession* const lBefore = lHandler.Session().Ptr();
        EXPECT_THROW(lHandler.Play(lURL, Time(0)), NetworkErr) << lURL;
        ASSERT_NE(nullptr, lHandler.Session().Ptr());
        if (nullptr != lBefore) { EXPECT_EQ(lBefore, lHandler.Session().Ptr()) << "it is used again"; }
    }
    lHandler.Pause();
    lHandler.Stop();
    lHandler.Close();
}

TEST(MediaHandlerDeathTest, ASettingReachesTheSessionAtOnce) {
    const TestSupport::ReportCapture lReports;
    Handler lHandler;
    EXPECT_THROW(lHandler.Play("", Time(0)), NetworkErr);
    EXPECT_DEATH(lHandler.SetConfigParam("RTSP:TimeOutAfter", "0"), "0 != mTimeOutAfter");
    lHandler.SetConfigParam("RTSP:TimeoutAfter", "0");
}

}  // namespace
}  // namespace Player
