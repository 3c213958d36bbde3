#include "writers/AvTrack.hpp"

#include <new>

extern "C" {
#include <libavcodec/packet.h>
}

namespace Virertsp {

namespace {

/// Pictures that an H.264 encoder may hold back (ITU-T H.264 section A.3.1).
constexpr std::size_t kMostReordered = 16;

struct FreePacket {
    void operator()(AVPacket* aPacket) const { av_packet_free(&aPacket); }
};

}  // namespace

AvTrack::AvTrack(AvContainer& aContainer, int aStream, int aRate, Coding aCoding, int aDuration)
    : mContainer(std::static_pointer_cast<AvContainer>(aContainer.shared_from_this())),
      mStream(aStream),
      mRate(aRate),
      mCoding(aCoding),
      mDuration(aDuration),
      mStart(aContainer.Start().Scale(aRate, 1, true)),
      mTimes(Coding::kSound == aCoding ? 0 : kMostReordered) {}

void AvTrack::Write(const Player::Packet& aSample) {
    if (0 == aSample.Size()) { return; }
    mTimes.Push(TimeOf(aSample));
    mSamples.emplace_back(reinterpret_cast<const char*>(aSample.Begin()), aSample.Size());
    WriteReady(false);
}

std::int64_t AvTrack::TimeOf(const Player::Packet& aSample) {
    std::int64_t lTime = aSample.PlayTime().Scale(mRate, 1, true) - mStart;
    // All units of one packet have the time of the first.
    if (Coding::kSound == mCoding && 0 != mNext && aSample.PlayTime() == mLastPlay) { lTime = mNext; }
    mLastPlay = aSample.PlayTime();
    mNext = lTime + mDuration;
    return lTime;
}

void AvTrack::WriteReady(bool aLast) {
    while (const auto lTimes = mTimes.Pop(aLast)) {
        const std::string& lSample = mSamples.front();
        const std::unique_ptr<AVPacket, FreePacket> lPacket(av_packet_alloc());
        if (!lPacket || av_new_packet(lPacket.get(), static_cast<int>(lSample.size())) < 0) { throw std::bad_alloc(); }
        lSample.copy(reinterpret_cast<char*>(lPacket->data), lSample.size());
        lPacket->stream_index = mStream;
        lPacket->pts = lTimes->mPlay;
        lPacket->dts = lTimes->mDecode;
        lPacket->duration = mDuration;
        if (IsRandomAccess(mCoding, lSample)) { lPacket->flags |= AV_PKT_FLAG_KEY; }
        mSamples.pop_front();
        mContainer->Write(*lPacket, mRate);
    }
}

void AvTrack::Finish() {
    WriteReady(true);
    mContainer->FinishTrack();
}

}  // namespace Virertsp
