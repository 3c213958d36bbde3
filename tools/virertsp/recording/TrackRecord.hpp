#pragma once

#include <optional>
#include <string>

#include "Player/MediaPlayer.hpp"
#include "recording/Output.hpp"

namespace Virertsp {

/// One track on its way into files.
class TrackRecord {
public:
    explicit TrackRecord(Output::Files aFiles) : mFiles(std::move(aFiles)), mFirstName(mFiles.mWriter->Name()) {}

    /// Goes on in these files with the first sample that is played at `aFrom` or later. Throws `Failure`.
    void ContinueIn(Output::Files aFiles, const Player::Time& aFrom);

    /// Throws `Failure`.
    void Write(const Player::Packet& aSample);
    void Finish();

    /// Play time from the first sample to the latest one, in either case by play time.
    Player::Time Length() const { return mLatest - mFirst; }
    Player::Time Latest() const { return mLatest; }
    /// For people: what was written, and what was received of it.
    std::string Summary(const Player::Reception& aReception) const;

private:
    struct Next {
        Output::Files mFiles;
        Player::Time mFrom;
    };

    void FinishFiles();
    void MoveOn();

    Output::Files mFiles;
    std::optional<Next> mNext;
    std::string mFirstName;
    std::uint64_t mSamples = 0;
    std::uint64_t mBytes = 0;
    Player::Time mFirst;
    Player::Time mLatest;
};

}  // namespace Virertsp
