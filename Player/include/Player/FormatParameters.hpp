#pragma once

#include <map>
#include <string>

namespace Player {

/// The parameters of a format ("a=fmtp"), such as "mode=AAC-hbr; sizeLength=13". Case does not count in their names
/// (RFC 4855 section 3).
class FormatParameters {
public:
    explicit FormatParameters(const std::string& aText);

    /// The value, or empty text for a parameter that is not there. `aName` in lower case.
    std::string Get(const std::string& aName) const;
    /// The bytes of "config", which is hexadecimal: whole bytes up to the first foreign character.
    std::string Config() const;
    /// Values by the names in lower case.
    const std::map<std::string, std::string>& All() const { return mValues; }

private:
    std::map<std::string, std::string> mValues;
};

}  // namespace Player
