#include "writers/M4vWriter.hpp"

#include "FormatParameters.hpp"

namespace Virertsp {

M4vWriter::M4vWriter(const Player::Properties& aTrack, const std::string& aPath, OutputFile::Existing aExisting)
    : mFile(aPath, aExisting) {
    const std::string lConfig = FormatParameters(aTrack).Config();
    mFile.Write(lConfig.data(), lConfig.size());
}

}  // namespace Virertsp
