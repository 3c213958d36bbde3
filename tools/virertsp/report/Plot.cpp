#include "report/Plot.hpp"

#include <algorithm>
#include <cmath>

#include "Player/String.hpp"

namespace Virertsp {

namespace {

using Player::StringWithFormat;
using Point = Findings::Point;
using Points = Findings::Points;

/// In units of the drawing, which are pixels where the page is as narrow as a telephone.
constexpr double kWidth = 340;
constexpr double kHeight = 170;
constexpr double kLeft = 46;
constexpr double kRight = kWidth - 8;
constexpr double kTop = 8;
constexpr double kBottom = kHeight - 20;
constexpr std::size_t kColumns = 280;
constexpr double kSteps = 4;
/// A step may be too small to change a number that it is added to.
constexpr unsigned kMostLines = 10;

/// 1, 2 or 5 times a power of ten, so that about this many steps fill the width.
double NiceStep(double aWidth) {
    const double lRough = aWidth / kSteps;
    const double lPower = std::pow(10, std::floor(std::log10(lRough)));
    for (const double lFactor : {1., 2., 5.}) {
        if (lFactor * lPower >= lRough) { return lFactor * lPower; }
    }
    return 10 * lPower;
}

std::string Number(double aValue) {
    return StringWithFormat("%.6g", aValue);
}

std::string Coordinate(double aValue) {
    return StringWithFormat("%.1f", aValue);
}

double Place(double aValue, double aLow, double aHigh, double aFrom, double aTo) {
    return aFrom + (aValue - aLow) / (aHigh - aLow) * (aTo - aFrom);
}

bool IsLower(const Point& aA, const Point& aB) {
    return aA.mY < aB.mY;
}

}  // namespace

Points Thinned(const Points& aPoints, std::size_t aColumns) {
    if (aPoints.size() <= 2 * aColumns) { return aPoints; }
    Points lThinned;
    for (std::size_t lColumn = 0; lColumn < aColumns; ++lColumn) {
        const auto lAt = [&](std::size_t aColumn) {
            return aPoints.begin() + static_cast<std::ptrdiff_t>(aPoints.size() * aColumn / aColumns);
        };
        auto [lLow, lHigh] = std::minmax_element(lAt(lColumn), lAt(lColumn + 1), IsLower);
        if (lHigh < lLow) { std::swap(lLow, lHigh); }
        lThinned.push_back(*lLow);
        if (lLow != lHigh) { lThinned.push_back(*lHigh); }
    }
    return lThinned;
}

void Plot::Add(unsigned aTrack, const std::string& aName, Points aPoints) {
    if (!aPoints.empty()) { mLines.push_back({aTrack, aName, std::move(aPoints)}); }
}

Plot::Range Plot::RangeOf(double Point::*aCoordinate, bool aFromZero) const {
    double lLow = aFromZero ? 0 : mLines.front().mPoints.front().*aCoordinate;
    double lHigh = lLow;
    for (const Line& lLine : mLines) {
        for (const Point& lPoint : lLine.mPoints) {
            lLow = std::min(lLow, lPoint.*aCoordinate);
            lHigh = std::max(lHigh, lPoint.*aCoordinate);
        }
    }
    if (!(lHigh > lLow)) { lHigh = lLow + 1; }
    const double lStep = NiceStep(lHigh - lLow);
    // Values fill the steps; time fills the width.
    if (aFromZero) {
        lLow = std::floor(lLow / lStep) * lStep;
        lHigh = std::ceil(lHigh / lStep) * lStep;
    }
    return {lLow, lHigh, lStep};
}

void Plot::DrawGrid(const Range& aX, const Range& aY, Html& aPage) const {
    for (unsigned lLine = 0; lLine < kMostLines; ++lLine) {
        const double lValue = aY.mLow + lLine * aY.mStep;
        if (lValue > aY.mHigh + aY.mStep / 2) { break; }
        const std::string lY = Coordinate(Place(lValue, aY.mLow, aY.mHigh, kBottom, kTop));
        aPage.Void("path", {{"class", "grid"}, {"d", "M" + Coordinate(kLeft) + " " + lY + "H" + Coordinate(kRight)}});
        // What is left of a step below zero is no number to read.
        const double lShown = std::abs(lValue) < aY.mStep / 2 ? 0 : lValue;
        aPage.Element("text", Number(lShown), {{"x", Coordinate(kLeft - 5)}, {"y", lY}, {"dy", "4"}, {"class", "y"}});
    }
    for (unsigned lLine = 0; lLine < kMostLines; ++lLine) {
        const double lValue = (std::ceil(aX.mLow / aX.mStep) + lLine) * aX.mStep;
        if (lValue > aX.mHigh) { break; }
        const std::string lX = Coordinate(Place(lValue, aX.mLow, aX.mHigh, kLeft, kRight));
        aPage.Element("text", Number(lValue) + " s", {{"x", lX}, {"y", Coordinate(kHeight - 6)}, {"class", "x"}});
    }
}

void Plot::DrawCaption(Html& aPage) const {
    aPage.Open("figcaption").Element("b", std::string(mTitle) + ", " + mUnit);
    for (const Line& lLine : mLines) {
        const auto [lLow, lHigh] = std::minmax_element(lLine.mPoints.begin(), lLine.mPoints.end(), IsLower);
        const std::string lColour = StringWithFormat("key c%u", lLine.mTrack % kColours);
        aPage.Open("span", {{"class", lColour}}).Text(lLine.mName + ": ");
        const std::string lFrom = Number(lLow->mY);
        const std::string lTo = Number(lHigh->mY);
        aPage.Text(lFrom);
        if (lFrom != lTo) { aPage.Text(" to ").Text(lTo); }
        aPage.Close();
    }
    aPage.Close();
}

void Plot::Draw(Html& aPage) const {
    if (IsEmpty()) { return; }
    const Range lX = RangeOf(&Point::mX, false);
    const Range lY = RangeOf(&Point::mY, true);
    aPage.Open("figure", {{"class", "plot"}});
    DrawCaption(aPage);
    aPage.Open("svg", {{"viewBox", "0 0 " + Number(kWidth) + " " + Number(kHeight)},
                       {"role", "img"},
                       {"aria-label", std::string(mTitle) + " over time"}});
    DrawGrid(lX, lY, aPage);
    for (const Line& lLine : mLines) {
        std::string lPath;
        for (const Point& lPoint : Thinned(lLine.mPoints, kColumns)) {
            lPath += (lPath.empty() ? "M" : "L") + Coordinate(Place(lPoint.mX, lX.mLow, lX.mHigh, kLeft, kRight)) +
                     " " + Coordinate(Place(lPoint.mY, lY.mLow, lY.mHigh, kBottom, kTop));
        }
        // One point is a dot.
        if (1 == lLine.mPoints.size()) { lPath += "h0"; }
        aPage.Void("path", {{"class", StringWithFormat("line c%u", lLine.mTrack % kColours)}, {"d", lPath}});
    }
    aPage.Close().Close();
}

}  // namespace Virertsp
