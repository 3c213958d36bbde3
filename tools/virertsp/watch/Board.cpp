#include "watch/Board.hpp"

#include <glib.h>

#include <algorithm>
#include <ctime>

#include "Player/String.hpp"

namespace Virertsp {

namespace {

/// More is for what is said of a location.
constexpr std::size_t kMostURLColumns = 48;
constexpr std::size_t kFewestURLColumns = 8;
/// Of state, bit rate and losses.
constexpr std::size_t kFigureColumns = 44;

/// "2026-01-31T12:34:56"
std::string Now() {
    const std::time_t lNow = std::time(nullptr);
    std::tm lTime = {};
    localtime_r(&lNow, &lTime);
    char lText[32] = {};
    std::strftime(lText, sizeof(lText), "%Y-%m-%dT%H:%M:%S", &lTime);
    return lText;
}

}  // namespace

Board::Board(Kind aKind, const std::vector<std::string>& aURLs) : mKind(aKind) {
    for (const std::string& lURL : aURLs) {
        mLines.emplace_back(lURL);
        mURLColumns = std::max(mURLColumns, lURL.size());
    }
}

std::string Board::Text(std::size_t aColumns, std::size_t aRows) {
    switch (mKind) {
        case Kind::kTerminal: return TerminalText(aColumns, aRows);
        case Kind::kJson: return JsonText();
        case Kind::kLines: break;
    }
    std::string lText;
    for (const WatchLine& lLine : mLines) {
        lText += Now() + "  " + lLine.Text(mURLColumns) + "\n";
    }
    return lText;
}

std::string Board::TerminalText(std::size_t aColumns, std::size_t aRows) {
    const std::size_t lRoom = aColumns > kFigureColumns ? aColumns - kFigureColumns : 0;
    const std::size_t lURLColumns = std::clamp(std::min(lRoom, mURLColumns), kFewestURLColumns, kMostURLColumns);
    std::vector<std::string> lRows = {WatchLine::Heading(lURLColumns)};
    for (const WatchLine& lLine : mLines) {
        lRows.push_back(lLine.Text(lURLColumns));
    }
    // The cursor stands in a row of its own; what does not fit would scroll away.
    const std::size_t lMost = std::max<std::size_t>(aRows, 3) - 1;
    if (lRows.size() > lMost) {
        const std::size_t lHidden = lRows.size() - lMost + 1;
        lRows.resize(lMost - 1);
        lRows.push_back(Player::StringWithFormat("and %zu more", lHidden));
    }
    std::string lText = 0 == mShownRows ? "" : Player::StringWithFormat("\033[%zuA", mShownRows);
    for (const std::string& lRow : lRows) {
        lText += "\r" + Fitted(lRow, aColumns - 1) + "\033[K\n";
    }
    mShownRows = lRows.size();
    // What stood there when the terminal was higher.
    return lText + "\033[J";
}

std::string Board::JsonText() const {
    Json lJson;
    lJson.Open('{').Key("time").Number(std::time(nullptr)).Key("locations").Open('[');
    for (const WatchLine& lLine : mLines) {
        lLine.AddTo(lJson);
    }
    lJson.Close().Close();
    return lJson.Text() + "\n";
}

}  // namespace Virertsp
