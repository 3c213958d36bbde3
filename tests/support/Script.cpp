#include "support/Script.hpp"

#include <sstream>
#include <stdexcept>

namespace TestSupport {

namespace {

using Kind = Step::Kind;

struct Word {
    const char* mText;
    Kind mKind;
    /// Whether an index comes first in what follows the word.
    bool mIndexed;
};

constexpr Word kWords[] = {
    {"C:", Kind::kExpectLine, false},     {"C...", Kind::kExpectRest, false}, {"C#", Kind::kExpectBytes, false},
    {"C$", Kind::kExpectFrame, true},     {"END", Kind::kExpectEnd, false},   {"S:", Kind::kSendLine, false},
    {"S|", Kind::kSendBody, false},       {"S~", Kind::kSendText, false},     {"S#", Kind::kSendBytes, false},
    {"S$", Kind::kSendFrame, true},       {"RTP", Kind::kSendRtp, true},      {"RTCP", Kind::kSendRtcp, true},
    {"SPLIT", Kind::kSplit, false},       {"CLOSE", Kind::kClose, false},     {"RESET", Kind::kReset, false},
    {"SHUTDOWN", Kind::kShutdown, false}, {"ACCEPT", Kind::kAccept, false},   {"NOTIFY", Kind::kNotify, false},
    {"AWAIT", Kind::kAwait, false},
};

const Word& FindWord(const std::string& aText) {
    for (const auto& lWord : kWords) {
        if (aText == lWord.mText) { return lWord; }
    }
    throw std::invalid_argument("unknown word " + aText);
}

/// Cuts the text up to the first blank off the front of `aRest`, with the blank.
std::string TakeWord(std::string& aRest) {
    const std::size_t lEnd = aRest.find(' ');
    std::string lWord = aRest.substr(0, lEnd);
    aRest.erase(0, std::string::npos == lEnd ? lEnd : lEnd + 1);
    return lWord;
}

}  // namespace

std::vector<Step> ParseScript(const std::string& aScript) {
    std::vector<Step> lSteps;
    std::istringstream lScript(aScript);
    std::string lRest;
    for (unsigned lLine = 1; std::getline(lScript, lRest); ++lLine) {
        lRest.erase(0, lRest.find_first_not_of(" \t"));
        if (lRest.empty() || 0 == lRest.compare(0, 2, "//")) { continue; }
        try {
            const Word& lWord = FindWord(TakeWord(lRest));
            const unsigned lIndex = lWord.mIndexed ? static_cast<unsigned>(std::stoul(TakeWord(lRest))) : 0;
            lSteps.push_back({lWord.mKind, lRest, lIndex, lLine});
        } catch (const std::logic_error& lError) {
            throw std::invalid_argument("line " + std::to_string(lLine) + " of the script: " + lError.what());
        }
    }
    return lSteps;
}

std::string Unescaped(const std::string& aText) {
    std::string lText;
    for (std::size_t i = 0; i < aText.size(); ++i) {
        if ('\\' != aText[i]) {
            lText += aText[i];
            continue;
        }
        switch (++i < aText.size() ? aText[i] : '\0') {
            case 'r': lText += '\r'; break;
            case 'n': lText += '\n'; break;
            case 't': lText += '\t'; break;
            case '\\': lText += '\\'; break;
            case 'x':
                lText += static_cast<char>(std::stoul(aText.substr(i + 1, 2), nullptr, 16));
                i += 2;
                break;
            default: throw std::invalid_argument("bad escape in: " + aText);
        }
    }
    return lText;
}

}  // namespace TestSupport
