#include "Sockets/UDP.hpp"

#include <netinet/in.h>
#include <sys/socket.h>

#include <cerrno>

#include "Player/Assert.hpp"
#include "Sockets/Transfer.hpp"
#include "Throw.hpp"

namespace Player::Sockets {

namespace {

UInt Create() {
    const int lSocket = ::socket(AF_INET, SOCK_DGRAM, IPPROTO_UDP);
    if (lSocket < 0) {
        const int lErrno = errno;
        PLAYER_THROW_SYSTEM(NetworkErr, ErrorCode::kCreateFailed, lErrno, "UDP::Create(): Failed to create [%u]",
                            static_cast<UInt>(lErrno));
    }
    return static_cast<UInt>(lSocket);
}

}  // namespace

UDP::UDP() : Socket(Create()) {}

void UDP::Reset() {
    Close();
    Adopt(Create());
}

SInt UDP::WriteTo(const void* aData, UInt aSize, const Address& aTo) {
    PLAYER_ASSERT(0 == (aSize >> 31));
    const ssize_t lCount =
        Uninterrupted([&] { return ::sendto(Descriptor(), aData, aSize, MSG_NOSIGNAL, aTo.Begin(), aTo.Size()); });
    return TransferResult(lCount, ErrorCode::kWriteFailed, "UDP::WriteTo(): Failed to write [%u]");
}

SInt UDP::ReadFrom(void* aData, UInt aSize, Address& aFrom) const {
    PLAYER_ASSERT(0 == (aSize >> 31));
    socklen_t lLength = 0;
    const ssize_t lCount = Uninterrupted([&] {
        lLength = Address::Capacity();
        return ::recvfrom(Descriptor(), aData, aSize, 0, aFrom.Begin(), &lLength);
    });
    if (0 <= lCount) { aFrom.Size() = lLength; }
    return TransferResult(lCount, ErrorCode::kReadFailed, "UDP::ReadFrom(): Failed to read [%u]");
}

UInt UDP::ReadMany(DatagramBatch& aBatch) const {
    const int lErrno = aBatch.Receive(Descriptor());
    if (0 != lErrno && !WouldBlock(lErrno)) {
        PLAYER_THROW_SYSTEM(NetworkErr, ErrorCode::kReadFailed, lErrno, "UDP::ReadFrom(): Failed to read [%u]",
                            static_cast<UInt>(lErrno));
    }
    return aBatch.Count();
}

}  // namespace Player::Sockets
