#pragma once

#include <memory>
#include <string>

#include "Player/Properties.hpp"
#include "Player/Time.hpp"
#include "writers/OutputFile.hpp"
#include "writers/Writer.hpp"

namespace Virertsp {

/// One file of all tracks: MP4 in fragments, so that a process that is killed leaves a good file, or Matroska.
class Container : public std::enable_shared_from_this<Container> {
public:
    /// Whether the path's ending asks for a container: ".mp4" or ".mkv", in any case.
    static bool IsFor(const std::string& aPath);
    /// The play time `aStart` becomes the file's beginning. Throws `Failure`, also when this program was built without
    /// libavformat.
    static std::shared_ptr<Container> Make(const std::string& aPath, OutputFile::Existing aExisting,
                                           const Player::Time& aStart);

    Container() = default;
    Container(const Container&) = delete;
    Container& operator=(const Container&) = delete;
    virtual ~Container() = default;

    /// A writer of one track; all are added before the first sample is written, and the file is complete when all are
    /// finished. Throws as `MakeWriter` does.
    virtual std::unique_ptr<Writer> AddTrack(const Player::Properties& aTrack) = 0;
};

}  // namespace Virertsp
