#pragma once

#include <map>
#include <string>
#include <vector>

#include "JsonValue.hpp"

namespace Virertsp {

/// What a report is made of, read from lines of JSON: what "probe --json" and "stats --json" write, and what the report
/// notes beside them.
struct Findings {
    struct Point {
        double mX;
        double mY;
    };
    using Points = std::vector<Point>;

    /// By seconds since the start, except for the intervals, which are by play time.
    struct Track {
        std::string mFormat;
        Points mRate;
        /// Since the line before.
        Points mLost;
        Points mJitter;
        Points mBuffered;
        /// The "summary" line, else the latest of the track.
        JsonValue mFigures;
        /// Play times of access units, and of those among them that a decoder can begin with.
        std::vector<double> mUnits;
        std::vector<double> mKeys;
    };

    /// A decoded picture: JPEG in base 64.
    struct Picture {
        unsigned mTrack;
        double mPlayTime;
        std::string mData;
    };

    /// False for a line that is not understood; it changes nothing.
    bool Take(const std::string& aLine);

    /// Milliseconds from each play time to the next.
    static Points Intervals(std::vector<double> aPlayTimes);

    JsonValue mPresentation;
    std::map<unsigned, Track> mTracks;
    std::vector<Picture> mPictures;
    /// What ended the session early; empty when nothing did.
    std::string mFailure;

private:
    bool TakeTrackLine(const JsonValue& aLine, const std::string& aType);
    void TakeRow(const JsonValue& aLine, Track& aTrack);
};

}  // namespace Virertsp
