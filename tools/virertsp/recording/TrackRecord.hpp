#pragma once

#include <memory>
#include <string>

#include "Player/MediaPlayer.hpp"
#include "writers/OutputFile.hpp"
#include "writers/Writer.hpp"

namespace Virertsp {

/// One track on its way into files.
class TrackRecord {
public:
    /// A null `aTimes` writes no times.
    TrackRecord(std::unique_ptr<Writer> aWriter, std::unique_ptr<OutputFile> aTimes)
        : mWriter(std::move(aWriter)), mTimes(std::move(aTimes)) {}

    /// Throws `Failure`.
    void Write(const Player::Packet& aSample);
    void Finish();

    /// Play time from the first sample to the latest one, in either case by play time.
    Player::Time Length() const { return mLatest - mFirst; }
    Player::Time Latest() const { return mLatest; }
    /// For people: what was written, and what was received of it.
    std::string Summary(const Player::Reception& aReception) const;

private:
    std::unique_ptr<Writer> mWriter;
    std::unique_ptr<OutputFile> mTimes;
    std::uint64_t mSamples = 0;
    std::uint64_t mBytes = 0;
    Player::Time mFirst;
    Player::Time mLatest;
};

}  // namespace Virertsp
