#include "writers/AmrWriter.hpp"

#include "Failure.hpp"
#include "FormatParameters.hpp"
#include "Player/String.hpp"

namespace Virertsp {

namespace {

constexpr char kMagic[] = "#!AMR\n";

/// Frame sizes by type (3GPP TS 26.101). Three types of comfort noise have 5 bytes: the first of them is AMR's own.
constexpr Player::UInt kSizes[] = {12, 13, 15, 17, 19, 20, 26, 31, 5, 6};

/// In front of a stored frame: padding (1 bit), type (4), quality: good (1), padding (2).
constexpr unsigned TableEntry(unsigned aType) {
    return aType << 3 | 0x04;
}

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
        throw Failure(kExitNothingPlayable, "AMR of " + lChannels + " channels is not understood here.");
    }
    const FormatParameters lParameters(aTrack);
    for (const Option& lOption : kOptions) {
        const std::string lValue = lParameters.Get(lOption.mName);
        if (!lValue.empty() && lOption.mPlain != Player::DecimalToUInt(lValue)) {
            throw Failure(kExitNothingPlayable,
                          std::string("AMR with ") + lOption.mName + "=" + lValue + " is not understood here.");
        }
    }
}

AmrWriter::AmrWriter(const Player::Properties& /*aTrack*/, const std::string& aPath, OutputFile::Existing aExisting)
    : mFile(aPath, aExisting) {
    mFile.Write(kMagic, sizeof(kMagic) - 1);
}

void AmrWriter::Write(const Player::Packet& aSample) {
    unsigned lType = 0;
    for (const Player::UInt lSize : kSizes) {
        if (lSize == aSample.Size()) {
            const auto lEntry = static_cast<Player::Byte>(TableEntry(lType));
            mFile.Write(&lEntry, 1);
            mFile.Write(aSample.Begin(), aSample.Size());
            return;
        }
        ++lType;
    }
}

}  // namespace Virertsp
