#include "Crypto/Crypto.hpp"

#include "Player/Assert.hpp"

#ifdef PLAYER_HAS_GNUTLS
#include <gnutls/crypto.h>
#include <gnutls/gnutls.h>
#endif

namespace Player::Crypto {

#ifdef PLAYER_HAS_GNUTLS

namespace {

constexpr UInt kLargestHash = 32;

std::string Hex(const Byte* aBytes, UInt aSize) {
    constexpr char kDigits[] = "0123456789abcdef";
    std::string lText;
    for (UInt i = 0; i < aSize; ++i) {
        lText += kDigits[aBytes[i] >> 4];
        lText += kDigits[aBytes[i] & 0x0F];
    }
    return lText;
}

}  // namespace

bool IsAvailable() {
    return true;
}

std::string HexDigest(Hash aHash, const std::string& aText) {
    const gnutls_digest_algorithm_t lAlgorithm = Hash::kMD5 == aHash ? GNUTLS_DIG_MD5 : GNUTLS_DIG_SHA256;
    Byte lHash[kLargestHash] = {};
    if (0 != gnutls_hash_fast(lAlgorithm, aText.data(), aText.size(), lHash)) { return std::string(); }
    return Hex(lHash, gnutls_hash_get_len(lAlgorithm));
}

std::string RandomHex(UInt aBytes) {
    PLAYER_ASSERT(aBytes <= kLargestHash);
    Byte lBytes[kLargestHash] = {};
    if (0 != gnutls_rnd(GNUTLS_RND_NONCE, lBytes, aBytes)) { return std::string(); }
    return Hex(lBytes, aBytes);
}

#else

bool IsAvailable() {
    return false;
}

std::string HexDigest(Hash /*aHash*/, const std::string& /*aText*/) {
    return std::string();
}

std::string RandomHex(UInt /*aBytes*/) {
    return std::string();
}

#endif

}  // namespace Player::Crypto
