#include "writers/AnnexBWriter.hpp"

#include "CodecParameters.hpp"

namespace Virertsp {

namespace {

constexpr Player::Byte kStartCode[] = {0, 0, 0, 1};
/// In front of each NAL unit of a sample: its length, big-endian.
constexpr std::size_t kLengthSize = 4;

std::size_t ReadLength(const Player::Byte* aData) {
    std::size_t lLength = 0;
    for (std::size_t i = 0; i < kLengthSize; ++i) {
        lLength = lLength << 8 | aData[i];
    }
    return lLength;
}

}  // namespace

AnnexBWriter::AnnexBWriter(const Player::Properties& aTrack, const std::string& aPath, OutputFile::Existing aExisting)
    : mFile(aPath, aExisting) {
    for (const std::string& lSet : ParameterSetsOf(aTrack)) {
        if (!lSet.empty()) { WriteNAL(lSet.data(), lSet.size()); }
    }
}

void AnnexBWriter::Write(const Player::Packet& aSample) {
    const Player::Byte* lAt = aSample.Begin();
    const Player::Byte* const lEnd = aSample.End();
    while (lEnd - lAt >= static_cast<std::ptrdiff_t>(kLengthSize)) {
        const std::size_t lLeft = static_cast<std::size_t>(lEnd - lAt) - kLengthSize;
        const std::size_t lLength = ReadLength(lAt);
        lAt += kLengthSize;
        const std::size_t lSize = lLength < lLeft ? lLength : lLeft;
        WriteNAL(lAt, lSize);
        lAt += lSize;
    }
}

void AnnexBWriter::WriteNAL(const void* aData, std::size_t aSize) {
    mFile.Write(kStartCode, sizeof(kStartCode));
    mFile.Write(aData, aSize);
}

}  // namespace Virertsp
