#pragma once

#include <gst/gst.h>

#include <string>

#include "Outbox.hpp"
#include "Player/Exception.hpp"

namespace nsGstVireRtspSrc {

/// What the element posts on the bus: at once, or when the transition is over whose thread says it.
class Messages {
public:
    explicit Messages(GstElement* aElement) : m_element(aElement), m_outbox(aElement) {}

    /// Posts what was put, unless the calling thread is inside a transition.
    void send() const;
    /// The same at the end of a transition.
    void send_after() const { m_outbox.send(); }

    /// The application message "VIRE_RTSP_SRC_MESSAGE" with the field "Error".
    void error(gint aCode) const;
    /// Only puts it, for `send`.
    void put_buffering(gint aPercent) const;
    /// In ns; -1 for a live stream.
    void duration(gint64 aDuration) const;

    /// Warnings for people: what could not be done, with which server, why. Never errors: those would end
    /// pipelines that the application message is meant to steer.
    void warn_no_tracks(const std::string& aLocation) const;
    void warn_timed_out(const std::string& aLocation) const;
    /// `aWhat` is done to the location: "Playing", "Pausing", ...
    void warn_failed(const char* aWhat, const std::string& aLocation, const Player::Exception& aWhy) const;
    void warn_failed(const char* aWhat, const std::string& aLocation, const char* aWhy) const;

private:
    void post(GstMessage* aMessage) const;
    /// Takes the text over; `aDebug` is for the log of who reads it.
    void warn(GQuark aDomain, gint aCode, gchar* aText, const char* aDebug) const;

    GstElement* m_element;
    mutable Outbox m_outbox;
};

/// Whether a server refused what it was asked for, and the session goes on.
bool IsRefusal(const Player::Exception& aWhy);

/// The location without user name and password, for people to read.
std::string DisplayedLocation(const std::string& aLocation);

}  // namespace nsGstVireRtspSrc
