#pragma once

#include "Player/Types.hpp"

/// Readers of codec configurations: H.264 parameter sets and MPEG-4 visual headers.
/// Bytes in, numbers out; nothing outside the given bytes is ever read.
namespace Parser {

using Player::Byte;
using Player::SInt;
using Player::UInt;

}  // namespace Parser
