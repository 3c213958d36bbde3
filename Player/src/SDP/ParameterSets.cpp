#include "SDP/ParameterSets.hpp"

#include <algorithm>
#include <optional>
#include <string_view>
#include <vector>

#include "Base64.hpp"

namespace Player {

namespace {

constexpr std::string_view kStartCode("\0\0\1", 3);

std::string WithoutZerosAtTheEnd(const std::string& aUnit) {
    return aUnit.substr(0, aUnit.find_last_not_of('\0') + 1);
}

/// What stands between start codes, if anything does.
std::vector<std::string> Units(const std::string& aBytes) {
    std::vector<std::string> lUnits;
    for (std::size_t lAt = 0; lAt < aBytes.size();) {
        const std::size_t lEnd = std::min(aBytes.find(kStartCode, lAt), aBytes.size());
        const std::string lUnit = WithoutZerosAtTheEnd(aBytes.substr(lAt, lEnd - lAt));
        if (!lUnit.empty()) { lUnits.push_back(lUnit); }
        lAt = lEnd + kStartCode.size();
    }
    return lUnits;
}

std::string NormalizedEntry(const std::string& aEntry) {
    const std::optional<std::string> lBytes = Base64::Decode(aEntry);
    const std::vector<std::string> lUnits = lBytes ? Units(*lBytes) : std::vector<std::string>();
    if (lUnits.empty() || lUnits.front() == *lBytes) { return aEntry; }
    std::string lText;
    for (const std::string& lUnit : lUnits) {
        lText.append(lText.empty() ? "" : ",").append(Base64::Encode(lUnit));
    }
    return lText;
}

}  // namespace

std::string NormalizedParameterSets(const std::string& aSets) {
    std::string lSets;
    for (std::size_t lAt = 0; lAt <= aSets.size();) {
        const std::size_t lEnd = std::min(aSets.find(',', lAt), aSets.size());
        lSets.append(0 == lAt ? "" : ",").append(NormalizedEntry(aSets.substr(lAt, lEnd - lAt)));
        lAt = lEnd + 1;
    }
    return lSets;
}

}  // namespace Player
