#pragma once

#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "Player/Report.hpp"

namespace TestSupport {

/// Collects the library's reports while it lives, instead of printing them. Only one at a time: the library's own
/// reporter comes back when it goes.
class ReportCapture : public Player::Reporter {
public:
    using Entry = std::pair<Player::Severity, std::string>;
    /// A file and a line in it.
    using Place = std::pair<std::string, Player::UInt>;

    ReportCapture() { Player::SetReporter(this); }
    ~ReportCapture() override { Player::SetDefaultReporter(); }

    void Report(const char* aFile, Player::UInt aLine, Player::Severity aSeverity, const char* aMessage) override;

    std::vector<Entry> All() const;
    /// Where they were made, in the same order.
    std::vector<Place> Places() const;
    /// The messages of one severity, in order.
    std::vector<std::string> Messages(Player::Severity aSeverity) const;
    /// Those of severity Error, but for UDP ports that another program had: the session tries others then.
    std::vector<std::string> Errors() const;
    /// How often this was reported, word for word.
    std::size_t Count(Player::Severity aSeverity, const std::string& aMessage) const;
    /// How many reports of this severity begin with the text.
    std::size_t CountBeginning(Player::Severity aSeverity, const std::string& aBegin = "") const;
    void Clear();

private:
    mutable std::mutex mMutex;
    std::vector<Entry> mEntries;
    std::vector<Place> mPlaces;
};

}  // namespace TestSupport
