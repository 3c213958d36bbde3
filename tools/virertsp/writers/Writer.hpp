#pragma once

#include <memory>
#include <string>

#include "Player/Packet.hpp"
#include "Player/Properties.hpp"
#include "writers/OutputFile.hpp"

namespace Virertsp {

/// Writes one track's samples as a file that ordinary players open.
class Writer {
public:
    Writer() = default;
    Writer(const Writer&) = delete;
    Writer& operator=(const Writer&) = delete;
    virtual ~Writer() = default;

    /// Takes the next sample. Throws `Failure`.
    virtual void Write(const Player::Packet& aSample) = 0;
    /// Completes the file; nothing may be written afterwards. Throws `Failure`.
    virtual void Finish() = 0;
    /// The file's name, for people.
    virtual std::string Name() const = 0;
};

/// The writer for a track's format. `aBase` is the file's path without its extension. Throws `Failure`: with
/// `kExitNothingPlayable` for a track that can't be written, while others may go on.
std::unique_ptr<Writer> MakeWriter(const Player::Properties& aTrack, const std::string& aBase,
                                   OutputFile::Existing aExisting = OutputFile::Existing::kKeep);

/// What the name of a track's file ends in: ".h264". Throws as `MakeWriter` does, and writes nothing.
std::string FileExtension(const Player::Properties& aTrack);

/// A writer that drops everything.
std::unique_ptr<Writer> MakeNullWriter();

}  // namespace Virertsp
