#include "FormatParameters.hpp"

#include <glib.h>

#include "Parser/Base64.hpp"
#include "Player/String.hpp"

namespace Virertsp {

FormatParameters::FormatParameters(const Player::Properties& aTrack) {
    std::map<std::string, std::string> lValues;
    Player::SplitToMap(aTrack.Get("FmtParams"), ';', '=', lValues);
    for (const auto& lValue : lValues) {
        std::string lName = lValue.first;
        for (char& lCh : lName) {
            lCh = g_ascii_tolower(lCh);
        }
        mValues[lName] = lValue.second;
    }
}

std::string FormatParameters::Get(const std::string& aName) const {
    const auto lFound = mValues.find(aName);
    return mValues.end() == lFound ? std::string() : lFound->second;
}

std::string FormatParameters::Config() const {
    const std::string lText = Get("config");
    std::string lBytes;
    for (std::size_t i = 0; i + 1 < lText.size(); i += 2) {
        const int lHigh = g_ascii_xdigit_value(lText[i]);
        const int lLow = g_ascii_xdigit_value(lText[i + 1]);
        if (lHigh < 0 || lLow < 0) { break; }
        lBytes += static_cast<char>(lHigh * 16 + lLow);
    }
    return lBytes;
}

std::vector<std::string> FormatParameters::ParameterSets() const {
    std::vector<std::string> lSets;
    Player::Split(Get("sprop-parameter-sets"), ',', lSets);
    for (std::string& lSet : lSets) {
        lSet = Parser::Base64Decode(lSet);
    }
    return lSets;
}

}  // namespace Virertsp
