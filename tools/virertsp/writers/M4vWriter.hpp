#pragma once

#include <string>

#include "writers/OutputFile.hpp"
#include "writers/Writer.hpp"

namespace Virertsp {

/// MPEG-4 visual as an elementary stream (ISO/IEC 14496-2): the configuration of the description, then the
/// samples as they come.
class M4vWriter : public Writer {
public:
    M4vWriter(const Player::Properties& aTrack, const std::string& aPath, OutputFile::Existing aExisting);

    void Write(const Player::Packet& aSample) override { mFile.Write(aSample.Begin(), aSample.Size()); }
    void Finish() override { mFile.Close(); }
    std::string Name() const override { return mFile.Path(); }

private:
    OutputFile mFile;
};

}  // namespace Virertsp
