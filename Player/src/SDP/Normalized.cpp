#include "SDP/Normalized.hpp"

#include <strings.h>

#include <algorithm>
#include <functional>
#include <iterator>
#include <map>
#include <set>
#include <vector>

#include "Player/String.hpp"
#include "SDP/ParameterSets.hpp"

namespace Player {

namespace {

using Lines = std::vector<std::string>;

constexpr char kBlanks[] = " \t";
constexpr std::size_t kNone = std::string::npos;

constexpr const char* kEncodings[] = {"H264", "MP4V-ES", "MP4A-LATM", "AMR", "mpeg4-generic", "enc-mpeg4-generic"};
/// Those that are looked up by their exact name.
constexpr char kParameterSets[] = "sprop-parameter-sets";
constexpr const char* kParameters[] = {"config", kParameterSets, "profile-level-id", "packetization-mode",
                                       "mode",   "octet-align",  "cpresent",         "object"};

/// Attributes whose value begins with a payload type.
constexpr const char* kOfPayloadType[] = {"rtpmap", "fmtp", "framesize"};

/// The name among those known, else as it was.
template <std::size_t Count>
std::string Known(const std::string& aName, const char* const (&aKnown)[Count]) {
    const auto* const lFound = std::find_if(std::begin(aKnown), std::end(aKnown),
                                            [&](const char* aOne) { return 0 == strcasecmp(aOne, aName.c_str()); });
    return std::end(aKnown) == lFound ? aName : *lFound;
}

bool IsPlayable(const std::string& aEncoding) {
    return std::any_of(std::begin(kEncodings), std::end(kEncodings),
                       [&](const char* aOne) { return 0 == strcasecmp(aOne, aEncoding.c_str()); });
}

/// The first word, and what follows it.
std::pair<std::string, std::string> FirstWord(const std::string& aText) {
    const std::string lText = Trimmed(aText);
    const std::size_t lEnd = lText.find_first_of(kBlanks);
    if (kNone == lEnd) { return {lText, std::string()}; }
    return {lText.substr(0, lEnd), Trimmed(lText.substr(lEnd))};
}

std::vector<std::string> Words(const std::string& aText) {
    std::vector<std::string> lWords;
    for (auto lNext = FirstWord(aText); !lNext.first.empty(); lNext = FirstWord(lNext.second)) {
        lWords.push_back(lNext.first);
    }
    return lWords;
}

/// "a=fmtp:96 mode=x": name and value; nothing for a line that is no attribute, or has no value.
struct Attribute {
    std::string mName;
    std::string mValue;

    explicit Attribute(const std::string& aLine) {
        const std::size_t lColon = aLine.find(':');
        if (0 != aLine.compare(0, 2, "a=") || kNone == lColon) { return; }
        mName = Trimmed(aLine.substr(2, lColon - 2));
        mValue = Trimmed(aLine.substr(lColon + 1));
    }

    bool IsOfPayloadType() const {
        return std::any_of(std::begin(kOfPayloadType), std::end(kOfPayloadType),
                           [this](const char* aName) { return mName == aName; });
    }
    std::string PayloadType() const { return FirstWord(mValue).first; }
    std::string Rest() const { return FirstWord(mValue).second; }
};

/// The name in "H264/90000".
std::string Encoding(const std::string& aMapping) {
    return Trimmed(aMapping.substr(0, aMapping.find('/')));
}

std::string WithKnownEncoding(const std::string& aMapping) {
    const std::size_t lSlash = std::min(aMapping.find('/'), aMapping.size());
    return Known(Encoding(aMapping), kEncodings) + aMapping.substr(lSlash);
}

/// "Config=12; sizeLength=13"
std::string WithKnownParameters(const std::string& aParameters) {
    std::string lText;
    for (std::size_t lAt = 0; lAt <= aParameters.size();) {
        const std::size_t lEnd = std::min(aParameters.find(';', lAt), aParameters.size());
        const std::string lParameter = Trimmed(aParameters.substr(lAt, lEnd - lAt));
        const std::size_t lEquals = lParameter.find('=');
        if (!lParameter.empty()) {
            if (!lText.empty()) { lText += ";"; }
            const std::string lName = Known(Trimmed(lParameter.substr(0, lEquals)), kParameters);
            lText += lName;
            if (kNone != lEquals) {
                const std::string lValue = Trimmed(lParameter.substr(lEquals + 1));
                lText += "=" + (kParameterSets == lName ? NormalizedParameterSets(lValue) : lValue);
            }
        }
        lAt = lEnd + 1;
    }
    return lText;
}

std::string Written(const std::string& aLine) {
    const Attribute lAttribute(aLine);
    if (lAttribute.mName.empty()) { return aLine.substr(0, aLine.find_last_not_of(kBlanks) + 1); }
    const std::string lName = "a=" + lAttribute.mName + ":";
    if (!lAttribute.IsOfPayloadType()) { return lName + lAttribute.mValue; }
    std::string lRest = lAttribute.Rest();
    if ("rtpmap" == lAttribute.mName) { lRest = WithKnownEncoding(lRest); }
    if ("fmtp" == lAttribute.mName) { lRest = WithKnownParameters(lRest); }
    return lName + lAttribute.PayloadType() + " " + lRest;
}

void WriteLine(std::string& aText, const std::string& aLine) {
    if (!aLine.empty()) { aText.append(aLine).append("\r\n"); }
}

/// Lines without their ends; no empty ones.
Lines Split(const std::string& aText) {
    Lines lLines;
    for (std::size_t lAt = 0; lAt < aText.size();) {
        const std::size_t lEnd = std::min(aText.find_first_of("\r\n", lAt), aText.size());
        if (lEnd > lAt) { lLines.push_back(aText.substr(lAt, lEnd - lAt)); }
        lAt = lEnd + 1;
    }
    return lLines;
}

bool IsMedium(const std::string& aLine) {
    return 0 == aLine.compare(0, 2, "m=");
}

using Line = Lines::const_iterator;

/// m=<media> <port> <proto> <fmt> ..., and the lines that belong to it.
class Medium {
public:
    Medium(Line aBegin, Line aEnd) : mBegin(aBegin + 1), mEnd(aEnd), mWords(Words(aBegin->substr(2))) {
        for (Line lIt = mBegin; lIt != mEnd; ++lIt) {
            const Attribute lAttribute(*lIt);
            if (lAttribute.IsOfPayloadType()) {
                mValues[{lAttribute.mName, lAttribute.PayloadType()}] = lAttribute.Rest();
            }
        }
        if (mWords.size() <= kFirstFormat) { return; }
        mTypes.insert(mWords.begin() + kFirstFormat, mWords.end());
        std::swap(mWords[kFirstFormat], *Chosen());
    }

