#include "MediaSessions/RTSP/Dialect.hpp"

#include "Player/Report.hpp"

namespace Player::MediaSessions {

namespace {

constexpr UInt kUDPBuffer = 300000;
/// A key frame of a high-resolution camera arrives in one burst.
constexpr UInt kVideoUDPBuffer = 2 * 1024 * 1024;

}  // namespace

const Dialect& Dialect::Named(const std::string& aProfile) {
    static const Classic kClassic;
    static const Modern kModern;
    if (kModern.Name() == aProfile) { return kModern; }
    if (!aProfile.empty() && kClassic.Name() != aProfile) {
        Report(__FILE__, __LINE__, Severity::Warning, "Unknown profile \"%s\", using \"%s\"", aProfile.c_str(),
               kClassic.Name());
    }
    return kClassic;
}

UInt Classic::UDPBuffer(const std::string& /*aMediaType*/) const {
    return kUDPBuffer;
}

UInt Modern::UDPBuffer(const std::string& aMediaType) const {
    return "video" == aMediaType ? kVideoUDPBuffer : kUDPBuffer;
}

}  // namespace Player::MediaSessions
