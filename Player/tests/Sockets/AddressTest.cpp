#include "Sockets/Address.hpp"

#include <gtest/gtest.h>
#include <netdb.h>
#include <netinet/in.h>

#include <cstring>
#include <memory>
#include <string>

#include "support/Throws.hpp"

namespace Player {
namespace {

using TestSupport::ExpectThrow;

sockaddr_in Internet(const Address& aAddr) {
    sockaddr_in lAddr{};
    EXPECT_EQ(sizeof lAddr, aAddr.Size());
    std::memcpy(&lAddr, aAddr.Begin(), sizeof lAddr);
    return lAddr;
}

/// What the resolver itself says to such a question.
int LookupResult(const char* aHost, const char* aService) {
    addrinfo lHints{};
    lHints.ai_family = AF_INET;
    addrinfo* lFound = nullptr;
    const int lResult = getaddrinfo(aHost, aService, &lHints, &lFound);
    if (nullptr != lFound) { freeaddrinfo(lFound); }
    return lResult;
}

TEST(Address, StartsEmpty) {
    const Address lAddr;
    EXPECT_EQ(0U, lAddr.Size());
    EXPECT_EQ(128U, lAddr.Capacity());
}

TEST(Address, WildcardWithPort) {
    const Address lAddr(554);
    EXPECT_EQ(16U, lAddr.Size());
    const sockaddr_in lInternet = Internet(lAddr);
    EXPECT_EQ(AF_INET, lInternet.sin_family);
    Byte lPort[2];
    std::memcpy(lPort, &lInternet.sin_port, sizeof lPort);
    EXPECT_EQ(0x02, lPort[0]);
    EXPECT_EQ(0x2A, lPort[1]);
    EXPECT_EQ(0U, lInternet.sin_addr.s_addr);
    EXPECT_EQ("0.0.0.0", lAddr.HostAsString(true));
}

TEST(Address, LooksUpDottedHosts) {
    const Address lAddr("127.1.2.3", "8554");
    const sockaddr_in lInternet = Internet(lAddr);
    EXPECT_EQ(AF_INET, lInternet.sin_family);
    EXPECT_EQ(htons(8554), lInternet.sin_port);
    EXPECT_EQ(htonl(0x7F010203), lInternet.sin_addr.s_addr);
    EXPECT_EQ("127.1.2.3", lAddr.HostAsString(true));
}

TEST(Address, NoServiceIsPortZero) {
    EXPECT_EQ(0, Internet(Address("127.0.0.1", nullptr)).sin_port);
}

TEST(Address, NoHostIsThisMachine) {
    EXPECT_EQ("127.0.0.1", Address(nullptr, "80").HostAsString(true)) << "not the wildcard: no flags are given";
}

TEST(Address, LooksUpNames) {
    if (0 != LookupResult("localhost", "554")) { GTEST_SKIP() << "This machine does not know localhost"; }
    const Address lAddr("localhost", "554");
    EXPECT_EQ("127.0.0.1", lAddr.HostAsString(true));
    EXPECT_EQ(htons(554), Internet(lAddr).sin_port);
}

TEST(Address, LooksUpAgain) {
    Address lAddr(1);
    lAddr.Lookup("127.0.0.9", "9");
    EXPECT_EQ("127.0.0.9", lAddr.HostAsString(true));
}

TEST(Address, FailedLookupTellsTheResolversCode) {
    Address lAddr(554);
    const int lResult = LookupResult("127.0.0.1", "no-such-service");
    ASSERT_NE(0, lResult);
    const std::string lMessage =
        "Address::Lookup(): Failed to lookup address [" + std::to_string(static_cast<UInt>(lResult)) + "]";
    ExpectThrow<NetworkErr>(16, lMessage, [&] { lAddr.Lookup("127.0.0.1", "no-such-service"); });
    ExpectThrow<NetworkErr>(16, lMessage, [] { Address("127.0.0.1", "no-such-service"); });
    EXPECT_EQ("0.0.0.0", lAddr.HostAsString(true)) << "the address stays";
}

TEST(Address, KnowsNoIPv6) {
    const int lResult = LookupResult("::1", "554");
    ASSERT_NE(0, lResult);
    ExpectThrow<NetworkErr>(
        16, "Address::Lookup(): Failed to lookup address [" + std::to_string(static_cast<UInt>(lResult)) + "]",
        [] { Address("::1", "554"); });
}

TEST(Address, HostAsName) {
    const Address lAddr("127.0.0.1", "1");
    char lName[NI_MAXHOST] = {};
    ASSERT_EQ(0, getnameinfo(lAddr.Begin(), lAddr.Size(), lName, sizeof lName, nullptr, 0, 0));
    EXPECT_EQ(lName, lAddr.HostAsString(false));
}

TEST(Address, EmptyHasNoHost) {
    const Address lAddr;
    ExpectThrow<NetworkErr>(16,
                            "Address::HostAsString(): Failed to reverse lookup address [" +
                                std::to_string(static_cast<UInt>(EAI_FAMILY)) + "]",
                            [&] { static_cast<void>(lAddr.HostAsString(true)); });
}

TEST(Address, Copies) {
    const Address lOriginal("127.0.0.5", "5");
    const Address lCopy(lOriginal);  // NOLINT(performance-unnecessary-copy-initialization)
    EXPECT_EQ("127.0.0.5", lCopy.HostAsString(true));
    EXPECT_EQ(16U, lCopy.Size());
    Address lAssigned(1);
    lAssigned = lOriginal;
    EXPECT_EQ("127.0.0.5", lAssigned.HostAsString(true));
    const Address& lSelf = lAssigned;
    lAssigned = lSelf;
    EXPECT_EQ("127.0.0.5", lAssigned.HostAsString(true));
    lAssigned = Address();
    EXPECT_EQ(0U, lAssigned.Size());
}

TEST(Address, SizeIsWritableAndNeverCopiedBeyondTheStorage) {
    Address lAddr;
    std::memset(lAddr.Begin(), 0x55, Address::Capacity());
    lAddr.Size() = Address::Capacity();
    const Address lFull(lAddr);
    EXPECT_EQ(128U, lFull.Size());
    EXPECT_EQ(0, std::memcmp(lAddr.Begin(), lFull.Begin(), 128));
    lAddr.Size() = 5000;
    const Address lBeyond(lAddr);
    EXPECT_EQ(128U, lBeyond.Size());
}

}  // namespace
}  // namespace Player
