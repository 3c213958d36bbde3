#pragma once

#include <gst/gst.h>

#include <string>

#include "Player/Exception.hpp"

namespace nsGstVireRtspSrc {

/// What the element posts on the bus.
class Messages {
public:
    explicit Messages(GstElement* aElement) : m_element(aElement) {}

    /// The application message "VIRE_RTSP_SRC_MESSAGE" with the field "Error".
    void error(gint aCode) const;
    void buffering(gint aPercent) const;
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
    GstElement* m_element;
};

/// The location without user name and password, for people to read.
std::string DisplayedLocation(const std::string& aLocation);

}  // namespace nsGstVireRtspSrc
