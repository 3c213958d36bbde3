#pragma once

#include <string>

#include "Player/Properties.hpp"

namespace Virertsp {

/// What the AudioSpecificConfig of an MPEG-4 audio track says (ISO/IEC 14496-3 section 1.6.2).
struct AudioConfig {
    enum ObjectType : unsigned { kMain = 1, kLC = 2, kSSR = 3, kLTP = 4, kSBR = 5, kScalable = 6, kPS = 29 };

    /// Of the track's "config": for MP4A-LATM a StreamMuxConfig in whose front an AudioSpecificConfig lies.
    /// Throws `Failure` with `kExitNothingPlayable` when there is none that can be read.
    static AudioConfig Of(const Player::Properties& aTrack);

    /// Of the core coder: 2 is AAC LC.
    unsigned mObjectType = 0;
    /// `kSBR` or `kPS` when such an extension is announced in front of the core coder; else 0.
    unsigned mExtension = 0;
    /// Samples per second of the core coder.
    unsigned mRate = 0;
    /// Samples per second that come out: twice the core's with most extensions.
    unsigned mOutputRate = 0;
    /// 0: a program config element tells the channels.
    unsigned mChannelConfiguration = 0;
    /// 960 samples in a frame instead of 1024.
    bool mShortFrames = false;

    /// How many channels come out; 0 when the configuration alone does not tell.
    unsigned Channels() const;
    /// "AAC LC", "HE-AAC", ...; for other coders their object type by number.
    std::string Name() const;
};

/// Index of a sampling rate in the table of ISO/IEC 14496-3; 15 for a rate that is not in it.
unsigned RateIndex(unsigned aRate);

}  // namespace Virertsp
