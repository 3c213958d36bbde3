#include "support/ReportCapture.hpp"

#include <algorithm>

namespace TestSupport {

void ReportCapture::Report(const char* aFile, Player::UInt aLine, Player::Severity aSeverity, const char* aMessage) {
    const std::lock_guard<std::mutex> lLock(mMutex);
    mEntries.emplace_back(aSeverity, aMessage);
    mPlaces.emplace_back(aFile, aLine);
}

std::vector<ReportCapture::Entry> ReportCapture::All() const {
    const std::lock_guard<std::mutex> lLock(mMutex);
    return mEntries;
}

std::vector<ReportCapture::Place> ReportCapture::Places() const {
    const std::lock_guard<std::mutex> lLock(mMutex);
    return mPlaces;
}

std::vector<std::string> ReportCapture::Messages(Player::Severity aSeverity) const {
    std::vector<std::string> lMessages;
    for (const auto& lEntry : All()) {
        if (lEntry.first == aSeverity) { lMessages.push_back(lEntry.second); }
    }
    return lMessages;
}

std::vector<std::string> ReportCapture::Errors() const {
    std::vector<std::string> lErrors = Messages(Player::Severity::Error);
    const auto lIsPort = [](const std::string& aMessage) { return 0 == aMessage.rfind("Socket::Bind(): ", 0); };
    lErrors.erase(std::remove_if(lErrors.begin(), lErrors.end(), lIsPort), lErrors.end());
    return lErrors;
}

std::size_t ReportCapture::Count(Player::Severity aSeverity, const std::string& aMessage) const {
    const auto lMessages = Messages(aSeverity);
    return static_cast<std::size_t>(std::count(lMessages.begin(), lMessages.end(), aMessage));
}

std::size_t ReportCapture::CountBeginning(Player::Severity aSeverity, const std::string& aBegin) const {
    const auto lMessages = Messages(aSeverity);
    return static_cast<std::size_t>(std::count_if(lMessages.begin(), lMessages.end(), [&](const std::string& aMessage) {
        return 0 == aMessage.rfind(aBegin, 0);
    }));
}

void ReportCapture::Clear() {
    const std::lock_guard<std::mutex> lLock(mMutex);
    mEntries.clear();
    mPlaces.clear();
}

}  // namespace TestSupport