    /// Whether media go there from the client, as a camera with a loudspeaker wants them.
    bool IsBackChannel() const {
        return std::any_of(mBegin, mEnd, [](const std::string& aLine) { return "a=sendonly" == Trimmed(aLine); });
    }

    void Write(std::string& aText) const {
        std::string lLine = "m=";
        for (const std::string& lWord : mWords) {
            lLine += (2 == lLine.size() ? "" : " ") + lWord;
        }
        WriteLine(aText, lLine);
        for (Line lIt = mBegin; lIt != mEnd; ++lIt) {
            const Attribute lAttribute(*lIt);
            if (!lAttribute.IsOfPayloadType() || Counts(lAttribute)) { WriteLine(aText, Written(*lIt)); }
        }
    }

private:
    static constexpr std::size_t kFirstFormat = 3;

    Lines::iterator Chosen() {
        const auto lFirst = mWords.begin() + kFirstFormat;
        const auto lChosen = std::find_if(lFirst, mWords.end(), [this](const std::string& aType) {
            return IsPlayable(Encoding(Value("rtpmap", aType)));
        });
        return mWords.end() == lChosen ? lFirst : lChosen;
    }

    /// The last value of an attribute for a payload type; empty without one.
    std::string Value(const std::string& aName, const std::string& aType) const {
        const auto lValue = mValues.find({aName, aType});
        return mValues.end() == lValue ? std::string() : lValue->second;
    }

    /// That of a type which the medium does not have is better than none.
    bool Counts(const Attribute& aAttribute) const {
        if (mWords.size() <= kFirstFormat) { return true; }
        const std::string& lChosen = mWords[kFirstFormat];
        const std::string lType = aAttribute.PayloadType();
        if (lType == lChosen) { return true; }
        return 0 == mTypes.count(lType) && Value(aAttribute.mName, lChosen).empty();
    }

    Line mBegin;
    Line mEnd;
    Lines mWords;
    /// The payload types of the medium.
    std::set<std::string> mTypes;
    std::map<std::pair<std::string, std::string>, std::string> mValues;
};

}  // namespace

std::string NormalizedSDP(const std::string& aText) {
    const Lines lLines = Split(aText);
    std::string lText;
    Line lMedium = std::find_if(lLines.begin(), lLines.end(), IsMedium);
    for (Line lIt = lLines.begin(); lIt != lMedium; ++lIt) {
        WriteLine(lText, Written(*lIt));
    }
    std::vector<Medium> lMedia;
    while (lMedium != lLines.end()) {
        const Line lNext = std::find_if(lMedium + 1, lLines.end(), IsMedium);
        lMedia.emplace_back(lMedium, lNext);
        lMedium = lNext;
    }
    // Where all are, it is the server that says so of itself.
    const bool lAllAre = std::all_of(lMedia.begin(), lMedia.end(), std::mem_fn(&Medium::IsBackChannel));
    for (const Medium& lOne : lMedia) {
        if (lAllAre || !lOne.IsBackChannel()) { lOne.Write(lText); }
    }
    return lText;
}

}  // namespace Player
