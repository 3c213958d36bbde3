#include "writers/AmrWriter.hpp"

#include "CodecParameters.hpp"
#include "Failure.hpp"
#include "Player/AMRFrame.hpp"
#include "Player/String.hpp"

namespace Virertsp {

namespace {

constexpr char kMagic[] = "#!AMR\n";

/// A payload option that the frames are not taken apart for, and its harmless value.
struct Option {
    const char* mName;
    unsigned mPlain;
};

constexpr Option kOptions[] = {
    {"octet-align", 1}, {"crc", 0}, {"robust-sorting", 0}, {"interleaving", 0}, {"channels", 1},
};

}  // namespace

void AmrWriter::Check(const Player::Properties& aTrack) {
    const std::string lChannels = aTrack.Get("EncParams");
    if (Player::DecimalToUInt(lChannels, 1) > 1) {
        throw Failure(kExitNothingPlayable, "AMR of " + lChannels + " channels is not supported.");
    }
    const Player::FormatParameters lParameters = FormatParametersOf(aTrack);
    for (const Option& lOption : kOptions) {
        const std::string lValue = lParameters.Get(lOption.mName);
        if (!lValue.empty() && lOption.mPlain != Player::DecimalToUInt(lValue)) {
            throw Failure(kExitNothingPlayable,
                          std::string("AMR with ") + lOption.mName + "=" + lValue + " is not supported.");
        }
    }
}

AmrWriter::AmrWriter(const Player::Properties& /*aTrack*/, const std::string& aPath, OutputFile::Existing aExisting)
    : mFile(aPath, aExisting) {
    mFile.Write(kMagic, sizeof(kMagic) - 1);
}

void AmrWriter::Write(const Player::Packet& aSample) {
    const Player::UInt lType = Player::AMRFrame::TypeOf(aSample.Size());
    if (Player::AMRFrame::kNoType == lType) { return; }
    const Player::Byte lEntry = Player::AMRFrame::Entry(lType);
    mFile.Write(&lEntry, 1);
    mFile.Write(aSample.Begin(), aSample.Size());
}

}  // namespace Virertsp
