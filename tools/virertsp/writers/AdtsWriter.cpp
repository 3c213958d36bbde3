#include "writers/AdtsWriter.hpp"

#include "CodecParameters.hpp"
#include "Failure.hpp"
#include "Player/String.hpp"

namespace Virertsp {

namespace {

using Parser::AudioConfig;
using Parser::RateIndex;

constexpr unsigned kRatesOfHeader = 13;
constexpr unsigned kChannelsOfHeader = 7;
/// The length with the header has 13 bits.
constexpr std::size_t kLargestFrame = 0x1FFF;

[[noreturn]] void Refuse(const std::string& aWhat) {
    throw Failure(kExitNothingPlayable, "An .aac file can't hold " + aWhat + ".");
}

AudioConfig ConfigFor(const Player::Properties& aTrack) {
    const AudioConfig lConfig = AudioConfigOf(aTrack);
    if (lConfig.mObjectType > AudioConfig::kLTP) { Refuse(lConfig.Name()); }
    if (RateIndex(lConfig.mRate) >= kRatesOfHeader) {
        Refuse(Player::StringWithFormat("%u samples per second", lConfig.mRate));
    }
    if (0 == lConfig.mChannelConfiguration || lConfig.mChannelConfiguration > kChannelsOfHeader) {
        Refuse(Player::StringWithFormat("channel configuration %u", lConfig.mChannelConfiguration));
    }
    if (lConfig.mShortFrames) { Refuse("frames of 960 samples"); }
    return lConfig;
}

/// Bit by bit:
///   sync word 0xFFF (12), MPEG-4 (1), layer 0 (2), no CRC (1)
///   object type less 1 (2), rate index (4), private (1), channels (3), original, home (2)
///   copyright bit, its start (2), length (13), buffer fullness 0x7FF: unknown (11), frames less 1 (2)
void MakeHeader(const AudioConfig& aConfig, std::size_t aFrame, Player::Byte* aHeader) {
    const std::size_t lLength = aFrame + AdtsWriter::kHeaderSize;
    const unsigned lChannels = aConfig.mChannelConfiguration;
    aHeader[0] = 0xFF;
    aHeader[1] = 0xF1;
    aHeader[2] =
        static_cast<Player::Byte>((aConfig.mObjectType - 1) << 6 | RateIndex(aConfig.mRate) << 2 | lChannels >> 2);
    aHeader[3] = static_cast<Player::Byte>((lChannels & 3) << 6 | lLength >> 11);
    aHeader[4] = static_cast<Player::Byte>(lLength >> 3 & 0xFF);
    aHeader[5] = static_cast<Player::Byte>((lLength & 7) << 5 | 0x1F);
    aHeader[6] = 0xFC;
}

}  // namespace

void AdtsWriter::Check(const Player::Properties& aTrack) {
    ConfigFor(aTrack);
}

AdtsWriter::AdtsWriter(const Player::Properties& aTrack, const std::string& aPath, OutputFile::Existing aExisting)
    : mConfig(ConfigFor(aTrack)), mFile(aPath, aExisting) {}

void AdtsWriter::Write(const Player::Packet& aSample) {
    // No AAC frame is that large or empty; what a server sends may be.
    if (0 == aSample.Size() || aSample.Size() > kLargestFrame - kHeaderSize) { return; }
    Player::Byte lHeader[kHeaderSize];
    MakeHeader(mConfig, aSample.Size(), lHeader);
    mFile.Write(lHeader, kHeaderSize);
    mFile.Write(aSample.Begin(), aSample.Size());
}

}  // namespace Virertsp
