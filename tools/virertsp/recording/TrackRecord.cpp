#include "recording/TrackRecord.hpp"

#include <cinttypes>

#include "Ending.hpp"
#include "Player/String.hpp"
#include "recording/Progress.hpp"

namespace Virertsp {

void TrackRecord::Write(const Player::Packet& aSample) {
    mWriter->Write(aSample);
    const Player::Time lTime = aSample.PlayTime();
    if (mTimes) {
        const std::string lLine = Player::StringWithFormat("%lld\n", lTime.NanoSeconds());
        mTimes->Write(lLine.data(), lLine.size());
    }
    if (0 == mSamples || lTime < mFirst) { mFirst = lTime; }
    if (0 == mSamples || lTime > mLatest) { mLatest = lTime; }
    mBytes += aSample.Size();
    ++mSamples;
}

void TrackRecord::Finish() {
    mWriter->Finish();
    if (mTimes) { mTimes->Close(); }
}

std::string TrackRecord::Summary(const Player::Reception& aReception) const {
    return Player::StringWithFormat("%" PRIu64 " samples, %" PRIu64 " bytes, %s, %u packets, %d lost, %s -> %s",
                                    mSamples, mBytes, FormatTime(Length()).c_str(), aReception.mPacketsReceived,
                                    aReception.Missing(), EndingPhrase(aReception.mEnd), mWriter->Name().c_str());
}

}  // namespace Virertsp
