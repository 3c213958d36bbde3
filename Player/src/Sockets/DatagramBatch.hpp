#pragma once

#include <sys/socket.h>

#include "Player/Assert.hpp"
#include "Player/Types.hpp"

namespace Player::Sockets {

/// The datagrams that one call took from a socket, in the order of their arrival. Its memory is used over
/// and over: the bytes stay until the next `Receive`. Datagrams beyond the size of a slot are cut;
/// empty ones count.
class DatagramBatch {
public:
    static constexpr UInt kSlots = 32;
    static constexpr UInt kSlotSize = 1500;

    DatagramBatch();
    DatagramBatch(const DatagramBatch&) = delete;
    DatagramBatch& operator=(const DatagramBatch&) = delete;

    /// Replaces the contents by what waits at the descriptor, without blocking: less than `kSlots` when
    /// nothing more waits. Returns 0, or the `errno` that kept the first datagram from being read.
    int Receive(SInt aSocket);

    UInt Count() const { return mCount; }
    const Byte* Data(UInt aIdx) const {
        PLAYER_ASSERT(aIdx < mCount);
        return mData[aIdx];
    }
    UInt Size(UInt aIdx) const {
        PLAYER_ASSERT(aIdx < mCount);
        return mHeaders[aIdx].msg_len;
    }

private:
    int ReceiveSingly(SInt aSocket);

    UInt mCount = 0;
    mmsghdr mHeaders[kSlots] = {};
    iovec mSlots[kSlots] = {};
    Byte mData[kSlots][kSlotSize];
};

}  // namespace Player::Sockets
