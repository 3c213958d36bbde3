#pragma once

#include <cstdint>
#include <string>

namespace Virertsp {

/// Writes one JSON value (RFC 8259) on one line. Whatever bytes come in as text, the result is UTF-8.
///
///     Json lJson;
///     lJson.Open('{').Key("track").Number(0).Key("sizes").Open('[').Number(1).Number(2).Close().Close();
///     lJson.Text()    // {"track":0,"sizes":[1,2]}
class Json {
public:
    /// '{' begins an object, '[' an array; `Close` ends the innermost one.
    Json& Open(char aBracket);
    Json& Close();
    /// Within an object, before each value.
    Json& Key(const char* aName) { return Key(std::string(aName)); }
    Json& Key(const std::string& aName);

    Json& String(const std::string& aText);
    Json& Number(std::int64_t aValue);
    /// With that many digits after the point.
    Json& Decimal(double aValue, int aDigits);
    Json& Bool(bool aValue);
    Json& Null();

    const std::string& Text() const { return mText; }

private:
    void Separate();
    void Quote(const std::string& aText);

    std::string mText;
    /// The closing brackets that are still owed, innermost last.
    std::string mOwed;
};

}  // namespace Virertsp
