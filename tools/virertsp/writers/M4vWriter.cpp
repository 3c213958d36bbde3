#include "writers/M4vWriter.hpp"

#include "CodecParameters.hpp"

namespace Virertsp {

M4vWriter::M4vWriter(const Player::Properties& aTrack, const std::string& aPath, OutputFile::Existing aExisting)
    : mFile(aPath, aExisting) {
    const std::string lConfig = FormatParametersOf(aTrack).Config();
    mFile.Write(lConfig.data(), lConfig.size());
}

}  // namespace Virertsp
