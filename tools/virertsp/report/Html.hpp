#pragma once

#include <string>
#include <utility>
#include <vector>

namespace Virertsp {

/// Writes an HTML page, element by element. All text and all values of attributes are escaped here, so that nothing
/// that a server says becomes markup; names of elements and attributes are the program's own.
///
///     Html lPage;
///     lPage.Open("p", {{"class", "note"}}).Text("a < b").Close();    // <p class="note">a &lt; b</p>
class Html {
public:
    using Attributes = std::vector<std::pair<const char*, std::string>>;

    Html& Open(const char* aElement, const Attributes& aAttributes = {});
    /// The innermost element.
    Html& Close();
    Html& Text(const std::string& aText);
    /// An element that holds text.
    Html& Element(const char* aElement, const std::string& aText, const Attributes& aAttributes = {});
    /// An element that holds nothing.
    Html& Void(const char* aElement, const Attributes& aAttributes);
    /// An element whose content, the program's own, goes out as it is.
    Html& Own(const char* aElement, const char* aContent);

    const std::string& Result() const { return mText; }

private:
    void Begin(const char* aElement, const Attributes& aAttributes);

    std::string mText = "<!DOCTYPE html>\n";
    std::vector<const char*> mOpen;
};

}  // namespace Virertsp
