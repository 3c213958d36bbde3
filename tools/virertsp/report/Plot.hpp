#pragma once

#include <string>
#include <vector>

#include "report/Findings.hpp"
#include "report/Html.hpp"

namespace Virertsp {

/// One figure over time, a line for each track, as inline SVG with a caption.
class Plot {
public:
    /// The unit of what is plotted, "kbit/s"; time is in seconds.
    Plot(const char* aTitle, const char* aUnit) : mTitle(aTitle), mUnit(aUnit) {}

    /// A line without points is left out.
    void Add(unsigned aTrack, const std::string& aName, Findings::Points aPoints);
    bool IsEmpty() const { return mLines.empty(); }
    void Draw(Html& aPage) const;

    /// Colours are taken turn by turn.
    static constexpr unsigned kColours = 4;

private:
    struct Line {
        unsigned mTrack;
        std::string mName;
        Findings::Points mPoints;
    };
    struct Range {
        double mLow;
        double mHigh;
        /// Between two lines of the grid.
        double mStep;
    };

    Range RangeOf(double Findings::Point::*aCoordinate, bool aFromZero) const;
    void DrawGrid(const Range& aX, const Range& aY, Html& aPage) const;
    void DrawCaption(Html& aPage) const;

    const char* mTitle;
    const char* mUnit;
    std::vector<Line> mLines;
};

/// At most about twice as many points as `aColumns`, evenly spread: the lowest and the highest of each column.
Findings::Points Thinned(const Findings::Points& aPoints, std::size_t aColumns);

}  // namespace Virertsp
