#include "support/Variables.hpp"

#include <stdexcept>
#include <vector>

namespace TestSupport {

namespace {

/// A piece of a pattern: literal text, or what stands between braces.
struct Piece {
    bool mIsName;
    std::string mText;
};

std::vector<Piece> Pieces(const std::string& aText) {
    std::vector<Piece> lPieces;
    std::size_t lPos = 0;
    while (lPos < aText.size()) {
        const bool lIsName = '{' == aText[lPos];
        const std::size_t lEnd = lIsName ? aText.find('}', lPos) : aText.find('{', lPos);
        if (lIsName && std::string::npos == lEnd) { throw std::invalid_argument("no closing brace: " + aText); }
        lPieces.push_back({lIsName, lIsName ? aText.substr(lPos + 1, lEnd - lPos - 1)
                                            : aText.substr(lPos, std::string::npos == lEnd ? lEnd : lEnd - lPos)});
        lPos = std::string::npos == lEnd ? aText.size() : lEnd + (lIsName ? 1 : 0);
    }
    return lPieces;
}

/// Puts the value of "name" or "name+number" into `aValue`; false when there is none.
bool Lookup(const std::map<std::string, std::string>& aValues, const std::string& aName, std::string& aValue) {
    const std::size_t lPlus = aName.find('+');
    const auto lFound = aValues.find(aName.substr(0, lPlus));
    if (aValues.end() == lFound) { return false; }
    aValue = std::string::npos == lPlus
                 ? lFound->second
                 : std::to_string(std::stoul(lFound->second) + std::stoul(aName.substr(lPlus + 1)));
    return true;
}

}  // namespace

void Variables::Set(const std::string& aName, const std::string& aValue) {
    const std::lock_guard<std::mutex> lLock(mMutex);
    mValues[aName] = aValue;
}

std::string Variables::Get(const std::string& aName) const {
    const std::lock_guard<std::mutex> lLock(mMutex);
    const auto lFound = mValues.find(aName);
    return mValues.end() == lFound ? std::string() : lFound->second;
}

std::string Variables::Expand(const std::string& aText) const {
    std::string lText = ExpandKnown(aText);
    if (std::string::npos != lText.find('{')) { throw std::invalid_argument("a name without a value in: " + lText); }
    return lText;
}

std::string Variables::ExpandKnown(const std::string& aText) const {
    const std::lock_guard<std::mutex> lLock(mMutex);
    std::string lText;
    for (const auto& lPiece : Pieces(aText)) {
        std::string lValue = lPiece.mText;
        if (lPiece.mIsName && !Lookup(mValues, lPiece.mText, lValue)) { lValue = "{" + lPiece.mText + "}"; }
        lText += lValue;
    }
    return lText;
}

bool Variables::Match(const std::string& aPattern, const std::string& aText) {
    const std::lock_guard<std::mutex> lLock(mMutex);
    Map lValues = mValues;
    const auto lPieces = Pieces(aPattern);
    std::size_t lPos = 0;
    for (std::size_t i = 0; i < lPieces.size(); ++i) {
        std::string lWanted = lPieces[i].mText;
        if (lPieces[i].mIsName && !Lookup(lValues, lPieces[i].mText, lWanted)) {
            const bool lLast = i + 1 == lPieces.size();
            const std::size_t lEnd = lLast ? aText.size() : aText.find(lPieces[i + 1].mText, lPos);
            if (std::string::npos == lEnd) { return false; }
            if ("*" != lPieces[i].mText) {
                if (lEnd == lPos) { return false; }
                lValues[lPieces[i].mText] = aText.substr(lPos, lEnd - lPos);
            }
            lPos = lEnd;
            continue;
        }
        if (0 != aText.compare(lPos, lWanted.size(), lWanted)) { return false; }
        lPos += lWanted.size();
    }
    if (lPos != aText.size()) { return false; }
    mValues.swap(lValues);
    return true;
}

}  // namespace TestSupport
