#pragma once

#include <optional>
#include <string>

#include "Player/Types.hpp"

namespace Player::MediaSessions {

/// The parameters of one track, as the Transport header of a SETUP response carries them (RFC 2326 section
/// 12.39). The entries of an RTP-Info header have the same form. What is absent says nothing; other
/// parameters are ignored.
struct TransportHeader {
    std::optional<UInt> mSSRC;
    std::optional<unsigned short> mSeq;
    std::optional<UInt> mRTPTime;
    std::optional<std::string> mSource;
    /// One port, or two joined by a hyphen.
    std::optional<std::string> mServerPorts;
    /// The pair of interleaved channels, as sent.
    std::optional<std::string> mChannels;
    /// To a group, not to the client.
    bool mIsMulticast = false;

    static TransportHeader Parse(const std::string& aValue);
};

}  // namespace Player::MediaSessions
