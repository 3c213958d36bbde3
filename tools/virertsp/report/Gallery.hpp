#pragma once

#include <string>
#include <vector>

#include "Player/MediaPlayer.hpp"

namespace Virertsp {

/// Keeps a few of the pictures that decode by themselves, spread evenly over all that came, and decodes them at the
/// end.
class Gallery {
public:
    struct Picture {
        Player::Time mPlayTime;
        std::string mJpeg;
    };

    /// Takes a sample of the track; those of another track than the first one, of sound, and those that need others
    /// are left out.
    void Take(const Player::MediaPlayer& aPlayer, Player::TrackIdx aTrack, const Player::Packet& aSample);

    Player::TrackIdx Track() const { return mTrack; }
    /// Of the pictures that are kept, in their order.
    std::vector<Player::Time> PlayTimes() const;
    /// By ffmpeg or else GStreamer, in a process of its own; none when neither is there or it can't decode them.
    std::vector<Picture> Decode() const;

private:
    struct Sample {
        Player::Time mPlayTime;
        std::string mData;
    };

    void Thin();
    /// The track's file in the folder.
    std::string Write(const std::string& aFolder) const;

    Player::SharedPtr<Player::Properties, Player::SharedObject> mInfo;
    Player::TrackIdx mTrack = 0;
    std::vector<Sample> mSamples;
    /// How many come for each that is kept.
    unsigned mStride = 1;
    unsigned mCount = 0;
};

}  // namespace Virertsp
