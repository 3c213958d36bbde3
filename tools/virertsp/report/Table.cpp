#include "report/Table.hpp"

namespace Virertsp {

void Table::Draw(Html& aPage) const {
    if (mRows.empty()) { return; }
    aPage.Open("table");
    if (!mHeading.empty()) {
        aPage.Open("tr");
        for (const std::string& lCell : mHeading) {
            aPage.Element("th", lCell, {{"scope", "col"}});
        }
        aPage.Close();
    }
    for (const Row& lRow : mRows) {
        aPage.Open("tr");
        for (std::size_t i = 0; i < lRow.size(); ++i) {
            const bool lName = 0 == i && mHeading.empty();
            aPage.Element(lName ? "th" : "td", lRow[i],
                          lName ? Html::Attributes{{"scope", "row"}} : Html::Attributes());
        }
        aPage.Close();
    }
    aPage.Close();
}

}  // namespace Virertsp
