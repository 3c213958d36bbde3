#pragma once

#include "Sockets/DatagramBatch.hpp"
#include "Sockets/Socket.hpp"

namespace Player::Sockets {

class UDP : public Socket {
public:
    /// Throws `NetworkErr` 32.
    UDP();
    /// Closes the descriptor and makes a fresh one. Throws `NetworkErr` 32.
    void Reset();

    /// One `sendto`: the byte count, or `kNoData` when the socket takes none now. Throws `NetworkErr` 39.
    SInt WriteTo(const void* aData, UInt aSize, const Address& aTo);
    /// One `recvfrom`: the byte count (0 for an empty datagram), or `kNoData`; the sender goes to `aFrom`.
    /// Throws `NetworkErr` 38.
    SInt ReadFrom(void* aData, UInt aSize, Address& aFrom) const;
    /// Takes in what waits, up to a full batch, without blocking; the count. Throws `NetworkErr` 38.
    UInt ReadMany(DatagramBatch& aBatch) const;
};

}  // namespace Player::Sockets
