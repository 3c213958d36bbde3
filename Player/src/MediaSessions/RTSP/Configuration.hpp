#pragma once

#include <string>

#include "MediaSessions/RTSP/Dialect.hpp"
#include "MediaSessions/RTSP/Headers/Transports.hpp"
#include "Player/Properties.hpp"
#include "Player/Time.hpp"
#include "Player/Types.hpp"

namespace Player::MediaSessions {

/// The settings of an RTSP session, each read from the key "RTSP:" and its name. Keys are case-sensitive;
/// an absent or empty value means the default below.
struct Configuration {
    /// Local address of the control connection and of UDP media; empty lets the system choose.
    std::string mUseLocalIP;
    /// Seconds, of connecting and of every read on the control connection.
    UInt mTimeOutAfter = 10;
    std::string mUseDeviceStr = "Generic";
    std::string mUseUserAgentNameStr = "QuenraPlayer";
    std::string mUseUserAgentVersionStr = "x.x";
    /// Authority of an RTSP proxy; empty connects to the server itself.
    std::string mUseProxy;
    // Values of the headers Proxy-Authorization, X-Network-Type, Referrer, X-WAP-Profile; empty sends none.
    std::string mSendProxyAuth;
    std::string mSendNetworkType;
    std::string mSendReferrer;
    std::string mSendWAPProfile;
    /// Local UDP ports lie in [from, to), both even.
    UInt mUseUDPPortsFrom = 49152;
    UInt mUseUDPPortsTo = 65536;
    /// Seconds of media to have before playing.
    UInt mTargetRTPBuffer = 3;
    /// Silence after which a track has timed out.
    Time mTimeOutRTPAfter = Time(20, 1);
    /// RTP within the RTSP connection instead of over UDP.
    bool mUseInterleavedRTP = false;
    /// Answers every question on which the profiles differ; from the key "RTSP:Profile".
    const Dialect* mDialect = &Dialect::Named("");
    /// For servers that ask for them. The URL's own count for more.
    std::string mUserName;
    std::string mPassword;
    /// The ways for media to come in, at least one. Where none are given, `mUseInterleavedRTP` or the dialect decides.
    Transports mTransports = {true, false};
    /// Bytes of the receive buffer of each track over UDP; 0 leaves it to the dialect.
    UInt mUDPBuffer = 0;
    /// Milliseconds for the first media over UDP where TCP may take its place.
    UInt mUDPPatience = 3000;
    /// A file of certificates (PEM) that vouch for those of servers; empty for the system's.
    std::string mTLSAuthorities;
    /// MiB of packets that may wait in order, of all tracks; 0 for 1024, or 256 where addresses have 32 bits. With less
    /// than 64 some packets of a full queue are dropped though they come over the connection.
    UInt mQueueLimit = 0;

    Configuration() = default;
    /// A time-out of 0 and a port range that is out of bounds or empty are mistakes of the embedding
    /// application: assertions.
    explicit Configuration(const Properties& aConfig);
};

}  // namespace Player::MediaSessions
