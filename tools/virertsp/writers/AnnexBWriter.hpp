#pragma once

#include <string>

#include "writers/OutputFile.hpp"
#include "writers/Writer.hpp"

namespace Virertsp {

/// H.264 as a byte stream (ITU-T H.264 Annex B): each NAL unit after a start code of four bytes, the
/// parameter sets of the description first.
class AnnexBWriter : public Writer {
public:
    AnnexBWriter(const Player::Properties& aTrack, const std::string& aPath, OutputFile::Existing aExisting);

    void Write(const Player::Packet& aSample) override;
    void Finish() override { mFile.Close(); }
    std::string Name() const override { return mFile.Path(); }

private:
    void WriteNAL(const void* aData, std::size_t aSize);

    OutputFile mFile;
};

}  // namespace Virertsp
