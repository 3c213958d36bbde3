#pragma once

#include <string>
#include <vector>

#include "MediaSessions/RTSP/Headers/Challenge.hpp"
#include "MediaSessions/RTSP/Headers/URLResolution.hpp"
#include "Player/Types.hpp"

namespace Player::MediaSessions {

/// Answers the challenges of one server, or of one proxy: says before each request what to put into its header
/// Authorization (RFC 7616 section 3.4, RFC 7617). Digest goes before Basic, SHA-256 before MD5.
class Authenticator {
public:
    /// Where the client's random texts come from; tests hand in known ones.
    using Random = std::string (*)(UInt aBytes);

    explicit Authenticator(Random aRandom = Crypto::RandomHex) : mRandom(aRandom) {}

    /// What was known of the server is forgotten when they differ from the last ones.
    void SetCredentials(const URL::UserInfo& aCredentials);
    bool HasCredentials() const { return !(mCredentials == URL::UserInfo()); }
    /// Forgets the challenge.
    void Reset();

    /// Takes the challenges of a refusal. True when the request is worth another try: there are credentials, a
    /// challenge that can be answered, and it is not the one that was answered already. `aTries` counts the
    /// answers to this request: a second one is for a nonce that has grown old, and there is no third.
    bool Accept(const std::vector<std::string>& aHeaders, UInt aTries);

    /// Whether requests carry an answer.
    bool IsArmed() const { return mIsArmed; }
    /// The value of the header; empty while there is nothing to answer. Each call counts as a use of the nonce.
    std::string Answer(const std::string& aMethod, const std::string& aURL);

private:
    std::string BasicAnswer() const;
    std::string DigestAnswer(const std::string& aMethod, const std::string& aURL);
    bool CanAnswer(const Challenge& aChallenge) const;

    Random mRandom;
    URL::UserInfo mCredentials;
    bool mIsArmed = false;
    Challenge mChallenge;
    /// How often the nonce was used.
    UInt mNonceCount = 0;
    /// Of a "-sess" algorithm, whose key is made once.
    std::string mSessionNonce;
};

}  // namespace Player::MediaSessions
