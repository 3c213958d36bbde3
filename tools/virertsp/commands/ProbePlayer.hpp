#pragma once

#include <list>

#include "Player/MediaPlayer.hpp"

namespace Virertsp {

/// A player that remembers also the tracks it can't play, and what it knew before it was closed.
class ProbePlayer : public Player::MediaPlayer {
public:
    using PropertiesPtr = Player::SharedPtr<Player::Properties, Player::SharedObject>;

    void SelectTracks(const PropertiesPtr& aSession, std::list<PropertiesPtr>& aTracks) override {
        mSession = aSession;
        mDescribed = aTracks;
        MediaPlayer::SelectTracks(aSession, aTracks);
    }

    /// Null while nothing is described.
    const PropertiesPtr& DescribedSession() const { return mSession; }
    const std::list<PropertiesPtr>& DescribedTracks() const { return mDescribed; }

private:
    PropertiesPtr mSession;
    std::list<PropertiesPtr> mDescribed;
};

}  // namespace Virertsp
