#include "Sockets/UDP.hpp"

#include <linux/errqueue.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <cerrno>
#include <cstring>

#include "Player/Assert.hpp"
#include "Sockets/Transfer.hpp"
#include "Throw.hpp"

namespace Player::Sockets {

namespace {

UInt Create(SInt aFamily) {
    const int lSocket = ::socket(aFamily, SOCK_DGRAM, IPPROTO_UDP);
    if (lSocket < 0) {
        const int lErrno = errno;
        PLAYER_THROW_SYSTEM(NetworkErr, ErrorCode::kCreateFailed, lErrno, "UDP::Create(): Failed to create [%u]",
                            static_cast<UInt>(lErrno));
    }
    return static_cast<UInt>(lSocket);
}

}  // namespace

UDP::UDP(SInt aFamily) : Socket(Create(aFamily)), mFamily(aFamily) {}

void UDP::Reset() {
    Close();
    Adopt(Create(mFamily));
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

bool UDP::TakeRefusal() {
    const int lLevel = AF_INET6 == mFamily ? IPPROTO_IPV6 : IPPROTO_IP;
    const int lKind = AF_INET6 == mFamily ? IPV6_RECVERR : IP_RECVERR;
    if (!mKeepsRefusals) {
        const int lOn = 1;
        mKeepsRefusals = 0 == ::setsockopt(Descriptor(), lLevel, lKind, &lOn, sizeof lOn);
        return false;
    }
    bool lIsRefused = false;
    // Each error that waits would make a read fail.
    constexpr UInt kMostErrors = 16;
    for (UInt i = 0; i < kMostErrors; ++i) {
        alignas(cmsghdr) Byte lControl[512];
        msghdr lMessage{};
        lMessage.msg_control = lControl;
        lMessage.msg_controllen = sizeof lControl;
        if (::recvmsg(Descriptor(), &lMessage, MSG_ERRQUEUE | MSG_DONTWAIT) < 0) { break; }
        for (cmsghdr* lPart = CMSG_FIRSTHDR(&lMessage); nullptr != lPart; lPart = CMSG_NXTHDR(&lMessage, lPart)) {
            if (lLevel != lPart->cmsg_level || lKind != lPart->cmsg_type) { continue; }
            sock_extended_err lError{};
            std::memcpy(&lError, CMSG_DATA(lPart), sizeof lError);
            lIsRefused = lIsRefused || ECONNREFUSED == static_cast<int>(lError.ee_errno);
        }
    }
    return lIsRefused;
}

}  // namespace Player::Sockets
