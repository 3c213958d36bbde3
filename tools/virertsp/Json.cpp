#include "Json.hpp"

#include <cinttypes>

#include "Player/String.hpp"
#include "Printable.hpp"

namespace Virertsp {

Json& Json::Open(char aBracket) {
    Separate();
    mText += aBracket;
    mOwed += '{' == aBracket ? '}' : ']';
    return *this;
}

Json& Json::Close() {
    mText += mOwed.back();
    mOwed.pop_back();
    return *this;
}

Json& Json::Key(const std::string& aName) {
    Separate();
    Quote(aName);
    mText += ':';
    return *this;
}

Json& Json::String(const std::string& aText) {
    Separate();
    Quote(aText);
    return *this;
}

Json& Json::Number(std::int64_t aValue) {
    Separate();
    mText += Player::StringWithFormat("%" PRId64, aValue);
    return *this;
}

Json& Json::Decimal(double aValue, int aDigits) {
    Separate();
    mText += Player::StringWithFormat("%.*f", aDigits, aValue);
    return *this;
}

Json& Json::Bool(bool aValue) {
    Separate();
    mText += aValue ? "true" : "false";
    return *this;
}

Json& Json::Null() {
    Separate();
    mText += "null";
    return *this;
}

/// A comma, except before the first and after a key.
void Json::Separate() {
    if (mText.empty()) { return; }
    const char lLast = mText.back();
    if ('{' != lLast && '[' != lLast && ':' != lLast) { mText += ','; }
}

void Json::Quote(const std::string& aText) {
    mText += '"';
    for (const char lCh : ValidUtf8(aText)) {
        if ('"' == lCh || '\\' == lCh) {
            mText += '\\';
            mText += lCh;
        } else if (IsControl(lCh)) {
            mText += Player::StringWithFormat("\\u%04x", static_cast<unsigned>(lCh));
        } else {
            mText += lCh;
        }
    }
    mText += '"';
}

}  // namespace Virertsp
