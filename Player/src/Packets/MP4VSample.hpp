#pragma once

#include "Player/Packet.hpp"

namespace Player::Packets {

/// One frame of an MPEG-4 visual elementary stream.
class MP4VSample : public Media {
public:
    using Media::Media;
};

}  // namespace Player::Packets
