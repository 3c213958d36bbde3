#pragma once

#include <string>
#include <vector>

#include "Dialogue.hpp"
#include "Json.hpp"
#include "MediaInfo.hpp"
#include "commands/ProbePlayer.hpp"

namespace Virertsp {

/// What a server says of a location, as lines for people or for programs.
class Presentation {
public:
    /// Takes what the player knows; it may be closed afterwards.
    /// `aMisunderstood`: the first answer that is missing came, and could not be understood.
    Presentation(const std::string& aURL, const ProbePlayer& aPlayer, bool aMisunderstood);

    std::string Text(const Dialogue& aDialogue) const;
    std::string JsonLine(const Dialogue& aDialogue) const;

private:
    struct Track {
        ProbePlayer::PropertiesPtr mProperties;
        /// The player's number for it; negative for a track that it can't play.
        int mIndex;
        MediaInfo mInfo;
    };

    std::string Range() const;
    std::string ExchangeLines(const Dialogue& aDialogue) const;
    void AddExchanges(const Dialogue& aDialogue, Json& aJson) const;
    void AddRange(Json& aJson) const;

    std::string mURL;
    bool mMisunderstood;
    ProbePlayer::PropertiesPtr mSession;
    std::vector<Track> mTracks;
    Player::Time mBegin;
    Player::Time mEnd;
};

}  // namespace Virertsp
