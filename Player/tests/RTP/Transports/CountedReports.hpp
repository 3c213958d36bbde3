#pragma once

#include <algorithm>
#include <string>

#include "Support/CaughtReports.hpp"

namespace Player::Testing {

/// Keeps what is reported during its life and tells how often it was.
class CountedReports : public CaughtReports {
public:
    /// Reports of this severity that begin so.
    long Count(Severity aSeverity, const std::string& aBegin = "") const {
        return std::count_if(mEntries.begin(), mEntries.end(), [&](const Entry& aEntry) {
            return aSeverity == aEntry.mSeverity && 0 == aEntry.mMessage.rfind(aBegin, 0);
        });
    }
};

}  // namespace Player::Testing
