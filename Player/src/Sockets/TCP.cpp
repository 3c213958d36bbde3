#include "Sockets/TCP.hpp"

#include <netinet/in.h>
#include <sys/socket.h>

#include <cerrno>

#include "Throw.hpp"

namespace Player::Sockets {

namespace {

UInt Create(SInt aFamily) {
    const int lSocket = ::socket(aFamily, SOCK_STREAM, IPPROTO_TCP);
    if (lSocket < 0) {
        const int lErrno = errno;
        PLAYER_THROW_SYSTEM(NetworkErr, ErrorCode::kCreateFailed, lErrno, "TCP::Create(): Failed to create [%u]",
                            static_cast<UInt>(lErrno));
    }
    return static_cast<UInt>(lSocket);
}

}  // namespace

TCP::TCP(SInt aFamily) : Socket(Create(aFamily)), mFamily(aFamily) {}

void TCP::Reset() {
    Close();
    Adopt(Create(mFamily));
}

}  // namespace Player::Sockets
