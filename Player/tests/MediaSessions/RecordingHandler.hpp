#pragma once

#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "Player/Consumer.hpp"
#include "Player/MediaHandler.hpp"

namespace Player::MediaSessions {

/// A handler that writes down all that the session tells it and its consumers, in order:
/// "Reset", "SelectTracks video audio", "AvailableRange 0 20", "AcceptTrack video", "PlayingRange 0 20",
/// and of a track's consumer "video: Flush", "video: State=WaitData", "video: sample".
class RecordingHandler : public MediaHandler {
public:
    using Calls = std::vector<std::string>;

    void SelectTracks(const SharedPtr<Properties, SharedObject>& /*aSession*/,
                      std::list<SharedPtr<Properties, SharedObject>>& aTracks) override {
        std::string lCall = "SelectTracks";
        for (const auto& lTrack : aTracks) {
            lCall += " " + lTrack->Get("Id");
        }
        mCalls.push_back(lCall);
    }

    SharedPtr<Processor, SharedObject> AcceptTrack(const SharedPtr<Properties, SharedObject>& aTrack) override {
        const std::string lId = aTrack->Get("Id");
        mCalls.push_back("AcceptTrack " + lId);
        mAccepted.push_back(aTrack);
        if (0 != mRefused.count(lId)) { return {}; }
        return SharedPtr<Processor, SharedObject>(new Sink(mCalls, lId));
    }

    void AvailableRange(const Time& aBegin, const Time& aEnd) override { Range("AvailableRange", aBegin, aEnd); }
    void PlayingRange(const Time& aBegin, const Time& aEnd) override { Range("PlayingRange", aBegin, aEnd); }
    void Reset() override { mCalls.push_back("Reset"); }

    /// What was written down since the last time.
    Calls TakeCalls() {
        Calls lCalls;
        lCalls.swap(mCalls);
        return lCalls;
    }

    /// Identifiers of tracks that are not wanted.
    std::set<std::string> mRefused;
    /// What `AcceptTrack` was called with.
    std::vector<SharedPtr<Properties, SharedObject>> mAccepted;

private:
    class Sink : public Consumer {
    public:
        Sink(Calls& aCalls, const std::string& aId) : mCalls(aCalls), mId(aId) {}

        void Param(const String& aKey, const String& aVal) override { Note(aKey + "=" + aVal); }
        void Flush() override { Note("Flush"); }
        bool Handle(const SharedPtr<Packet, SharedObject>& /*aPacket*/, Time /*aLatest*/) override {
            Note("sample");
            return false;
        }

    private:
        void Note(const std::string& aWhat) { mCalls.push_back(mId + ": " + aWhat); }

        Calls& mCalls;
        std::string mId;
    };

    void Range(const char* aName, const Time& aBegin, const Time& aEnd) {
        std::ostringstream lCall;
        lCall << aName << " " << aBegin.ToSeconds() << " " << aEnd.ToSeconds();
        mCalls.push_back(lCall.str());
    }

    Calls mCalls;
};

}  // namespace Player::MediaSessions
