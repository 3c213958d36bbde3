#include "Sockets/Address.hpp"

#include <netdb.h>
#include <netinet/in.h>

#include <cstring>
#include <memory>

#include "Player/Mem.hpp"
#include "Throw.hpp"

namespace Player {

Address::Address(UInt aPort) : mSize(sizeof(sockaddr_in)) {
    sockaddr_in lAddr{};
    lAddr.sin_family = AF_INET;
    lAddr.sin_port = htons(static_cast<std::uint16_t>(aPort));
    lAddr.sin_addr.s_addr = htonl(INADDR_ANY);
    std::memcpy(mStorage, &lAddr, sizeof lAddr);
}

Address::Address(const char* aHost, const char* aService) {
    Lookup(aHost, aService);
}

Address::Address(const Address& aOther) {
    Store(aOther.mStorage, aOther.mSize);
}

Address& Address::operator=(const Address& aOther) {
    if (this != &aOther) { Store(aOther.mStorage, aOther.mSize); }
    return *this;
}

void Address::Lookup(const char* aHost, const char* aService) {
    addrinfo lHints{};
    lHints.ai_family = AF_INET;
    addrinfo* lFound = nullptr;
    const int lResult = getaddrinfo(aHost, aService, &lHints, &lFound);
    if (0 != lResult || nullptr == lFound) {
        PLAYER_THROW_SYSTEM(NetworkErr, ErrorCode::kLookupFailed, lResult,
                            "Address::Lookup(): Failed to lookup address [%u]", static_cast<UInt>(lResult));
    }
    const std::unique_ptr<addrinfo, void (*)(addrinfo*)> lOwner(lFound, freeaddrinfo);
    Store(lFound->ai_addr, lFound->ai_addrlen);
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
