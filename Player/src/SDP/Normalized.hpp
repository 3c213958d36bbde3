#pragma once

#include <string>

namespace Player {

/// A session description in the form in which `ParseSDP` reads it as its sender meant it (RFC 4566 section 6):
/// - each medium has the rtpmap, fmtp and framesize of one payload type, which stands first in its m= line: the first
///   of them whose encoding can be played, else the first;
/// - names of encodings and of format parameters that this player knows are written as it writes them;
/// - media that the client would have to send are left out;
/// - H.264 parameter sets are without start codes and zeros around them;
/// - single blanks, and none at the ends of lines, of attribute names or around parameters.
/// All else stays. Done twice it gives the same as done once.
std::string NormalizedSDP(const std::string& aText);

}  // namespace Player
