#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include "Player/Report.hpp"

namespace Player::Testing {

/// Keeps what is reported during its life, and the standard error stream clean of it.
class CaughtReports : public Reporter {
public:
    struct Entry {
        std::string mFile;
        UInt mLine;
        Severity mSeverity;
        std::string mMessage;
    };

    CaughtReports() { SetReporter(this); }
    ~CaughtReports() override { SetDefaultReporter(); }

    void Report(const char* aFile, UInt aLine, Severity aSeverity, const char* aMessage) override {
        mEntries.push_back({aFile, aLine, aSeverity, aMessage});
    }

    /// Reports of this severity that begin so.
    long Count(Severity aSeverity, const std::string& aBegin = "") const {
        return std::count_if(mEntries.begin(), mEntries.end(), [&](const Entry& aEntry) {
            return aSeverity == aEntry.mSeverity && 0 == aEntry.mMessage.rfind(aBegin, 0);
        });
    }

    std::vector<Entry> mEntries;
};

}  // namespace Player::Testing
