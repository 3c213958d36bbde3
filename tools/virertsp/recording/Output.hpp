#pragma once

#include <memory>
#include <string>

#include "Player/MediaTrack.hpp"
#include "writers/Container.hpp"
#include "writers/OutputFile.hpp"
#include "writers/Writer.hpp"

namespace Virertsp {

/// The files of a recording: names and opens them, part by part.
class Output {
public:
    struct Settings {
        /// A directory with a file for each track, or one file for all of them (see `Container`). Everything is dropped
        /// when this is a device such as /dev/null.
        std::string mPath;
        /// One line per sample with its play time in ns, in a file beside each track's.
        bool mTimes = false;
        /// Existing files are replaced instead of refused.
        bool mForce = false;
        /// The numbers of all parts are in their files' names, in four digits; else those from the second on.
        bool mNumbered = false;
    };

    /// A track's files of one part.
    struct Files {
        std::unique_ptr<Writer> mWriter;
        /// Null without times.
        std::unique_ptr<OutputFile> mTimes;
    };

    explicit Output(Settings aSettings);

    bool Drops() const { return mDrops; }
    /// The first part of this many: refuses numbered files that would be in its way or in that of a later one.
    /// Throws `Failure`.
    void BeginFirst(unsigned aPart);
    /// Files that are opened from here on are of the part, which begins at this play time. Throws `Failure`.
    void Begin(unsigned aPart, const Player::Time& aStart);
    /// Throws `Failure`: with `kExitNothingPlayable` for a track that can't be written.
    Files Open(Player::TrackIdx aTrack, const Player::Properties& aInfo);

    /// Files that hold nothing.
    static Files Nowhere() { return {MakeNullWriter(), nullptr}; }

private:
    OutputFile::Existing Existing() const;
    /// "-2" or "-0002".
    std::string Suffix(unsigned aPart) const;
    /// The path of one file of the part.
    std::string ContainerPath(unsigned aPart) const;
    /// Of the files of this name the part's number; 0 for other names.
    unsigned PartOf(const std::string& aName) const;

    Settings mSettings;
    bool mDrops;
    bool mIsFile;
    unsigned mPart = 1;
    /// Null when each track has a file of its own.
    std::shared_ptr<Container> mContainer;
};

}  // namespace Virertsp
