#pragma once

#include <string>
#include <vector>

#include "Crypto/Crypto.hpp"

namespace Player::MediaSessions {

/// One way by which a server wants to know who asks: an entry of WWW-Authenticate or Proxy-Authenticate
/// (RFC 7235 section 4.1, RFC 7616 section 3.3, RFC 7617).
struct Challenge {
    enum class Scheme { kBasic, kDigest };

    Scheme mScheme = Scheme::kBasic;
    // Quoted values stand as they were sent, with their backslashes: that is how they are hashed and sent back.
    std::string mRealm;
    std::string mNonce;
    std::string mOpaque;
    /// As it was sent; empty when it was not.
    std::string mAlgorithm;
    Crypto::Hash mHash = Crypto::Hash::kMD5;
    /// The name ends in "-sess".
    bool mIsSession = false;
    bool mHasQop = false;
    bool mHasOpaque = false;
    /// The nonce was too old; name and password may be right.
    bool mIsStale = false;

    /// All entries of one header that can be answered, in order. Unknown schemes and algorithms are left out, as are
    /// entries that can't be sent back: with a value beyond 4096 bytes, or with control characters.
    static std::vector<Challenge> Parse(const std::string& aHeader);
};

}  // namespace Player::MediaSessions
