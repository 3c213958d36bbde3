#include "writers/Writer.hpp"

#include <strings.h>

#include "Failure.hpp"
#include "FormatName.hpp"
#include "writers/AdtsWriter.hpp"
#include "writers/AmrWriter.hpp"
#include "writers/AnnexBWriter.hpp"
#include "writers/M4vWriter.hpp"

namespace Virertsp {

namespace {

template <typename T>
std::unique_ptr<Writer> Make(const Player::Properties& aTrack, const std::string& aPath,
                             OutputFile::Existing aExisting) {
    return std::make_unique<T>(aTrack, aPath, aExisting);
}

void CheckNothing(const Player::Properties& /*aTrack*/) {}

struct Format {
    const char* mName;
    const char* mExtension;
    std::unique_ptr<Writer> (*mMake)(const Player::Properties& aTrack, const std::string& aPath,
                                     OutputFile::Existing aExisting);
    /// Throws `Failure` for a track of the format that can't be written.
    void (*mCheck)(const Player::Properties& aTrack);
};

constexpr Format kFormats[] = {
    {"H264", ".h264", Make<AnnexBWriter>, CheckNothing},
    {"MP4V-ES", ".m4v", Make<M4vWriter>, CheckNothing},
    {"MP4A-LATM", ".aac", Make<AdtsWriter>, AdtsWriter::Check},
    {"mpeg4-generic", ".aac", Make<AdtsWriter>, AdtsWriter::Check},
    {"AMR", ".amr", Make<AmrWriter>, AmrWriter::Check},
};

const Format& FormatOf(const Player::Properties& aTrack) {
    const std::string lName = aTrack.Get("Format");
    if (0 == strcasecmp("enc-mpeg4-generic", lName.c_str())) {
        throw Failure(kExitNothingPlayable, "It is encrypted, and there is no key.");
    }
    for (const Format& lFormat : kFormats) {
        if (0 == strcasecmp(lName.c_str(), lFormat.mName)) { return lFormat; }
    }
    throw Failure(kExitNothingPlayable, "No file format is known for " + FormatName(aTrack) + ".");
}

class NullWriter : public Writer {
public:
    void Write(const Player::Packet& /*aSample*/) override {}
    void Finish() override {}
    std::string Name() const override { return "nowhere"; }
};

}  // namespace

std::unique_ptr<Writer> MakeWriter(const Player::Properties& aTrack, const std::string& aBase,
                                   OutputFile::Existing aExisting) {
    const Format& lFormat = FormatOf(aTrack);
    // A file that can't become anything is not begun.
    lFormat.mCheck(aTrack);
    return lFormat.mMake(aTrack, aBase + lFormat.mExtension, aExisting);
}

std::string FileExtension(const Player::Properties& aTrack) {
    const Format& lFormat = FormatOf(aTrack);
    lFormat.mCheck(aTrack);
    return lFormat.mExtension;
}

std::unique_ptr<Writer> MakeNullWriter() {
    return std::make_unique<NullWriter>();
}

}  // namespace Virertsp
