#pragma once

#include "Player/Packet.hpp"

namespace Player::Packets {

/// One frame of MPEG-4 audio, an AudioMuxElement's payload without its length.
class MP4ASample : public Media {
public:
    using Media::Media;
};

}  // namespace Player::Packets
