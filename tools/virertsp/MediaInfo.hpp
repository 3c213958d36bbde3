#pragma once

#include <string>

#include "Player/Properties.hpp"

namespace Virertsp {

/// What a described track becomes. Numbers that are not known are 0, texts empty.
struct MediaInfo {
    static MediaInfo Of(const Player::Properties& aTrack);

    /// One line for people: "H.264 High, level 3.1, 1280x720".
    std::string Summary() const;

    /// "H.264", "AAC LC", ...; a format without a name of its own as the description calls it.
    std::string mFormat;
    /// The format's name in the spelling that the library plays; empty for other formats.
    std::string mPlayedAs;
    std::string mProfile;
    std::string mLevel;
    /// In luma samples, as coded: a decoder may crop them.
    unsigned mWidth = 0;
    unsigned mHeight = 0;
    /// Samples per second.
    unsigned mRate = 0;
    unsigned mChannels = 0;
    /// What the name of its file ends in, or empty and a sentence why there can't be one.
    std::string mExtension;
    std::string mObstacle;
};

}  // namespace Virertsp
