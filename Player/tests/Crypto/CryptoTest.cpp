#include "Crypto/Crypto.hpp"

#include <gtest/gtest.h>

namespace Player::Crypto {
namespace {

TEST(CryptoTest, HashesOfKnownTexts) {
    if (!IsAvailable()) { GTEST_SKIP() << "built without GnuTLS"; }
    EXPECT_EQ("d41d8cd98f00b204e9800998ecf8427e", HexDigest(Hash::kMD5, ""));
    EXPECT_EQ("900150983cd24fb0d6963f7d28e17f72", HexDigest(Hash::kMD5, "abc"));
    EXPECT_EQ("ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad", HexDigest(Hash::kSHA256, "abc"));
    EXPECT_EQ(HexDigest(Hash::kMD5, std::string(3, '\0')), HexDigest(Hash::kMD5, std::string("\0\0\0", 3)));
}

TEST(CryptoTest, RandomTextsDiffer) {
    if (!IsAvailable()) { GTEST_SKIP() << "built without GnuTLS"; }
    EXPECT_EQ(32U, RandomHex(16).size());
    EXPECT_NE(RandomHex(16), RandomHex(16));
    EXPECT_EQ("", RandomHex(0));
}

TEST(CryptoTest, WithoutTheLibraryThereIsNothing) {
    if (IsAvailable()) { GTEST_SKIP() << "built with GnuTLS"; }
    EXPECT_EQ("", HexDigest(Hash::kMD5, "abc"));
    EXPECT_EQ("", RandomHex(16));
}

}  // namespace
}  // namespace Player::Crypto
