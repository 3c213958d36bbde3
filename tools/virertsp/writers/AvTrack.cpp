#include "writers/AvTrack.hpp"

#include <new>

extern "C" {
#include <libavcodec/packet.h>
}

namespace Virertsp {

namespace {

/// Pictures that an H.264 encoder may hold back (ITU-T H.264 section A.3.1).
constexpr std::size_t kMostReordered = 16;
constexpr std::size_t kLengthSize = 4;
constexpr unsigned kInstantRefresh = 5;

struct FreePacket {
    void operator()(AVPacket* aPacket) const { av_packet_free(&aPacket); }
};

unsigned ByteAt(const std::string& aText, std::size_t aAt) {
    return static_cast<unsigned char>(aText[aAt]);
}

/// Each NAL unit has its length in four bytes in front.
bool HasInstantRefresh(const std::string& aSample) {
    for (std::size_t lAt = 0; lAt + kLengthSize < aSample.size();) {
        if (kInstantRefresh == (ByteAt(aSample, lAt + kLengthSize) & 0x1F)) { return true; }
        std::size_t lLength = 0;
        for (std::size_t i = 0; i < kLengthSize; ++i) {
            lLength = lLength << 8 | ByteAt(aSample, lAt + i);
        }
        lAt += kLengthSize;
        if (lLength > aSample.size() - lAt) { break; }
        lAt += lLength;
    }
    return false;
}

/// The start code of a picture, and its type in two bits: 0 for one of its own.
bool HasIntraPicture(const std::string& aSample) {
    const std::size_t lAt = aSample.find(std::string("\0\0\1\xB6", 4));
    return std::string::npos != lAt && lAt + 4 < aSample.size() && 0 == ByteAt(aSample, lAt + 4) >> 6;
}

}  // namespace

AvTrack::AvTrack(AvContainer& aContainer, int aStream, int aRate, Kind aKind, int aDuration)
    : mContainer(std::static_pointer_cast<AvContainer>(aContainer.shared_from_this())),
      mStream(aStream),
      mRate(aRate),
      mKind(aKind),
      mDuration(aDuration),
      mTimes(kAudio == aKind ? 0 : kMostReordered) {}

void AvTrack::Write(const Player::Packet& aSample) {
    if (0 == aSample.Size()) { return; }
    mTimes.Push(TimeOf(aSample));
    mSamples.emplace_back(reinterpret_cast<const char*>(aSample.Begin()), aSample.Size());
    WriteReady(false);
}

std::int64_t AvTrack::TimeOf(const Player::Packet& aSample) {
    std::int64_t lTime = aSample.PlayTime().Scale(mRate, 1, true);
    // All units of one packet have the time of the first.
    if (kAudio == mKind && 0 != mNext && aSample.PlayTime() == mLastPlay) { lTime = mNext; }
    mLastPlay = aSample.PlayTime();
    mNext = lTime + mDuration;
    return lTime;
}

bool AvTrack::IsRandomAccess(const std::string& aSample) const {
    switch (mKind) {
        case kH264: return HasInstantRefresh(aSample);
        case kVisual: return HasIntraPicture(aSample);
        case kAudio: break;
    }
    return true;
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
        if (IsRandomAccess(lSample)) { lPacket->flags |= AV_PKT_FLAG_KEY; }
        mSamples.pop_front();
        mContainer->Write(*lPacket, mRate);
    }
}

void AvTrack::Finish() {
    WriteReady(true);
    mContainer->FinishTrack();
}

}  // namespace Virertsp
