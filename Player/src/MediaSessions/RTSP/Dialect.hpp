#pragma once

#include <optional>
#include <string>
#include <utility>

#include "MediaSessions/RTSP/Headers/Headers.hpp"
#include "MediaSessions/RTSP/Headers/RTPInfo.hpp"
#include "MediaSessions/RTSP/Headers/Transports.hpp"
#include "Player/Buffer.hpp"
#include "Player/Processor.hpp"
#include "Player/Properties.hpp"
#include "Player/Ptr.hpp"
#include "Player/Types.hpp"

namespace Player::MediaSessions {

/// What the relative URLs of a description are relative to.
struct BaseURL {
    std::string mURL;
    /// By the server; otherwise it is what was asked for.
    bool mIsNamed = true;
};

/// How a session deals with what servers do differently. Each decision on which the profiles differ is an operation
/// here, so that the session itself has one course. Without state: one object of each serves every session.
class Dialect {
public:
    Dialect() = default;
    Dialect(const Dialect&) = delete;
    Dialect& operator=(const Dialect&) = delete;
    virtual ~Dialect() = default;

    /// "modern", "classic", or empty for classic; anything else is reported and taken for classic.
    static const Dialect& Named(const std::string& aProfile);

    virtual const char* Name() const = 0;

    /// The ways for media when none are configured.
    virtual Transports DefaultTransports() const = 0;
    /// Bytes of the receive buffer of a track over UDP when none are configured.
    virtual UInt UDPBuffer(const std::string& aMediaType) const = 0;

    /// Host and port to connect to.
    virtual std::pair<std::string, std::string> Address(const std::string& aAuthority, bool aIsSecure) const = 0;
    /// Whether a host is tried at each of its addresses, of IPv6 as well, or at its first of IPv4 alone.
    virtual bool TriesAllAddresses() const = 0;
    /// Whether a URL is played within TLS.
    virtual bool IsSecure(const std::string& aURL) const = 0;

    /// Brings a description into the form in which the parser reads it.
    virtual void Prepare(Buffer& aSDP) const = 0;

    /// Turns the packets of a track into samples; null for a format that is not played.
    virtual SharedPtr<Processor, SharedObject> CreateDepacketizer(Properties& aFormat) const = 0;

    // A description's URLs.
    /// The base of what was asked for at `aRequest`.
    virtual BaseURL Base(const std::string& aRequest, const Headers& aHeaders) const = 0;
    /// Where a track with that identifier is set up.
    virtual std::string TrackURL(const BaseURL& aBase, const std::string& aId) const = 0;
    /// Where else to try after a refusal; empty for nowhere.
    virtual std::string OtherTrackURL(UInt aStatus, const BaseURL& aBase, const std::string& aId) const = 0;
    /// Where the whole presentation is controlled; empty for the URL that was played.
    virtual std::string ControlURL(const std::string& aBase, const std::string& aId) const = 0;

    // An RTP-Info header.
    /// A PLAY response without it is invalid; otherwise what is missing is learnt from the packets.
    virtual bool NeedsRTPInfo() const = 0;
    /// An entry is for the tracks whose key is that of the entry; nothing: for none.
    virtual std::optional<std::string> KeyOf(const RTPInfo::Entry& aEntry, const BaseURL& aBase) const = 0;
    /// The key of a track. `aId` is the identifier of the first track of its media type.
    virtual std::string KeyOf(const std::string& aURL, const std::string& aId) const = 0;

