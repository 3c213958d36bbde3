#include "recording/TrackRecord.hpp"

#include <cinttypes>

#include "Ending.hpp"
#include "Player/String.hpp"
#include "recording/Progress.hpp"

namespace Virertsp {

void TrackRecord::ContinueIn(Output::Files aFiles, const Player::Time& aFrom) {
    if (mNext) { MoveOn(); }
    mNext = Next{std::move(aFiles), aFrom};
}

void TrackRecord::Write(const Player::Packet& aSample) {
    const Player::Time lTime = aSample.PlayTime();
    if (mNext && lTime >= mNext->mFrom) { MoveOn(); }
    mFiles.mWriter->Write(aSample);
    if (mFiles.mTimes) {
        const std::string lLine = Player::StringWithFormat("%lld\n", lTime.NanoSeconds());
        mFiles.mTimes->Write(lLine.data(), lLine.size());
    }
    if (0 == mSamples || lTime < mFirst) { mFirst = lTime; }
    if (0 == mSamples || lTime > mLatest) { mLatest = lTime; }
    mBytes += aSample.Size();
    ++mSamples;
}

void TrackRecord::MoveOn() {
    FinishFiles();
    mFiles = std::move(mNext->mFiles);
    mNext.reset();
}

void TrackRecord::FinishFiles() {
    mFiles.mWriter->Finish();
    if (mFiles.mTimes) { mFiles.mTimes->Close(); }
}

void TrackRecord::Finish() {
    if (mNext) { MoveOn(); }
    FinishFiles();
}

std::string TrackRecord::Summary(const Player::Reception& aReception) const {
    const std::string lLastName = mFiles.mWriter->Name();
    const std::string lNames = mFirstName == lLastName ? lLastName : mFirstName + " to " + lLastName;
    return Player::StringWithFormat("%" PRIu64 " samples, %" PRIu64 " bytes, %s, %u packets, %d lost, %s -> %s",
                                    mSamples, mBytes, FormatTime(Length()).c_str(), aReception.mPacketsReceived,
                                    aReception.Missing(), EndingPhrase(aReception.mEnd), lNames.c_str());
}

}  // namespace Virertsp
