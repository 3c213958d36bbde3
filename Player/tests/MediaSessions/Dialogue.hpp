#pragma once

#include <string>

namespace Player::MediaSessions {

/// Writes out the shorthand of a dialogue as a script of `ScriptedServer`; its other lines stay as they are.
///
///     > DESCRIBE clip 1                          a request for that path, or whole URL, with that CSeq, whatever
///                                              lines follow
///     > SETUP clip/video 2 | Session: 5 | UDP 0  the same, with exactly these lines after the User-Agent
///     < 200 2 | Session: 5 | UDP 0               a response with that CSeq and these headers
///     < 200 1 | SDP clip/ video audio            the same, with a description and its Content-Base ("-": none)
///
/// UDP 0 and TCP 0 stand for the Transport line of track 0; UDP * for one whose ports do not matter.
/// What is described are H.264 "video", AMR "audio" and what has no depacketizer, in the form
/// type[@identifier][:payload type:clock rate[:format]], and range=0-20 for the session.
std::string Dialogue(const std::string& aShorthand);

}  // namespace Player::MediaSessions
