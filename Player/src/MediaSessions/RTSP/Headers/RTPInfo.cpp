#include "MediaSessions/RTSP/Headers/RTPInfo.hpp"

#include <algorithm>

#include "Player/String.hpp"

namespace Player::MediaSessions {

namespace {

/// A header has one per track.
constexpr std::size_t kMostEntries = 16384;

/// The text up to the end of the last entry that is read.
std::string EntriesRead(const std::string& aValue) {
    std::size_t lEnd = 0;
    for (std::size_t i = 0; i < kMostEntries && lEnd < aValue.size(); ++i) {
        lEnd = std::min(aValue.find(',', lEnd), aValue.size() - 1) + 1;
    }
    return aValue.substr(0, lEnd);
}

RTPInfo::Entry ParseEntry(const std::string& aEntry) {
    constexpr char kURL[] = "url=";
    constexpr std::size_t kURLSize = sizeof(kURL) - 1;
    std::vector<std::string> lFields;
    Split(aEntry.substr(0, aEntry.find(';')), ';', lFields);
    lFields.resize(1);

    RTPInfo::Entry lEntry;
    if (0 == lFields[0].compare(0, kURLSize, kURL)) { lEntry.mURL = lFields[0].substr(kURLSize); }
    const std::size_t lSlash = lFields[0].rfind('/');
    if (std::string::npos != lSlash) { lEntry.mName = lFields[0].substr(lSlash + 1); }
    lEntry.mVars = TransportHeader::Parse(aEntry);
    return lEntry;
}

}  // namespace

std::vector<RTPInfo::Entry> RTPInfo::Parse(const std::string& aValue) {
    std::vector<std::string> lTexts;
    Split(EntriesRead(aValue), ',', lTexts);
    std::vector<Entry> lEntries;
    lEntries.reserve(lTexts.size());
    std::transform(lTexts.begin(), lTexts.end(), std::back_inserter(lEntries), ParseEntry);
    return lEntries;
}

}  // namespace Player::MediaSessions
