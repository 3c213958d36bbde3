#include "MediaSessions/RTSP/Dialect.hpp"

#include <algorithm>
#include <iterator>

#include "MediaSessions/RTSP/Headers/URLResolution.hpp"
#include "Player/Report.hpp"
#include "Player/String.hpp"
#include "Player/URL.hpp"
#include "Processors/RTP/Factories.hpp"
#include "SDP/Normalized.hpp"

namespace Player::MediaSessions {

namespace {

constexpr UInt kUDPBuffer = 300000;
/// A key frame of a high-resolution camera arrives in one burst.
constexpr UInt kVideoUDPBuffer = 2 * 1024 * 1024;

constexpr char kDefaultPort[] = "554";
constexpr char kDefaultSecurePort[] = "322";
constexpr char kSecure[] = "rtsps";

/// What servers say to a URL that they do not know; nothing, if they are not prepared for that.
constexpr UInt kWrongURL[] = {0, 0x400, 0x404, 0x451, 0x455, 0x503};
constexpr UInt kRedirections[] = {0x301, 0x302, 0x303, 0x307, 0x308};

template <std::size_t Count>
bool IsAmong(UInt aStatus, const UInt (&aStatuses)[Count]) {
    return std::end(aStatuses) != std::find(std::begin(aStatuses), std::end(aStatuses), aStatus);
}

/// Whether base and identifier are joined by a slash first. A server that names no base takes what was asked for as the
/// folder of its tracks, mostly, though by RFC 3986 it is a file beside them.
bool JoinsBySlash(const BaseURL& aBase, const std::string& aId) {
    const std::string lId = Trimmed(aId);
    const bool lIsBelow = !lId.empty() && "*" != lId && '/' != lId[0] && '?' != lId[0] && !URL::IsAbsolute(lId);
    return lIsBelow && !aBase.mIsNamed && !aBase.mURL.empty() && '/' != aBase.mURL.back();
}

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

std::pair<std::string, std::string> Classic::Address(const std::string& aAuthority, bool /*aIsSecure*/) const {
    return URL::Address(aAuthority);
}

std::pair<std::string, std::string> Modern::Address(const std::string& aAuthority, bool aIsSecure) const {
    return URL::HostAndPort(aAuthority, aIsSecure ? kDefaultSecurePort : kDefaultPort);
}

bool Classic::IsSecure(const std::string& aURL) const {
    if (kSecure == URL::Scheme(aURL)) {
        Report(__FILE__, __LINE__, Severity::Warning, "The profile \"%s\" knows no %s: the connection is not secured",
               Name(), kSecure);
    }
    return false;
}

bool Modern::IsSecure(const std::string& aURL) const {
    return kSecure == URL::Scheme(aURL);
}

void Modern::Prepare(Buffer& aSDP) const {
    std::string lText = NormalizedSDP(std::string(aSDP.Begin(), aSDP.End()));
    // Some cameras describe nothing but their tracks.
    if (0 == lText.compare(0, 2, "m=")) { lText.insert(0, "v=0\r\n"); }
    aSDP.Assign(reinterpret_cast<const Byte*>(lText.data()), static_cast<UInt>(lText.size()));
}

SharedPtr<Processor, SharedObject> Classic::CreateDepacketizer(Properties& aFormat) const {
    return Processors::RTP::CreateDepacketizer(aFormat);
}

SharedPtr<Processor, SharedObject> Modern::CreateDepacketizer(Properties& aFormat) const {
    return Processors::RTP::CreateTolerantDepacketizer(aFormat);
}

BaseURL Classic::Base(const std::string& aRequest, const Headers& aHeaders) const {
    for (const char* lName : {"Content-Base", "Content-Location"}) {
        if (0 != aHeaders.count(lName)) { return {HeaderValue(aHeaders, lName), true}; }
    }
    return {aRequest, false};
}

BaseURL Modern::Base(const std::string& aRequest, const Headers& aHeaders) const {
    const std::string lBase = HeaderValue(aHeaders, "Content-Base");
    const std::string lLocation = HeaderValue(aHeaders, "Content-Location");
    const bool lIsNamed = !Trimmed(lBase).empty() || !Trimmed(lLocation).empty();
    return {URL::WithoutUserInfo(URL::BaseOf(aRequest, lBase, lLocation)), lIsNamed};
}

std::string Modern::TrackURL(const BaseURL& aBase, const std::string& aId) const {
    return JoinsBySlash(aBase, aId) ? URL::Append(aBase.mURL, aId) : URL::Resolve(aBase.mURL, aId);
}

std::string Modern::OtherTrackURL(UInt aStatus, const BaseURL& aBase, const std::string& aId) const {
    const std::string lFirst = TrackURL(aBase, aId);
    if (!IsAmong(aStatus, kWrongURL) || aBase.mURL == lFirst || URL::IsAbsolute(aId)) { return std::string(); }
    const std::string lOther = JoinsBySlash(aBase, aId) ? URL::Resolve(aBase.mURL, aId) : URL::Append(aBase.mURL, aId);
    return lFirst == lOther ? std::string() : lOther;
}

std::string Modern::ControlURL(const std::string& aBase, const std::string& aId) const {
    return URL::Resolve(aBase, aId);
}

std::optional<std::string> Modern::KeyOf(const RTPInfo::Entry& aEntry, const BaseURL& aBase) const {
    if (aEntry.mURL.empty()) { return std::nullopt; }
    return URL::PathAndQuery(TrackURL(aBase, aEntry.mURL));
}

std::string Modern::KeyOf(const std::string& aURL, const std::string& /*aId*/) const {
    return URL::PathAndQuery(aURL);
}

bool Modern::IsRedirection(UInt aStatus) const {
    return IsAmong(aStatus, kRedirections);
}

}  // namespace Player::MediaSessions
