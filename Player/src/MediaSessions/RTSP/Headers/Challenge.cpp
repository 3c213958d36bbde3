#include "MediaSessions/RTSP/Headers/Challenge.hpp"

#include <strings.h>

#include <algorithm>
#include <map>

#include "MediaSessions/RTSP/Headers/Headers.hpp"
#include "Player/String.hpp"

namespace Player::MediaSessions {

namespace {

/// A value is sent in every request that follows.
constexpr std::size_t kLongestValue = 4096;
/// Limits of one header.
constexpr std::size_t kMostChallenges = 16;
constexpr std::size_t kMostParameters = 64;

/// Blanks and commas stand between parameters, and between challenges.
constexpr char kGaps[] = " \t,";

bool IsSame(const std::string& aText, const char* aName) {
    return 0 == strcasecmp(aText.c_str(), aName);
}

/// One entry as it was sent: its scheme, and its parameters by name.
struct Entry {
    std::string mScheme;
    Headers mParameters;
};

/// Reads  Digest realm="a \"b\"", nonce="c", qop="auth", Basic realm="d"
/// A word that no "=" follows is a scheme; one that is followed by it is a parameter's name.
class Reader {
public:
    explicit Reader(const std::string& aText) : mText(aText) {}

    std::vector<Entry> Entries() {
        std::vector<Entry> lEntries;
        for (SkipGaps(); mAt < mText.size(); SkipGaps()) {
            const std::string lWord = Word();
            SkipBlanks();
            if (!lWord.empty() && At('=')) {
                ++mAt;
                const std::string lValue = Value();
                if (!lEntries.empty() && lEntries.back().mParameters.size() < kMostParameters) {
                    lEntries.back().mParameters.emplace(lWord, lValue);
                }
            } else if (lWord.empty()) {
                ++mAt;
            } else if (kMostChallenges == lEntries.size()) {
                break;
            } else {
                lEntries.push_back({lWord, {}});
            }
        }
        return lEntries;
    }

private:
    bool At(char aCh) const { return mAt < mText.size() && aCh == mText[mAt]; }
    void SkipGaps() { mAt = std::min(mText.find_first_not_of(kGaps, mAt), mText.size()); }
    void SkipBlanks() { mAt = std::min(mText.find_first_not_of(" \t", mAt), mText.size()); }

    std::string Word() {
        const std::size_t lBegin = mAt;
        mAt = std::min(mText.find_first_of(" \t,=\"", mAt), mText.size());
        return mText.substr(lBegin, mAt - lBegin);
    }

    std::string Value() {
        SkipBlanks();
        if (At('"')) { return Quoted(); }
        const std::size_t lBegin = mAt;
        mAt = std::min(mText.find_first_of(" \t,", mAt), mText.size());
        return mText.substr(lBegin, mAt - lBegin);
    }

    /// Without the quotes around it; up to the end when the closing one is missing.
    std::string Quoted() {
        const std::size_t lBegin = ++mAt;
        while (mAt < mText.size() && !At('"')) {
            mAt += At('\\') ? 2U : 1U;
        }
        mAt = std::min(mAt, mText.size());
        std::string lValue = mText.substr(lBegin, mAt - lBegin);
        mAt = std::min(mAt + 1, mText.size());
        return lValue;
    }

    const std::string& mText;
    std::size_t mAt = 0;
};

/// Within quotes it goes back as it came: whole, in one line.
bool CanBeSentBack(const std::string& aText) {
    const bool lEndsInBackslash = std::string::npos != aText.find_last_not_of('\\')
                                      ? 0 != (aText.size() - 1 - aText.find_last_not_of('\\')) % 2
                                      : 0 != aText.size() % 2;
    return aText.size() <= kLongestValue && !lEndsInBackslash && std::none_of(aText.begin(), aText.end(), [](char aCh) {
               return static_cast<unsigned char>(aCh) < ' ' || '\x7F' == aCh;
           });
}

bool ReadAlgorithm(const std::string& aName, Challenge& aChallenge) {
    struct Known {
        const char* mName;
        Crypto::Hash mHash;
        bool mIsSession;
    };
    constexpr Known kKnown[] = {
        {"", Crypto::Hash::kMD5, false},
        {"MD5", Crypto::Hash::kMD5, false},
        {"MD5-sess", Crypto::Hash::kMD5, true},
        {"SHA-256", Crypto::Hash::kSHA256, false},
        {"SHA-256-sess", Crypto::Hash::kSHA256, true},
    };
    for (const Known& lKnown : kKnown) {
        if (!IsSame(aName, lKnown.mName)) { continue; }
        aChallenge.mAlgorithm = aName;
        aChallenge.mHash = lKnown.mHash;
        aChallenge.mIsSession = lKnown.mIsSession;
        return true;
    }
    return false;
}

/// Without any, as in RFC 2069, or with "auth" among them.
bool ReadQop(const Headers& aParameters, Challenge& aChallenge) {
    const auto lQop = aParameters.find("qop");
    if (aParameters.end() == lQop) { return true; }
    std::vector<std::string> lOffered;
    Split(lQop->second, ',', lOffered);
    aChallenge.mHasQop =
        std::any_of(lOffered.begin(), lOffered.end(), [](const std::string& aQop) { return IsSame(aQop, "auth"); });
    return aChallenge.mHasQop || lOffered.empty();
}

bool Read(const Entry& aEntry, Challenge& aChallenge) {
    const Headers& lParameters = aEntry.mParameters;
    aChallenge.mRealm = HeaderValue(lParameters, "realm");
    if (!CanBeSentBack(aChallenge.mRealm)) { return false; }
    if (IsSame(aEntry.mScheme, "Basic")) { return true; }
    if (!IsSame(aEntry.mScheme, "Digest")) { return false; }

    aChallenge.mScheme = Challenge::Scheme::kDigest;
    aChallenge.mNonce = HeaderValue(lParameters, "nonce");
    aChallenge.mOpaque = HeaderValue(lParameters, "opaque");
    aChallenge.mHasOpaque = 0 != lParameters.count("opaque");
    aChallenge.mIsStale = IsSame(HeaderValue(lParameters, "stale"), "true");
    return ReadAlgorithm(HeaderValue(lParameters, "algorithm"), aChallenge) && ReadQop(lParameters, aChallenge) &&
           CanBeSentBack(aChallenge.mNonce) && CanBeSentBack(aChallenge.mOpaque) && !aChallenge.mNonce.empty();
}

}  // namespace

std::vector<Challenge> Challenge::Parse(const std::string& aHeader) {
    std::vector<Challenge> lChallenges;
    for (const Entry& lEntry : Reader(aHeader).Entries()) {
        Challenge lChallenge;
        if (Read(lEntry, lChallenge)) { lChallenges.push_back(lChallenge); }
    }
    return lChallenges;
}

}  // namespace Player::MediaSessions
