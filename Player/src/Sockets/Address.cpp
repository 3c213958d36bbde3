#include "Sockets/Address.hpp"

#include <netdb.h>
#include <netinet/in.h>

#include <cstring>
#include <memory>

#include "Player/Mem.hpp"
#include "Throw.hpp"

namespace Player {

namespace {

/// Of one name; each may cost a time-out.
constexpr std::size_t kMostAddresses = 8;

using Found = std::unique_ptr<addrinfo, void (*)(addrinfo*)>;

Found Find(const char* aHost, const char* aService, const addrinfo& aHints) {
    addrinfo* lFound = nullptr;
    const int lResult = getaddrinfo(aHost, aService, &aHints, &lFound);
    if (0 != lResult || nullptr == lFound) {
        PLAYER_THROW_SYSTEM(NetworkErr, ErrorCode::kLookupFailed, lResult,
                            "Address::Lookup(): Failed to lookup address [%u]", static_cast<UInt>(lResult));
    }
    return Found(lFound, freeaddrinfo);
}

}  // namespace

Address::Address(UInt aPort) : mSize(sizeof(sockaddr_in)) {
    sockaddr_in lAddr{};
    lAddr.sin_family = AF_INET;
    lAddr.sin_port = htons(static_cast<std::uint16_t>(aPort));
    lAddr.sin_addr.s_addr = htonl(INADDR_ANY);
    std::memcpy(mStorage, &lAddr, sizeof lAddr);
}

Address::Address(SInt aFamily, UInt aPort) : Address(aPort) {
    if (AF_INET6 != aFamily) { return; }
    sockaddr_in6 lAddr{};
    lAddr.sin6_family = AF_INET6;
    lAddr.sin6_port = htons(static_cast<std::uint16_t>(aPort));
    lAddr.sin6_addr = in6addr_any;
    Store(&lAddr, sizeof lAddr);
}

Address::Address(const char* aHost, const char* aService, SInt aFamily) {
    Lookup(aHost, aService, aFamily);
}

Address::Address(const Address& aOther) {
    Store(aOther.mStorage, aOther.mSize);
}

Address& Address::operator=(const Address& aOther) {
    if (this != &aOther) { Store(aOther.mStorage, aOther.mSize); }
    return *this;
}

void Address::Lookup(const char* aHost, const char* aService, SInt aFamily) {
    addrinfo lHints{};
    lHints.ai_family = aFamily;
    const Found lFound = Find(aHost, aService, lHints);
    Store(lFound->ai_addr, lFound->ai_addrlen);
}

std::vector<Address> Address::All(const char* aHost, const char* aService) {
    addrinfo lHints{};
    lHints.ai_family = AF_UNSPEC;
    // One result for each address, not one for each kind of socket.
    lHints.ai_socktype = SOCK_STREAM;
    const Found lFound = Find(aHost, aService, lHints);
    std::vector<Address> lAll;
    for (const addrinfo* lOne = lFound.get(); nullptr != lOne && lAll.size() < kMostAddresses; lOne = lOne->ai_next) {
        lAll.emplace_back();
        lAll.back().Store(lOne->ai_addr, lOne->ai_addrlen);
    }
    return lAll;
}

std::string Address::HostAsString(bool aNumeric) const {
    char lHost[NI_MAXHOST] = {};
    const int lResult = getnameinfo(Begin(), mSize, lHost, sizeof lHost, nullptr, 0, aNumeric ? NI_NUMERICHOST : 0);
    if (0 != lResult) {
        PLAYER_THROW_SYSTEM(NetworkErr, ErrorCode::kLookupFailed, lResult,
                            "Address::HostAsString(): Failed to reverse lookup address [%u]",
                            static_cast<UInt>(lResult));
    }
    return lHost;
}

void Address::Store(const void* aAddr, UInt aSize) {
    mSize = Util::Min(aSize, kCapacity);
    std::memcpy(mStorage, aAddr, mSize);
}

}  // namespace Player
