#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace Virertsp {

/// A JSON value that was read (RFC 8259). What is asked of a value of another kind is empty.
class JsonValue {
public:
    using Member = std::pair<std::string, JsonValue>;

    /// Nothing when the text is no JSON value, or one that is nested more than 32 deep. Whatever bytes come in, texts
    /// are UTF-8.
    static std::optional<JsonValue> Read(const std::string& aText);

    /// An object's member of that name, else null.
    const JsonValue& operator[](const char* aName) const;
    /// The members of an object, in the order of the text.
    const std::vector<Member>& Members() const { return mMembers; }
    /// The items of an array.
    const std::vector<JsonValue>& Items() const { return mItems; }
    const std::string& Text() const { return mText; }
    bool IsNumber() const { return mNumber.has_value(); }
    bool IsTrue() const { return mTrue; }
    /// Finite; 0 for what is no number.
    double Number() const { return mNumber.value_or(0); }

private:
    friend class JsonReader;

    std::vector<Member> mMembers;
    std::vector<JsonValue> mItems;
    std::string mText;
    std::optional<double> mNumber;
    bool mTrue = false;
};

}  // namespace Virertsp
