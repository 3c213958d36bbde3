#include "commands/Completion.hpp"

#include <algorithm>

#include "commands/Configuration.hpp"

namespace Virertsp {

namespace {

constexpr char kFiles[] = ":files\n";

bool HasValue(const GOptionEntry& aEntry) {
    return G_OPTION_ARG_NONE != aEntry.arg;
}

/// "--name", or "-n" for an option with one letter.
bool IsNamed(const GOptionEntry& aEntry, const std::string& aWord) {
    return aWord == std::string("--") + aEntry.long_name ||
           (0 != aEntry.short_name && aWord == std::string("-") + aEntry.short_name);
}

/// `aLead`: what stands before the value in the same word.
std::string ValueCandidates(const GOptionEntry& aEntry, const std::string& aLead, const std::string& aTyped) {
    if (G_OPTION_ARG_FILENAME == aEntry.arg) { return kFiles; }
    std::string lLines;
    const std::string lName = aEntry.long_name;
    if ("transport" == lName) {
        for (const char* const lWays : kTransports) {
            lLines += Candidate(aTyped, aLead + lWays, "");
        }
    }
    if ("config" == lName) {
        for (const auto& lSetting : ConfigurationKeys()) {
            lLines += Candidate(aTyped, aLead + lSetting.first + "=", lSetting.second);
        }
    }
    return lLines;
}

std::string OptionCandidates(const std::vector<GOptionEntry>& aEntries, const std::string& aTyped) {
    std::string lLines;
    for (const GOptionEntry& lEntry : aEntries) {
        lLines += Candidate(aTyped, std::string("--") + lEntry.long_name, lEntry.description);
    }
    return lLines;
}

}  // namespace

std::string Candidate(const std::string& aTyped, const std::string& aWord, const std::string& aMeaning) {
    if (0 != aWord.compare(0, aTyped.size(), aTyped)) { return ""; }
    return aWord + (aMeaning.empty() ? "" : "\t" + aMeaning) + "\n";
}

std::string Candidates(const std::vector<GOptionEntry>& aEntries, const Words& aWords, bool aFiles) {
    if (aWords.empty()) { return ""; }
    const std::string& lTyped = aWords.back();
    const std::string lBefore = aWords.size() > 1 ? aWords[aWords.size() - 2] : "";
    const std::string lLead = 0 == lTyped.compare(0, 2, "--") ? lTyped.substr(0, lTyped.find('=') + 1) : "";
    for (const GOptionEntry& lEntry : aEntries) {
        if (!HasValue(lEntry)) { continue; }
        if (IsNamed(lEntry, lBefore)) { return ValueCandidates(lEntry, "", lTyped); }
        if (!lLead.empty() && IsNamed(lEntry, lLead.substr(0, lLead.size() - 1))) {
            return ValueCandidates(lEntry, lLead, lTyped);
        }
    }
    if (0 == lTyped.compare(0, 1, "-")) { return OptionCandidates(aEntries, lTyped); }
    const std::string lLines = Candidate(lTyped, "rtsp://", "") + Candidate(lTyped, "rtsps://", "within TLS");
    return lLines.empty() && aFiles ? kFiles : lLines;
}

}  // namespace Virertsp
