#pragma once

#include <sys/socket.h>

#include <string>

#include "Player/Types.hpp"

namespace Player {

/// An IPv4 socket address: a value, empty (size 0) until one is set, looked up or received.
class Address {
public:
    Address() = default;
    /// The wildcard address with this port (host byte order).
    explicit Address(UInt aPort);
    /// `Lookup` at once. `aService` may be null: port 0.
    Address(const char* aHost, const char* aService);
    Address(const Address& aOther);
    Address& operator=(const Address& aOther);

    /// Resolves a host (name or dotted) and a service (name or port number as text), IPv4 only, and takes
    /// the first result. Throws `NetworkErr` `kLookupFailed`; the address stays as it was then.
    void Lookup(const char* aHost, const char* aService);
    /// The host, as dotted text or looked up by name. Throws `NetworkErr` `kLookupFailed`.
    std::string HostAsString(bool aNumeric) const;

    sockaddr* Begin() { return reinterpret_cast<sockaddr*>(mStorage); }
    const sockaddr* Begin() const { return reinterpret_cast<const sockaddr*>(mStorage); }
    UInt Size() const { return mSize; }
    /// For calls that store an address and its length.
    UInt& Size() { return mSize; }
    static constexpr UInt Capacity() { return kCapacity; }

private:
    static constexpr UInt kCapacity = 128;

    void Store(const void* aAddr, UInt aSize);

    UInt mSize = 0;
    alignas(sockaddr_storage) Byte mStorage[kCapacity] = {};
};

}  // namespace Player
