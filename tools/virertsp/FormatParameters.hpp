#pragma once

#include <map>
#include <string>
#include <vector>

#include "Player/Properties.hpp"

namespace Virertsp {

/// The format parameters ("a=fmtp") of a track. Their names are compared without regard to case (RFC 4855).
class FormatParameters {
public:
    explicit FormatParameters(const Player::Properties& aTrack);

    /// The value, or empty text for a parameter that is not there. `aName` in lower case.
    std::string Get(const std::string& aName) const;
    /// The bytes of "config", which is hexadecimal: whole bytes up to the first foreign character.
    std::string Config() const;
    /// The NAL units in "sprop-parameter-sets" (RFC 6184 section 8.1).
    std::vector<std::string> ParameterSets() const;

private:
    std::map<std::string, std::string> mValues;
};

}  // namespace Virertsp
