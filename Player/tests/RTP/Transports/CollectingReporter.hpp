#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include "Player/Report.hpp"

namespace Player::Testing {

/// Catches all reports for as long as it lives.
class CollectingReporter : public Reporter {
public:
    CollectingReporter() { SetReporter(this); }
    ~CollectingReporter() override { SetDefaultReporter(); }
    CollectingReporter(const CollectingReporter&) = delete;
    CollectingReporter& operator=(const CollectingReporter&) = delete;

    void Report(const char* /*aFile*/, UInt /*aLine*/, Severity aSeverity, const char* aMessage) override {
        mLines.push_back(std::string(CStrWithSeverity(aSeverity)) + ": " + aMessage);
    }

    /// How many reports begin so: "Error: Socket::Bind()".
    long Count(const std::string& aBegin) const {
        return std::count_if(mLines.begin(), mLines.end(),
                             [&](const std::string& aLine) { return 0 == aLine.rfind(aBegin, 0); });
    }
    bool Has(const std::string& aLine) const { return mLines.end() != std::find(mLines.begin(), mLines.end(), aLine); }

private:
    std::vector<std::string> mLines;
};

}  // namespace Player::Testing
