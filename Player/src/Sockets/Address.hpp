#pragma once

#include <sys/socket.h>

#include <string>
#include <vector>

#include "Player/Types.hpp"

namespace Player {

/// A socket address, of IPv4 where no other family is asked for: a value, empty (size 0) until one is set, looked up or
/// received.
class Address {
public:
    Address() = default;
    /// The wildcard address with this port (host byte order).
    explicit Address(UInt aPort);
    /// The wildcard address of IPv4 or IPv6, as `aFamily` says, with this port (host byte order).
    Address(SInt aFamily, UInt aPort);
    /// `Lookup` at once. `aService` may be null: port 0.
    Address(const char* aHost, const char* aService, SInt aFamily = AF_INET);
    Address(const Address& aOther);
    Address& operator=(const Address& aOther);

    /// Resolves a host (name or numeric) and a service (name or port number as text), and takes the first result.
    /// Throws `NetworkErr` `kLookupFailed`; the address stays as it was then.
    void Lookup(const char* aHost, const char* aService, SInt aFamily = AF_INET);
    /// The addresses of a host, of both families, in the order in which the resolver would have them tried; at least
    /// one. Throws `NetworkErr` `kLookupFailed`.
    static std::vector<Address> All(const char* aHost, const char* aService);
    /// The host, as dotted text or looked up by name. Throws `NetworkErr` `kLookupFailed`.
    std::string HostAsString(bool aNumeric) const;

    /// `AF_INET`, `AF_INET6`; `AF_UNSPEC` when empty.
    SInt Family() const { return 0 == mSize ? AF_UNSPEC : Begin()->sa_family; }
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
