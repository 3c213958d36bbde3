#pragma once

#include <list>

#include "Dialogue.hpp"
#include "Player/MediaPlayer.hpp"

namespace Virertsp {

/// A player that remembers also the tracks it can't play, what it knew before it was closed, and the dialogue.
class ProbePlayer : public Player::MediaPlayer {
public:
    using PropertiesPtr = Player::SharedPtr<Player::Properties, Player::SharedObject>;

    void SelectTracks(const PropertiesPtr& aSession, std::list<PropertiesPtr>& aTracks) override {
        mSession = aSession;
        mDescribed = aTracks;
        MediaPlayer::SelectTracks(aSession, aTracks);
    }

    void RequestSent(const std::string& aMethod, const std::string& aURL) override {
        mDialogue.TakeRequest(aMethod, aURL, Dialogue::Clock::now());
    }
    void ResponseReceived(Player::UInt aStatus, const std::string& aReason, const std::string& aServer) override {
        mDialogue.TakeResponse(aStatus, aReason, aServer, Dialogue::Clock::now());
    }

    Virertsp::Dialogue& Dialogue() { return mDialogue; }
    /// Null while nothing is described.
    const PropertiesPtr& DescribedSession() const { return mSession; }
    const std::list<PropertiesPtr>& DescribedTracks() const { return mDescribed; }

private:
    PropertiesPtr mSession;
    std::list<PropertiesPtr> mDescribed;
    Virertsp::Dialogue mDialogue;
};

}  // namespace Virertsp
