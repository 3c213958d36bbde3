#pragma once

#include <string>
#include <utility>

#include "MediaSessions/RTSP/Transports.hpp"
#include "Player/Types.hpp"

namespace Player::MediaSessions {

/// How a session deals with what servers do differently. Each decision on which the profiles differ is an operation
/// here, so that the session itself has one course. Without state: one object of each serves every session.
class Dialect {
public:
    Dialect() = default;
    Dialect(const Dialect&) = delete;
    Dialect& operator=(const Dialect&) = delete;
    virtual ~Dialect() = default;

    /// "modern", "classic", or empty for classic; anything else is reported and taken for classic.
    static const Dialect& Named(const std::string& aProfile);

    virtual const char* Name() const = 0;

    /// The ways for media when none are configured.
    virtual Transports DefaultTransports() const = 0;
    /// Bytes of the receive buffer of a track over UDP when none are configured.
    virtual UInt UDPBuffer(const std::string& aMediaType) const = 0;
};

/// The letter of the dialogue that this client has always spoken.
class Classic final : public Dialect {
public:
    const char* Name() const override { return "classic"; }
    Transports DefaultTransports() const override { return {true, false}; }
    UInt UDPBuffer(const std::string& aMediaType) const override;
};

/// What makes today's servers play.
class Modern final : public Dialect {
public:
    const char* Name() const override { return "modern"; }
    Transports DefaultTransports() const override { return {true, true}; }
    UInt UDPBuffer(const std::string& aMediaType) const override;
};

}  // namespace Player::MediaSessions
