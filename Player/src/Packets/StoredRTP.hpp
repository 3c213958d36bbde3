#pragma once

#include "Packets/Arena.hpp"
#include "Packets/RTP.hpp"
#include "Player/Ptr.hpp"

namespace Player::Packets {

/// An RTP packet that lies in an arena together with its datagram.
class StoredRTP final : public RTP {
public:
    /// Copies the datagram. Throws `std::bad_alloc`.
    static SharedPtr<RTP, SharedObject> Make(Arena& aArena, const Byte* aData, UInt aSize, const Lengths& aLengths,
                                             UInt aSeqNumberExt, long long aTimestampExt);

    /// It lies in a piece of the arena, nowhere else.
    static void* operator new(std::size_t) = delete;
    // NOLINTNEXTLINE(cert-dcl54-cpp,misc-new-delete-overloads): nothing is made without a place
    static void operator delete(void* aPacket) { Arena::Give(aPacket); }

private:
    using RTP::RTP;
};

}  // namespace Player::Packets
