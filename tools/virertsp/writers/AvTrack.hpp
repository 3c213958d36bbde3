#pragma once

#include <deque>
#include <memory>
#include <string>

#include "writers/AvContainer.hpp"
#include "writers/DecodeTimes.hpp"
#include "writers/RandomAccess.hpp"

namespace Virertsp {

/// One track of a container.
class AvTrack : public Writer {
public:
    /// `aRate`: ticks per second. `aDuration`: ticks of each unit of sound.
    AvTrack(AvContainer& aContainer, int aStream, int aRate, Coding aCoding, int aDuration);

    void Write(const Player::Packet& aSample) override;
    void Finish() override;
    std::string Name() const override { return mContainer->Path(); }

private:
    std::int64_t TimeOf(const Player::Packet& aSample);
    void WriteReady(bool aLast);

    std::shared_ptr<AvContainer> mContainer;
    int mStream;
    int mRate;
    Coding mCoding;
    int mDuration;
    /// The play time at which the file begins, in ticks.
    std::int64_t mStart;
    DecodeTimes mTimes;
    std::deque<std::string> mSamples;
    Player::Time mLastPlay;
    std::int64_t mNext = 0;
};

}  // namespace Virertsp
