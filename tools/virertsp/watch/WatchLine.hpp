#pragma once

#include <string>

#include "Json.hpp"
#include "watch/Location.hpp"

namespace Virertsp {

/// One location as a line, refreshed with each look at it.
class WatchLine {
public:
    using Clock = Location::Clock;

    /// `aURL` without a user.
    explicit WatchLine(const std::string& aURL) : mURL(aURL) {}

    /// The bit rate and the losses are those since the look before.
    void Update(const Location::View& aView, Clock::time_point aNow);

    /// Names the columns of `Text`.
    static std::string Heading(std::size_t aURLColumns);
    /// For people; the URL takes this many columns.
    std::string Text(std::size_t aURLColumns) const;
    void AddTo(Json& aJson) const;
    const std::string& URL() const { return mURL; }

private:
    std::string StateText() const;

    std::string mURL;
    Location::View mView;
    double mKiloBits = 0;
    /// Of the packets that were expected since the look before, in percent.
    double mLoss = 0;
    Clock::time_point mLast;
};

/// The text in this many columns of a terminal: cut, or filled with spaces.
std::string Fitted(const std::string& aText, std::size_t aColumns);

}  // namespace Virertsp
