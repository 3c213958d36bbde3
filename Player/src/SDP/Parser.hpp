#pragma once

#include <list>

#include "Player/Buffer.hpp"
#include "Player/Properties.hpp"

namespace Player {

/// Reads a session description (RFC 4566) into one bag for the session and one per media description, in
/// order. Knows the lines o=, s=, c=, m= and the attributes rtpmap, control, range (npt), fmtp and
/// framesize; all else is skipped. The last line of a kind wins. What follows 16384 media is not read.
///
/// Throws `SDPErr` `kBadSyntax`, or `kUnsupportedVersion` for another version than 0; what was parsed until then stays
/// in `aSession` and `aMedia`.
void ParseSDP(const BufferRef& aSDP, SharedPtr<Properties, SharedObject>& aSession,
              std::list<SharedPtr<Properties, SharedObject>>& aMedia);

}  // namespace Player
