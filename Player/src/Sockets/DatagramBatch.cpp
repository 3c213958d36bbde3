#include "Sockets/DatagramBatch.hpp"

#include <cerrno>

#include "Sockets/Transfer.hpp"

namespace Player::Sockets {

DatagramBatch::DatagramBatch() {  // NOLINT(*-member-init): the slots are written before they are read
    for (UInt i = 0; i < kSlots; ++i) {
        mSlots[i] = {mData[i], kSlotSize};
        mHeaders[i].msg_hdr.msg_iov = &mSlots[i];
        mHeaders[i].msg_hdr.msg_iovlen = 1;
    }
}

int DatagramBatch::Receive(SInt aSocket) {
    mCount = 0;
    const int lCount = Uninterrupted([&] { return ::recvmmsg(aSocket, mHeaders, kSlots, MSG_DONTWAIT, nullptr); });
    if (lCount < 0) { return ENOSYS == errno ? ReceiveSingly(aSocket) : errno; }
    mCount = static_cast<UInt>(lCount);
    return 0;
}

int DatagramBatch::ReceiveSingly(SInt aSocket) {
    while (mCount < kSlots) {
        const ssize_t lSize = Uninterrupted([&] { return ::recv(aSocket, mData[mCount], kSlotSize, MSG_DONTWAIT); });
        // What came before a failure counts, as it does with `recvmmsg`.
        if (lSize < 0) { return 0 == mCount ? errno : 0; }
        mHeaders[mCount++].msg_len = static_cast<unsigned int>(lSize);
    }
    return 0;
}

}  // namespace Player::Sockets
