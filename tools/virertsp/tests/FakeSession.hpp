#pragma once

#include <string>
#include <vector>

#include "Player/MediaPlayer.hpp"

namespace Virertsp {

/// A session without a server: each look at the network brings one packet of each track that is not silent, and each
/// packet holds so many units.
class FakeSession : public Player::MediaSession {
public:
    struct Track {
        std::string mFormat;
        unsigned mUnits = 1;
        bool mSilent = false;
    };
    /// Play time from one packet to the next.
    static Player::Time Interval() { return Player::Time(1, 10); }

    explicit FakeSession(std::vector<Track> aTracks) : mTracks(std::move(aTracks)), mStates(mTracks.size()) {}

    void Configure(const Player::Properties& /*aConfig*/) override {}
    void Play(Player::MediaHandler& aHandler, const std::string& /*aURL*/, Player::Time /*aStart*/) override {
        for (std::size_t lTrack = 0; lTrack < mTracks.size(); ++lTrack) {
            const Player::SharedPtr<Player::Properties, Player::SharedObject> lInfo(new Player::Properties);
            lInfo->Insert("Transport", "Sample");
            lInfo->Insert("Format", mTracks[lTrack].mFormat);
            lInfo->Insert("FmtParams", "MP4A-LATM" == mTracks[lTrack].mFormat ? "config=400024203fc0" : "config=1210");
            mStates[lTrack].mConsumer = aHandler.AcceptTrack(lInfo);
        }
    }
    void Seek(Player::MediaHandler& /*aHandler*/, Player::Time /*aTo*/) override {}
    void Pause(Player::MediaHandler& /*aHandler*/) override {}
    void Resume(Player::MediaHandler& /*aHandler*/) override {}
    void Stop(Player::MediaHandler& /*aHandler*/) override {}
    void Close(Player::MediaHandler& /*aHandler*/) override {}

    void TakeIn() override {
        for (std::size_t lTrack = 0; lTrack < mTracks.size(); ++lTrack) {
            if (!mTracks[lTrack].mSilent) { ++mStates[lTrack].mReceived; }
        }
    }
    bool Fill(unsigned aTrack) override { return aTrack < mTracks.size(); }
    bool Fetch(unsigned aTrack) override {
        State& lState = mStates[aTrack];
        if (lState.mFetched == lState.mReceived) { return false; }
        const Player::Time lTime(static_cast<long long>(lState.mFetched++) * Interval().Get());
        for (unsigned i = 0; i < mTracks[aTrack].mUnits; ++i) {
            const Player::SharedPtr<Player::Packet, Player::SharedObject> lUnit(
                new Player::Packet(lTime, "0123456789ab", 12));
            lState.mConsumer->Handle(lUnit, lTime);
        }
        return true;
    }
    bool Produce(unsigned aTrack) override { return Fetch(aTrack); }

    Player::Reception TrackReception(unsigned aTrack) const override {
        const State& lState = mStates[aTrack];
        Player::Reception lReception;
        lReception.mPacketsReceived = lState.mReceived;
        lReception.mBufferedTime = Player::Time((lState.mReceived - lState.mFetched) * Interval().Get());
        return lReception;
    }

private:
    struct State {
        Player::SharedPtr<Player::Processor, Player::SharedObject> mConsumer;
        unsigned mReceived = 0;
        unsigned mFetched = 0;
    };

    std::vector<Track> mTracks;
    std::vector<State> mStates;
};

/// A player of such a session.
class FakePlayer : public Player::MediaPlayer {
public:
    explicit FakePlayer(std::vector<FakeSession::Track> aTracks) {
        SetSession(Player::SharedPtr<Player::MediaSession, Player::SharedObject>(new FakeSession(std::move(aTracks))));
        Play("rtsp://host/clip", Player::Time(0));
    }
};

}  // namespace Virertsp
