#include "Player/FormatParameters.hpp"

#include "Player/String.hpp"

namespace Player {

FormatParameters::FormatParameters(const std::string& aText) {
    std::map<std::string, std::string> lValues;
    SplitToMap(aText, ';', '=', lValues);
    for (const auto& [lName, lValue] : lValues) {
        mValues[LowerCased(lName)] = lValue;
    }
}

std::string FormatParameters::Get(const std::string& aName) const {
    const auto lFound = mValues.find(aName);
    return mValues.end() == lFound ? std::string() : lFound->second;
}

std::string FormatParameters::Config() const {
    std::string lBytes;
    HexToBytes(Get("config"), lBytes);
    return lBytes;
}

}  // namespace Player
