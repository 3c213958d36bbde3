#pragma once

/// The numbers that `Exception` carries; docs/errors.md has a table of them. Applications compare and store them:
/// a number never changes and is never used again.

namespace Player {

/// What failed: the upper 16 bits of `Exception::Code()`. Each has a class of its own in Player/Exception.hpp.
enum class Area : unsigned short {
    kSystem = 1,   ///< `SystemErr`: the system itself, or a call out of turn
    kNetwork = 3,  ///< `NetworkErr`: sockets and name resolution
    kRTSP = 17,    ///< `RTSPErr`: the RTSP dialogue
    kSDP = 18,     ///< `SDPErr`: the session description
    kRTP = 19,     ///< `RTPErr`: RTP transports
};

/// How it failed: the lower 16 bits of `Exception::Code()`, to be read within their area.
namespace ErrorCode {

/// Of `Area::kSystem`.
enum System : unsigned short {
    kNoSession = 1,       ///< an operation that needs a session, before `Play` or after a failed start
    kNothingFollows = 2,  ///< something was attached to the end of a chain
    kClockFailed = 17,    ///< the clock can't be read; `Exception::SystemError()` is errno
};

/// Of `Area::kNetwork`. `Exception::SystemError()` is errno.
enum Network : unsigned short {
    kLookupFailed = 16,  ///< no address for a name, or no name for an address; the system error is getaddrinfo's result
    kCreateFailed = 32,  ///< no socket
    kOptionFailed = 33,  ///< a socket option or mode can't be set
    kBindFailed = 34,    ///< a local address or port can't be had
    kConnectFailed = 35,  ///< no connection; the system error is ETIMEDOUT when the server did not answer in time
    kReadFailed = 38,     ///< the connection broke; ETIMEDOUT when nothing came in time
    kWriteFailed = 39,    ///< the connection broke; ETIMEDOUT when the server read nothing in time
    kTLSFailed = 48,      ///< no secure connection: a certificate that is refused, no TLS, or built without it
};

/// Of `Area::kRTSP`. A refused request has the response's status instead, its digits read as a hexadecimal number:
/// 0x404 for "404 Not Found".
enum RTSP : unsigned short {
    kNoAnswer = 0,               ///< the server closed the connection instead of answering
    kMalformed = 2,              ///< a message that breaks the protocol
    kClipEnded = 18,             ///< resumed where nothing is left to play
    kPipelinedSetUpFailed = 19,  ///< a track was refused when all were set up at once
    kMulticastOnly = 20,         ///< the server sends to groups only, which is not supported
    kFirstStatus = 0x300,        ///< from here on the number is a status
    kLastStatus = 0x699,
};

/// Of `Area::kSDP`.
enum SDP : unsigned short {
    kBadSyntax = 1,            ///< the text is no session description
    kUnusable = 2,             ///< a description without a track, or of which an essential part is missing
    kUnsupportedVersion = 16,  ///< of another version than 0
};

/// Of `Area::kRTP`.
enum RTP : unsigned short {
    kNoPorts = 1,  ///< no free pair of UDP ports in the range
};

}  // namespace ErrorCode

}  // namespace Player
