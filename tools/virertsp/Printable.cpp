#include "Printable.hpp"

#include <glib.h>

namespace Virertsp {

namespace {

/// U+0080 to U+009F, which terminals obey as well: C2 80 to C2 9F.
bool IsUpperControl(const std::string& aText, std::size_t aAt) {
    return '\xC2' == aText[aAt] && aAt + 1 < aText.size() && static_cast<unsigned char>(aText[aAt + 1]) < 0xA0;
}

}  // namespace

std::string ValidUtf8(const std::string& aText) {
    gchar* const lValid = g_utf8_make_valid(aText.data(), static_cast<gssize>(aText.size()));
    std::string lText = lValid;
    g_free(lValid);
    return lText;
}

std::string Printable(const std::string& aText) {
    const std::string lText = ValidUtf8(aText);
    std::string lPrintable;
    for (std::size_t i = 0; i < lText.size(); ++i) {
        const bool lUpper = IsUpperControl(lText, i);
        lPrintable += lUpper || IsControl(lText[i]) ? '?' : lText[i];
        if (lUpper) { ++i; }
    }
    return lPrintable;
}

}  // namespace Virertsp
