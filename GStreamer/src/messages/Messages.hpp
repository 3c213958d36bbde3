#pragma once

#include <gst/gst.h>

#include <string>

#include "Player/Exception.hpp"
#include "messages/Outbox.hpp"
#include "settings/Options.hpp"

namespace nsGstVireRtspSrc {

/// What the element posts on the bus: at once, or when the transition is over whose thread says it.
class Messages {
public:
    Messages(GstElement* aElement, const Options& aOptions)
        : m_element(aElement), m_options(aOptions), m_outbox(aElement) {}

    /// Posts what was put, unless the calling thread is inside a transition.
    void send() const;
    /// Posts what was put, at the end of a transition.
    void send_after() const { m_outbox.send(); }

    /// The application message "VIRE_RTSP_SRC_MESSAGE" with the field "Error".
    void error(gint aCode) const;
    /// Only puts it, for `send`.
    void put_buffering(gint aPercent) const;
    /// In ns; -1 for a live stream.
    void duration(gint64 aDuration) const;

    /// Failures for people: what could not be done, with which server, why. On the bus, and in the log at level
    /// ERROR, where the launcher of 1.x shows them. It is the profile that says whether those after which no media
    /// comes end the pipeline.
    void warn_no_tracks(const std::string& aLocation) const;
    void warn_timed_out(const std::string& aLocation) const;
    /// `aWhat` is done to the location: "Playing", "Pausing", ...
    void warn_failed(const char* aWhat, const std::string& aLocation, const Player::Exception& aWhy) const;
    void warn_failed(const char* aWhat, const std::string& aLocation, const char* aWhy) const;
    /// What is linked to the pad of the track gave that result.
    void fail_flow(unsigned int aTrack, GstFlowReturn aResult) const;
    /// A start that is refused before the server is asked: in the log, and where the profile wants it on the bus.
    void refuse(GstResourceError aCode, const char* aText) const;

private:
    void post(GstMessage* aMessage) const;
    /// Takes the text over; `aDebug` is for the log of who reads it.
    void fail(GstMessageType aType, GQuark aDomain, gint aCode, gchar* aText, const char* aDebug) const;
    GstMessageType TypeOf(const char* aWhat) const;

    GstElement* m_element;
    const Options& m_options;
    mutable Outbox m_outbox;
};

/// Whether a server refused what it was asked for, and the session goes on.
bool IsRefusal(const Player::Exception& aWhy);

/// The location without user name and password, for people to read.
std::string DisplayedLocation(const std::string& aLocation);

}  // namespace nsGstVireRtspSrc
