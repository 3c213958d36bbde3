#pragma once

#include <gst/gst.h>

#include <string>

namespace nsGstVireRtspSrc {

/// What the element does in one way for applications that know it, "classic", and in another for those written for
/// any source, "modern": each such decision is an operation here. The objects live for ever.
class Profile {
public:
    enum Name { kClassic = 0, kModern = 1 };

    static const Profile& Named(Name aName);

    Profile() = default;
    Profile(const Profile&) = delete;
    Profile& operator=(const Profile&) = delete;
    virtual ~Profile() = default;

    /// Whether tracks of a format that the element has not always played get a pad.
    virtual bool plays_newer_formats() const = 0;
    /// Whether packets go out as they come. Otherwise a track that has none rests for an interval, whatever comes.
    virtual bool waits_for_media() const = 0;
    /// The formats that get one, for people.
    virtual const char* formats() const = 0;
    /// The type of the message for a failure after which no media comes.
    virtual GstMessageType failure() const = 0;
    /// Whether locations with the scheme "rtsps" are played within TLS.
    virtual bool secures() const = 0;
    /// Whether a start that is refused before the server is asked is posted on the bus as well.
    virtual bool posts_refusals() const = 0;
    /// Whether a pause leaves what is downstream where it is, so that the media goes on as if there had been none, and
    /// has nothing to preroll with. Otherwise it flushes, and sinks that preroll wait for ever.
    virtual bool pauses_in_place() const = 0;
    /// Whether seeks and ends of stream are done as GStreamer's rules have it, wherever they come from, or refused.
    /// Otherwise seeks are done that are sent to the element, whatever they say, and nothing else.
    virtual bool heeds_events() const = 0;
    /// Whether a stream ends, alone, when what it is linked to says that it is at its end. Otherwise it goes on
    /// pushing.
    virtual bool ends_with_its_peer() const = 0;
    /// Whether what is linked ends the pipeline, as with any source, when it fails, or when there is nothing. Otherwise
    /// the streams stop or go on without a word.
    virtual bool fails_with_its_peers() const = 0;
    /// Whether a player made anew after a time-out is given the settings, the pads stay, and the time-outs count.
    virtual bool keeps_settings() const = 0;
    /// Whether each stream's position is that of its media. Otherwise visual's is the pipeline's.
    virtual bool positions_are_of_media() const = 0;
    /// Whether notes for developers go to standard output as well as to the log.
    virtual bool prints_notes() const = 0;
};

}  // namespace nsGstVireRtspSrc
