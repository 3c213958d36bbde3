#pragma once

#include "Player/Exception.hpp"
#include "Player/Report.hpp"

/// Reports a failure at severity Error and throws it as `aKind` with the same text.
/// The arguments are evaluated twice: pass values, and `errno` only after it was copied.
#define PLAYER_THROW(aKind, aError, ...) PLAYER_THROW_SYSTEM(aKind, aError, 0, __VA_ARGS__)

/// With `aSystemError`, the number that the failed call of the system gave.
#define PLAYER_THROW_SYSTEM(aKind, aError, aSystemError, ...)                                              \
    do {                                                                                                   \
        ::Player::Report(__FILE__, __LINE__, ::Player::Severity::Error, __VA_ARGS__);                      \
        throw ::Player::WithSystemError(::Player::aKind(static_cast<unsigned short>(aError), __VA_ARGS__), \
                                        aSystemError);                                                     \
    } while (false)

namespace Player {

template <typename Kind>
Kind WithSystemError(Kind aFailure, int aSystemError) {
    aFailure.SetSystemError(aSystemError);
    return aFailure;
}

}  // namespace Player
