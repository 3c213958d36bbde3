#include "report/Html.hpp"

#include "Printable.hpp"

namespace Virertsp {

namespace {

std::string Escaped(const std::string& aText) {
    std::string lEscaped;
    for (const char lCh : Printable(aText)) {
        switch (lCh) {
            case '&': lEscaped += "&amp;"; break;

            case '<': lEscaped += "&lt;"; break;
            case '>': lEscaped += "&gt;"; break;
            case '"': lEscaped += "&quot;"; break;
            case '\'': lEscaped += "&#39;"; break;
            default: lEscaped += lCh;
        }
    }
    return lEscaped;
}

}  // namespace

void Html::Begin(const char* aElement, const Attributes& aAttributes) {
    mText += std::string("<") + aElement;
    for (const auto& [lName, lValue] : aAttributes) {
        mText += std::string(" ") + lName + "=\"" + Escaped(lValue) + "\"";
    }
}

Html& Html::Open(const char* aElement, const Attributes& aAttributes) {
    Begin(aElement, aAttributes);
    mText += ">";
    mOpen.push_back(aElement);
    return *this;
}

Html& Html::Close() {
    mText += std::string("</") + mOpen.back() + ">\n";
    mOpen.pop_back();
    return *this;
}

Html& Html::Text(const std::string& aText) {
    mText += Escaped(aText);
    return *this;
}

Html& Html::Element(const char* aElement, const std::string& aText, const Attributes& aAttributes) {
    return Open(aElement, aAttributes).Text(aText).Close();
}

Html& Html::Void(const char* aElement, const Attributes& aAttributes) {
    Begin(aElement, aAttributes);
    mText += "/>\n";
    return *this;
}

Html& Html::Own(const char* aElement, const char* aContent) {
    Open(aElement);
    mText += aContent;
    return Close();
}

}  // namespace Virertsp
