#include "Conditions.hpp"

#include <cstdlib>
#include <map>
#include <stdexcept>
#include <string>

namespace Networks {

void Conditions::Set(const char* aAssignment) {
    const std::map<std::string, double Conditions::*> kValues = {
        {"loss", &Conditions::mLoss},           {"reorder", &Conditions::mReorder},
        {"duplicate", &Conditions::mDuplicate}, {"hold", &Conditions::mHold},
        {"delay", &Conditions::mDelay},         {"jitter", &Conditions::mJitter},
        {"down_from", &Conditions::mDownFrom},  {"down_to", &Conditions::mDownTo},
        {"rate", &Conditions::mRate},           {"queue", &Conditions::mQueue},
    };
    const std::string lText = aAssignment;
    const std::size_t lEquals = lText.find('=');
    const std::string lName = lText.substr(0, lEquals);
    char* lEnd = nullptr;
    const std::string lDigits = std::string::npos == lEquals ? std::string() : lText.substr(lEquals + 1);
    const double lValue = std::strtod(lDigits.c_str(), &lEnd);
    const auto lKnown = kValues.find(lName);
    const bool lIsSeed = "seed" == lName;
    if (lDigits.empty() || '\0' != *lEnd || !(lValue >= 0) || (kValues.end() == lKnown && !lIsSeed)) {
        throw std::runtime_error("not a condition: " + lText);
    }
    if (lIsSeed) {
        mSeed = static_cast<std::uint32_t>(lValue);
    } else {
        this->*lKnown->second = lValue;
    }
}

}  // namespace Networks
