#include "writers/M4vWriter.hpp"

#include "FormatParameters.hpp"

namespace Virertsp {

M4vWriter::M4vWriter(const Player::Properties& aTrack, const std::string& aPath) : mFile(aPath) {
    const std::string lConfig = FormatParameters(aTrack).Config();
    mFile.Write(lConfig.data(), lConfig.size());
}

}  // namespace Virertsp
