#pragma once

#include <exception>

#include "Player/ErrorCode.hpp"
#include "Player/Types.hpp"

namespace Player {

/// A failure of the library: an area, a number within it (Player/ErrorCode.hpp), and a sentence that names the
/// function. Thrown by value as the subclass of its area.
class Exception : public std::exception {
public:
    Exception(unsigned short aCategory, unsigned short aError);
    Exception(const Exception&) = default;
    Exception& operator=(const Exception&) = default;
    ~Exception() override = default;

    /// Category in the upper, error in the lower 16 bits.
    UInt Code() const { return static_cast<UInt>(mCategory) << 16 | mError; }
    unsigned short Category() const { return mCategory; }
    unsigned short Error() const { return mError; }
    /// NUL-terminated; at most 2047 characters, longer text is cut.
    const char* Message() const { return mMessage; }
    const char* what() const noexcept override { return mMessage; }

    /// What the failed call of the system gave: errno, getaddrinfo's result for a failed lookup, ETIMEDOUT for a wait
    /// that ran out; 0 when no call failed.
    int SystemError() const { return mSystemError; }
    void SetSystemError(int aError) { mSystemError = aError; }

protected:
    /// `aArgs` is the address of a `va_list`.
    void Format(const char* aFmt, void* aArgs);

private:
    static constexpr SInt kMessageSize = 2048;

    unsigned short mCategory;
    unsigned short mError;
    char mMessage[kMessageSize];
    int mSystemError = 0;
};

/// The system itself, or a call out of turn.
class SystemErr : public Exception {
public:
    SystemErr(unsigned short aError, const char* aFmt, ...) __attribute__((format(printf, 3, 4)));
};

/// Sockets and name resolution.
class NetworkErr : public Exception {
public:
    NetworkErr(unsigned short aError, const char* aFmt, ...) __attribute__((format(printf, 3, 4)));
};

/// The RTSP dialogue. For a refused request the error is the status read as a hexadecimal number: 0x404.
class RTSPErr : public Exception {
public:
    RTSPErr(unsigned short aError, const char* aFmt, ...) __attribute__((format(printf, 3, 4)));
};

/// The session description.
class SDPErr : public Exception {
public:
    SDPErr(unsigned short aError, const char* aFmt, ...) __attribute__((format(printf, 3, 4)));
};

/// RTP transports.
class RTPErr : public Exception {
public:
    RTPErr(unsigned short aError, const char* aFmt, ...) __attribute__((format(printf, 3, 4)));
};

}  // namespace Player
