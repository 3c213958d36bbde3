#pragma once

#include <sys/types.h>

#include <cerrno>

#include "Player/ErrorCode.hpp"
#include "Player/Types.hpp"

namespace Player::Sockets {

/// Makes a system call again for as long as signals interrupt it.
template <typename Call>
auto Uninterrupted(Call aCall) {
    auto lResult = aCall();
    while (lResult < 0 && EINTR == errno) {
        lResult = aCall();
    }
    return lResult;
}

/// Whether a call failed only because the socket has, or takes, nothing now.
bool WouldBlock(int aErrno);

/// What a send or receive came to: its byte count, or `Socket::kNoData` when the call would have blocked.
/// Throws `NetworkErr` `aError` for any other failure; `aFmt` holds a "%u" for `errno`.
SInt TransferResult(ssize_t aResult, ErrorCode::Network aError, const char* aFmt);

}  // namespace Player::Sockets
