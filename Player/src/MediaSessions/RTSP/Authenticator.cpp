#include "MediaSessions/RTSP/Authenticator.hpp"

#include <algorithm>

#include "Base64.hpp"
#include "Player/String.hpp"

namespace Player::MediaSessions {

namespace {

constexpr UInt kMostTries = 2;
constexpr UInt kClientNonceBytes = 16;

using Scheme = Challenge::Scheme;

bool HasControls(const std::string& aText) {
    return std::any_of(aText.begin(), aText.end(),
                       [](char aCh) { return static_cast<unsigned char>(aCh) < ' ' || '\x7F' == aCh; });
}

/// A text of our own within quotes.
std::string Escaped(const std::string& aText) {
    std::string lText;
    for (const char lCh : aText) {
        if ('"' == lCh || '\\' == lCh) { lText += '\\'; }
        lText += lCh;
    }
    return lText;
}

std::string Field(const char* aName, const std::string& aQuoted) {
    return std::string(", ") + aName + "=\"" + aQuoted + "\"";
}

/// The better one has the higher rank.
int Rank(const Challenge& aChallenge) {
    if (Scheme::kBasic == aChallenge.mScheme) { return 0; }
    return Crypto::Hash::kSHA256 == aChallenge.mHash ? 2 : 1;
}

}  // namespace

void Authenticator::SetCredentials(const URL::UserInfo& aCredentials) {
    if (aCredentials == mCredentials) { return; }
    mCredentials = aCredentials;
    Reset();
}

void Authenticator::Reset() {
    mIsArmed = false;
    mChallenge = Challenge();
    mNonceCount = 0;
    mSessionNonce.clear();
}

bool Authenticator::CanAnswer(const Challenge& aChallenge) const {
    // The name of a digest stands in the header as it is.
    return Scheme::kBasic == aChallenge.mScheme || !HasControls(mCredentials.mName);
}

bool Authenticator::Accept(const std::vector<std::string>& aHeaders, UInt aTries) {
    if (!HasCredentials() || !Crypto::IsAvailable() || aTries >= kMostTries) { return false; }
    const Challenge* lBest = nullptr;
    std::vector<Challenge> lAll;
    for (const std::string& lHeader : aHeaders) {
        const std::vector<Challenge> lOfHeader = Challenge::Parse(lHeader);
        lAll.insert(lAll.end(), lOfHeader.begin(), lOfHeader.end());
    }
    for (const Challenge& lChallenge : lAll) {
        if (CanAnswer(lChallenge) && (nullptr == lBest || Rank(*lBest) < Rank(lChallenge))) { lBest = &lChallenge; }
    }
    if (nullptr == lBest) { return false; }
    // Once more with the same answer would be refused once more, and may lock the account.
    const bool lIsNew = lBest->mScheme != mChallenge.mScheme || lBest->mNonce != mChallenge.mNonce;
    const bool lMayTry = 0 == aTries ? !mIsArmed || lIsNew : lIsNew && lBest->mIsStale;
    if (!lMayTry) { return false; }
    mChallenge = *lBest;
    mNonceCount = 0;
    mSessionNonce.clear();
    mIsArmed = true;
    return true;
}

std::string Authenticator::Answer(const std::string& aMethod, const std::string& aURL) {
    if (!mIsArmed) { return std::string(); }
    return Scheme::kBasic == mChallenge.mScheme ? BasicAnswer() : DigestAnswer(aMethod, aURL);
}

std::string Authenticator::BasicAnswer() const {
    return "Basic " + Base64::Encode(mCredentials.mName + ":" + mCredentials.mPassword);
}

std::string Authenticator::DigestAnswer(const std::string& aMethod, const std::string& aURL) {
    const auto lHash = [this](const std::string& aText) { return Crypto::HexDigest(mChallenge.mHash, aText); };
    const std::string lCount = StringWithFormat("%08x", ++mNonceCount);
    const bool lHasClientNonce = mChallenge.mHasQop || mChallenge.mIsSession;
    const std::string lFresh = lHasClientNonce ? mRandom(kClientNonceBytes) : std::string();
    if (mSessionNonce.empty()) { mSessionNonce = lFresh; }
    const std::string& lClientNonce = mChallenge.mIsSession ? mSessionNonce : lFresh;

    std::string lKey = lHash(mCredentials.mName + ":" + mChallenge.mRealm + ":" + mCredentials.mPassword);
    if (mChallenge.mIsSession) { lKey = lHash(lKey + ":" + mChallenge.mNonce + ":" + lClientNonce); }
    const std::string lQop = mChallenge.mHasQop ? lCount + ":" + lClientNonce + ":auth:" : std::string();
    const std::string lResponse = lHash(lKey + ":" + mChallenge.mNonce + ":" + lQop + lHash(aMethod + ":" + aURL));

    std::string lText = "Digest username=\"" + Escaped(mCredentials.mName) + "\"";
    lText += Field("realm", mChallenge.mRealm) + Field("nonce", mChallenge.mNonce) + Field("uri", aURL);
    lText += Field("response", lResponse);
    if (!mChallenge.mAlgorithm.empty()) { lText += ", algorithm=" + mChallenge.mAlgorithm; }
    if (mChallenge.mHasOpaque) { lText += Field("opaque", mChallenge.mOpaque); }
    if (mChallenge.mHasQop) { lText += ", qop=auth, nc=" + lCount; }
    if (lHasClientNonce) { lText += Field("cnonce", lClientNonce); }
    return lText;
}

}  // namespace Player::MediaSessions
