#pragma once

#include "Player/Exception.hpp"
#include "Player/Report.hpp"

/// Reports a failure at severity Error and throws it as `aKind` with the same text.
/// The arguments are evaluated twice: pass values, and `errno` only after it was copied.
#define PLAYER_THROW(aKind, aError, ...)                                              \
    do {                                                                              \
        ::Player::Report(__FILE__, __LINE__, ::Player::Severity::Error, __VA_ARGS__); \
        throw ::Player::aKind(static_cast<unsigned short>(aError), __VA_ARGS__);      \
    } while (false)
