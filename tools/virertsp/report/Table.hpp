#pragma once

#include <string>
#include <vector>

#include "report/Html.hpp"

namespace Virertsp {

/// Rows of text.
class Table {
public:
    using Row = std::vector<std::string>;

    /// Without a heading, the first cell of each row names it.
    explicit Table(Row aHeading = {}) : mHeading(std::move(aHeading)) {}

    void Add(Row aRow) { mRows.push_back(std::move(aRow)); }
    /// Draws nothing when there are no rows.
    void Draw(Html& aPage) const;

private:
    Row mHeading;
    std::vector<Row> mRows;
};

}  // namespace Virertsp