    /// Whether a refusal names another place for the presentation.
    virtual bool IsRedirection(UInt aStatus) const = 0;
    /// Whether a server that offers multicast refuses what was asked for; otherwise its offer is taken for that.
    virtual bool RefusesMulticast() const = 0;
    /// Whether the session is kept alive while no request goes to the server.
    virtual bool KeepsAlive() const = 0;
    /// The distance in numbers between the last packet before a resume and the first one after it.
    virtual UInt StepOverPause() const = 0;
    /// A packet numbered within the play range is taken when its time is at most this many seconds before the range.
    virtual UInt SecondsBeforeStart() const = 0;
    /// Whether interleaved media that come before the answer to the first PLAY, or to that of a resume, belong to it.
    virtual bool KeepsEarlyMedia() const = 0;
    /// Whether that refusal of a PAUSE says that the server does not play any more, so that there is nothing to pause.
    virtual bool HasStopped(UInt aStatus) const = 0;
    /// The longest interleaved frame; one that is longer ends the process.
    virtual UInt LargestFrame() const = 0;
    /// Whether bytes that are neither frame nor line are stepped over.
    virtual bool Resynchronizes() const = 0;
    /// Whether a response without a number may be the one that is awaited.
    virtual bool TakesUnnumbered() const = 0;
    /// Whether headers may go on in further lines, and blanks around names and values do not count.
    virtual bool UnfoldsHeaders() const = 0;
    /// Whether the sender of media is who the server says it is; otherwise it is whoever sends first.
    virtual bool TrustsSSRC() const = 0;
    /// Whether a server that announces the end of the connection with its description is believed at once.
    virtual bool HeedsClose() const = 0;
};

/// The letter of the dialogue that this client has always spoken.
class Classic final : public Dialect {
public:
    const char* Name() const override { return "classic"; }
    Transports DefaultTransports() const override { return {true, false}; }
    UInt UDPBuffer(const std::string& aMediaType) const override;
    std::pair<std::string, std::string> Address(const std::string& aAuthority, bool aIsSecure) const override;
    bool TriesAllAddresses() const override { return false; }
    /// Reports that "rtsps" is not what it says.
    bool IsSecure(const std::string& aURL) const override;
    void Prepare(Buffer& /*aSDP*/) const override {}
    SharedPtr<Processor, SharedObject> CreateDepacketizer(Properties& aFormat) const override;
    /// The base as the description or its headers give it.
    BaseURL Base(const std::string& aRequest, const Headers& aHeaders) const override;
    /// Base and identifier are joined as they stand: a Content-Base ends in "/".
    std::string TrackURL(const BaseURL& aBase, const std::string& aId) const override { return aBase.mURL + aId; }
    std::string OtherTrackURL(UInt /*aStatus*/, const BaseURL& /*aBase*/, const std::string& /*aId*/) const override {
        return std::string();
    }
    std::string ControlURL(const std::string& /*aBase*/, const std::string& /*aId*/) const override {
        return std::string();
    }
    bool NeedsRTPInfo() const override { return true; }
    /// By the name at the end of the entry's URL. The first described track of a type speaks for all of that type.
    std::optional<std::string> KeyOf(const RTPInfo::Entry& aEntry, const BaseURL& /*aBase*/) const override {
        return aEntry.mName;
    }
    std::string KeyOf(const std::string& /*aURL*/, const std::string& aId) const override { return aId; }
    bool IsRedirection(UInt /*aStatus*/) const override { return false; }
    bool RefusesMulticast() const override { return false; }
    bool KeepsAlive() const override { return false; }
    UInt StepOverPause() const override { return 0; }
    UInt SecondsBeforeStart() const override { return 0; }
    bool KeepsEarlyMedia() const override { return false; }
    bool HasStopped(UInt /*aStatus*/) const override { return false; }
    UInt LargestFrame() const override { return 1500; }
    bool Resynchronizes() const override { return false; }
    bool TakesUnnumbered() const override { return false; }
    bool UnfoldsHeaders() const override { return false; }
    bool TrustsSSRC() const override { return true; }
    bool HeedsClose() const override { return false; }
};

/// What makes today's servers play.
class Modern final : public Dialect {
public:
    const char* Name() const override { return "modern"; }
    Transports DefaultTransports() const override { return {true, true}; }
    UInt UDPBuffer(const std::string& aMediaType) const override;
    std::pair<std::string, std::string> Address(const std::string& aAuthority, bool aIsSecure) const override;
    bool TriesAllAddresses() const override { return true; }
    bool IsSecure(const std::string& aURL) const override;
    void Prepare(Buffer& aSDP) const override;
    SharedPtr<Processor, SharedObject> CreateDepacketizer(Properties& aFormat) const override;
    BaseURL Base(const std::string& aRequest, const Headers& aHeaders) const override;
    /// Below what was asked for where the server names no base, else as the base has it.
    std::string TrackURL(const BaseURL& aBase, const std::string& aId) const override;
    /// Many servers join base and identifier by a slash, whatever the base looks like.
    std::string OtherTrackURL(UInt aStatus, const BaseURL& aBase, const std::string& aId) const override;
    std::string ControlURL(const std::string& aBase, const std::string& aId) const override;
    bool NeedsRTPInfo() const override { return false; }
    /// By path and query: the host may have another name on the server's side of the network.
    std::optional<std::string> KeyOf(const RTPInfo::Entry& aEntry, const BaseURL& aBase) const override;
    std::string KeyOf(const std::string& aURL, const std::string& aId) const override;
    bool IsRedirection(UInt aStatus) const override;
    bool RefusesMulticast() const override { return true; }
    bool KeepsAlive() const override { return true; }
    UInt StepOverPause() const override { return 1; }
    UInt SecondsBeforeStart() const override { return 1; }
    bool KeepsEarlyMedia() const override { return true; }
    /// The end has been sent, and may still be on its way through the queues here.
    bool HasStopped(UInt aStatus) const override { return 0x455 == aStatus; }
    UInt LargestFrame() const override { return 65535; }
    bool Resynchronizes() const override { return true; }
    bool TakesUnnumbered() const override { return true; }
    bool UnfoldsHeaders() const override { return true; }
    /// Cameras name one that they do not use, or write it in decimal digits.
    bool TrustsSSRC() const override { return false; }
    bool HeedsClose() const override { return true; }
};

}  // namespace Player::MediaSessions
