#include "JsonValue.hpp"

#include <glib.h>

#include <cmath>
#include <cstring>

#include "Printable.hpp"

namespace Virertsp {

namespace {

constexpr unsigned kDeepest = 32;
constexpr unsigned kHexDigits = 4;

}  // namespace

/// A cursor over the text, which ends in a null byte. A function that finds something else than it reads gives false,
/// and the cursor's place does not matter any more.
class JsonReader {
public:
    explicit JsonReader(const std::string& aText) : mText(ValidUtf8(aText)), mAt(mText.c_str()) {}

    bool ReadAll(JsonValue& aValue) {
        const bool lRead = ReadValue(aValue, kDeepest);
        SkipSpace();
        return lRead && '\0' == *mAt;
    }

private:
    void SkipSpace() { mAt += std::strspn(mAt, " \t\r\n"); }

    bool Take(char aCh) {
        SkipSpace();
        if (aCh != *mAt) { return false; }
        ++mAt;
        return true;
    }

    bool TakeWord(const char* aWord) {
        const std::size_t lSize = std::strlen(aWord);
        if (0 != std::strncmp(mAt, aWord, lSize)) { return false; }
        mAt += lSize;
        return true;
    }

    bool ReadValue(JsonValue& aValue, unsigned aDepth) {
        SkipSpace();
        switch (*mAt) {
            case '{': return 0 != aDepth && ReadObject(aValue, aDepth - 1);
            case '[': return 0 != aDepth && ReadArray(aValue, aDepth - 1);
            case '"': return ReadText(aValue.mText);
            case 't': return aValue.mTrue = TakeWord("true");
            case 'f': return TakeWord("false");
            case 'n': return TakeWord("null");
            default: return ReadNumber(aValue);
        }
    }

    bool ReadObject(JsonValue& aValue, unsigned aDepth) {
        Take('{');
        if (Take('}')) { return true; }
        do {
            aValue.mMembers.emplace_back();
            JsonValue::Member& lMember = aValue.mMembers.back();
            SkipSpace();
            if (!ReadText(lMember.first) || !Take(':') || !ReadValue(lMember.second, aDepth)) { return false; }
        } while (Take(','));
        return Take('}');
    }

    bool ReadArray(JsonValue& aValue, unsigned aDepth) {
        Take('[');
        if (Take(']')) { return true; }
        do {
            aValue.mItems.emplace_back();
            if (!ReadValue(aValue.mItems.back(), aDepth)) { return false; }
        } while (Take(','));
        return Take(']');
    }

    bool ReadNumber(JsonValue& aValue) {
        const std::size_t lSize = std::strspn(mAt, "+-.0123456789eE");
        const std::string lText(mAt, lSize);
        gchar* lEnd = nullptr;
        const double lNumber = g_ascii_strtod(lText.c_str(), &lEnd);
        if (0 == lSize || '\0' != *lEnd || !std::isfinite(lNumber)) { return false; }
        mAt += lSize;
        aValue.mNumber = lNumber;
        return true;
    }

    bool ReadText(std::string& aText) {
        if ('"' != *mAt++) { return false; }
        while ('"' != *mAt) {
            if ('\0' == *mAt) { return false; }
            if ('\\' != *mAt) {
                aText += *mAt++;
            } else if (!ReadEscape(aText)) {
                return false;
            }
        }
        ++mAt;
        return true;
    }

    bool ReadEscape(std::string& aText) {
        constexpr char kNames[] = "\"\\/bfnrt";
        constexpr char kMeant[] = "\"\\/\b\f\n\r\t";
        ++mAt;
        if (TakeWord("u")) { return ReadCharacter(aText); }
        const char* const lFound = '\0' == *mAt ? nullptr : std::strchr(kNames, *mAt);
        if (nullptr == lFound) { return false; }
        aText += kMeant[lFound - kNames];
        ++mAt;
        return true;
    }

    /// Behind "\u"; what is beyond U+FFFF comes as two of them.
    bool ReadCharacter(std::string& aText) {
        gunichar lCharacter = 0;
        if (!ReadHex(lCharacter)) { return false; }
        if (0xD800 == (lCharacter & 0xFC00) && TakeWord("\\u")) {
            gunichar lLow = 0;
            if (!ReadHex(lLow)) { return false; }
            lCharacter = 0x10000 + ((lCharacter & 0x3FF) << 10) + (lLow & 0x3FF);
        }
        constexpr gunichar kReplacement = 0xFFFD;
        gchar lBytes[6];
        const bool lValid = 0 != lCharacter && g_unichar_validate(lCharacter);
        aText.append(lBytes, static_cast<std::size_t>(g_unichar_to_utf8(lValid ? lCharacter : kReplacement, lBytes)));
        return true;
    }

    bool ReadHex(gunichar& aValue) {
        for (unsigned i = 0; i < kHexDigits; ++i) {
            const int lDigit = g_ascii_xdigit_value(*mAt);
            if (lDigit < 0) { return false; }
            aValue = aValue << 4 | static_cast<gunichar>(lDigit);
            ++mAt;
        }
        return true;
    }

    std::string mText;
    const char* mAt;
};

std::optional<JsonValue> JsonValue::Read(const std::string& aText) {
    JsonValue lValue;
    if (!JsonReader(aText).ReadAll(lValue)) { return std::nullopt; }
    return lValue;
}

const JsonValue& JsonValue::operator[](const char* aName) const {
    static const JsonValue kNone;
    for (const Member& lMember : mMembers) {
        if (lMember.first == aName) { return lMember.second; }
    }
    return kNone;
}

}  // namespace Virertsp
