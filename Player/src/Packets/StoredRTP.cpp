#include "Packets/StoredRTP.hpp"

#include <new>

#include "Player/Mem.hpp"

namespace Player::Packets {

SharedPtr<RTP, SharedObject> StoredRTP::Make(Arena& aArena, const Byte* aData, UInt aSize, const Lengths& aLengths,
                                             UInt aSeqNumberExt, long long aTimestampExt) {
    Byte* const lPlace = static_cast<Byte*>(aArena.Take(sizeof(StoredRTP) + aSize));
    Byte* const lDatagram = lPlace + sizeof(StoredRTP);
    Mem::Copy(lDatagram, aData, aSize);
    return SharedPtr<RTP, SharedObject>(
        ::new (lPlace) StoredRTP(BufferRef(lDatagram, aSize), aLengths, aSeqNumberExt, aTimestampExt));
}

}  // namespace Player::Packets
