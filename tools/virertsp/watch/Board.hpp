#pragma once

#include <string>
#include <vector>

#include "watch/WatchLine.hpp"

namespace Virertsp {

/// What is shown of all locations: on a terminal lines that are written over again and again, elsewhere the same lines
/// with the time in front, or JSON.
class Board {
public:
    enum class Kind { kTerminal, kLines, kJson };

    /// Without users.
    Board(Kind aKind, const std::vector<std::string>& aURLs);

    WatchLine& Line(std::size_t aIndex) { return mLines[aIndex]; }
    /// What goes out for the present state of the lines; a terminal has this many columns and rows.
    std::string Text(std::size_t aColumns, std::size_t aRows);

private:
    std::string TerminalText(std::size_t aColumns, std::size_t aRows);
    std::string JsonText() const;

    Kind mKind;
    std::vector<WatchLine> mLines;
    /// The longest URL's columns.
    std::size_t mURLColumns = 0;
    /// On the terminal, from the time before.
    std::size_t mShownRows = 0;
};

}  // namespace Virertsp
