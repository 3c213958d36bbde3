#pragma once

#include <string>

#include "writers/OutputFile.hpp"
#include "writers/Writer.hpp"

namespace Virertsp {

/// AMR narrow-band in its storage format (RFC 4867 section 5): a magic number, then each frame after a byte with
/// its type. The samples come without that byte; their size gives it back.
class AmrWriter : public Writer {
public:
    /// Throws `Failure` for a track that says it is sent in another way than octet-aligned, one channel, plain.
    static void Check(const Player::Properties& aTrack);

    AmrWriter(const Player::Properties& aTrack, const std::string& aPath, OutputFile::Existing aExisting);

    void Write(const Player::Packet& aSample) override;
    void Finish() override { mFile.Close(); }
    std::string Name() const override { return mFile.Path(); }

private:
    OutputFile mFile;
};

}  // namespace Virertsp
