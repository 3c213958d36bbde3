#pragma once

#include <string>

#include "Parser/Types.hpp"

namespace Parser {

/// The front of a StreamMuxConfig (ISO/IEC 14496-3 section 1.7.3): audioMuxVersion (1 bit),
/// allStreamsSameTimeFraming (1), numSubFrames (6), numProgram (4), numLayer (3); in version 0 an AudioSpecificConfig
/// follows.
struct StreamMuxConfig {
    explicit StreamMuxConfig(const std::string& aBytes);

    UInt mVersion;
    bool mIsOneLayer;
    /// The bytes after those 15 bits, moved to the front. Empty when there is one byte or none, or in version 1.
    std::string mAudioSpecificConfig;
};

/// What an AudioSpecificConfig says (ISO/IEC 14496-3 section 1.6.2).
struct AudioConfig {
    enum ObjectType : UInt { kMain = 1, kLC = 2, kSSR = 3, kLTP = 4, kSBR = 5, kScalable = 6, kPS = 29 };

    /// Bits that are missing count as zero.
    explicit AudioConfig(const std::string& aAudioSpecificConfig);

    /// Of the core coder: 2 is AAC LC. 0 when the configuration can't be understood.
    UInt mObjectType;
    /// `kSBR` or `kPS` when such an extension is announced in front of the core coder; else 0.
    UInt mExtension = 0;
    /// Samples per second of the core coder; 0 when the configuration can't be understood.
    UInt mRate;
    /// Samples per second that come out: twice the core's with most extensions.
    UInt mOutputRate;
    /// 0: a program config element has the channels.
    UInt mChannelConfiguration;
    /// 960 samples in a frame instead of 1024.
    bool mShortFrames;

    bool IsUnderstood() const { return 0 != mObjectType && 0 != mRate; }
    /// How many channels come out; 0 when the configuration alone does not say.
    UInt Channels() const;
    /// "AAC LC", "HE-AAC", ...; for other coders their object type by number.
    std::string Name() const;
};

/// Index of a sampling rate in the table of ISO/IEC 14496-3; 15 for a rate that is not in it.
UInt RateIndex(UInt aRate);

}  // namespace Parser
