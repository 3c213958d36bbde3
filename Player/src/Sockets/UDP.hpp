#pragma once

#include <sys/socket.h>

#include "Sockets/DatagramBatch.hpp"
#include "Sockets/Socket.hpp"

namespace Player::Sockets {

class UDP : public Socket {
public:
    /// Throws `NetworkErr` `kCreateFailed`.
    explicit UDP(SInt aFamily = AF_INET);
    /// Closes the descriptor and makes a fresh one. Throws `NetworkErr` `kCreateFailed`.
    void Reset();

    /// One `sendto`: the byte count, or `kNoData` when the socket takes none now. Throws `NetworkErr` `kWriteFailed`.
    SInt WriteTo(const void* aData, UInt aSize, const Address& aTo);
    /// One `recvfrom`: the byte count (0 for an empty datagram), or `kNoData`; the sender goes to `aFrom`.
    /// Throws `NetworkErr` `kReadFailed`.
    SInt ReadFrom(void* aData, UInt aSize, Address& aFrom) const;
    /// Takes in what waits, up to a full batch, without blocking; the count. Throws `NetworkErr` `kReadFailed`.
    UInt ReadMany(DatagramBatch& aBatch) const;
    /// Whether the destination has refused a datagram (ICMP). The system keeps that from the first call on.
    bool TakeRefusal();

private:
    SInt mFamily;
    bool mKeepsRefusals = false;
};

}  // namespace Player::Sockets
