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
    Presentation(const std::string& aURL, const ProbePlayer& aPlayer);

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
    void AddRange(Json& aJson) const;

    std::string mURL;
    ProbePlayer::PropertiesPtr mSession;
    std::vector<Track> mTracks;
    Player::Time mBegin;
    Player::Time mEnd;
};

}  // namespace Virertsp
