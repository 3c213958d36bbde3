#pragma once

#include <cstdint>
#include <string>

/// The media client library: RTSP, SDP, RTP and depacketizers. It knows nothing of GStreamer or GLib,
/// has no threads and takes no locks: one thread at a time calls into one set of its objects.
namespace Player {

using Byte = std::uint8_t;
using UInt = std::uint32_t;
using SInt = std::int32_t;
using Char = char;
using String = std::string;

/// Index of a track that was set up, dense from 0.
using TrackIdx = UInt;

}  // namespace Player
