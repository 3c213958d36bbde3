#pragma once

#include <string>

#include "Parser/AudioConfig.hpp"
#include "writers/OutputFile.hpp"
#include "writers/Writer.hpp"

namespace Virertsp {

/// AAC as an Audio Data Transport Stream (ISO/IEC 14496-3 annex 1.A): each frame after a header of 7 bytes that
/// repeats what the description says once.
class AdtsWriter : public Writer {
public:
    static constexpr std::size_t kHeaderSize = 7;

    /// Throws `Failure` for audio whose configuration the headers have no place for.
    static void Check(const Player::Properties& aTrack);

    AdtsWriter(const Player::Properties& aTrack, const std::string& aPath, OutputFile::Existing aExisting);

    void Write(const Player::Packet& aSample) override;
    void Finish() override { mFile.Close(); }
    std::string Name() const override { return mFile.Path(); }

private:
    Parser::AudioConfig mConfig;
    OutputFile mFile;
};

}  // namespace Virertsp
