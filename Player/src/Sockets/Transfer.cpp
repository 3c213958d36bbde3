#include "Sockets/Transfer.hpp"

#include "Sockets/Socket.hpp"
#include "Throw.hpp"

namespace Player::Sockets {

bool WouldBlock(int aErrno) {
#if EAGAIN != EWOULDBLOCK
    if (EWOULDBLOCK == aErrno) { return true; }
#endif
    return EAGAIN == aErrno;
}

SInt TransferResult(ssize_t aResult, ErrorCode::Network aError, const char* aFmt) {
    if (0 <= aResult) { return static_cast<SInt>(aResult); }
    const int lErrno = errno;
    if (WouldBlock(lErrno)) { return Socket::kNoData; }
    PLAYER_THROW_SYSTEM(NetworkErr, aError, lErrno, aFmt, static_cast<UInt>(lErrno));
}

}  // namespace Player::Sockets
