#include "RTP/Transport.hpp"

namespace Player::RTP {

void Transport::SetTrackLocalIP(TrackIdx /*aIdx*/, const String& /*aIP*/) {}

void Transport::SetTrackLocalPorts(TrackIdx /*aIdx*/, const String& /*aPorts*/) {}

String Transport::GetTrackLocalIP(TrackIdx /*aIdx*/) const {
    return String();
}

String Transport::GetTrackLocalPorts(TrackIdx /*aIdx*/) const {
    return String();
}

void Transport::SetTrackRemoteIP(TrackIdx /*aIdx*/, const String& /*aIP*/) {}

void Transport::SetTrackRemotePorts(TrackIdx /*aIdx*/, const String& /*aPorts*/) {}

String Transport::GetTrackRemoteIP(TrackIdx /*aIdx*/) const {
    return String();
}

String Transport::GetTrackRemotePorts(TrackIdx /*aIdx*/) const {
    return String();
}

void Transport::SetInterLeavedChannelIdentifier(TrackIdx /*aIdx*/, const String& /*aChannels*/) {}

int Transport::GetChannelIndexByChannelIdentifier(int /*aChannel*/) const {
    return 0;
}

SInt Transport::TrackDescriptor(TrackIdx /*aIdx*/) const {
    return -1;
}

UInt Transport::SetTrackReceiveBuffer(TrackIdx /*aIdx*/, UInt /*aBytes*/) {
    return 0;
}

bool Transport::IsRefused() {
    return false;
}

}  // namespace Player::RTP
