#pragma once

#include "Player/Types.hpp"

namespace Player::RTP::Transports {

/// What `OverRTSP` needs of the session that owns the RTSP connection: the one thread by which the
/// transport pulls at the session. (The session pushes frames with `OverRTSP::HandlePacketData`.)
class InterleavedConnection {
public:
    /// Reads what has arrived and delivers the frames in it. True when any was delivered.
    virtual bool RecvInterleavedPackets() = 0;
    /// Writes a whole frame past the request buffer. The byte count, 0 when there is no open connection.
    virtual int Send_RR(const void* aData, UInt aSize) = 0;

protected:
    ~InterleavedConnection() = default;
};

}  // namespace Player::RTP::Transports
