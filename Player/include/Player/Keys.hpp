#pragma once

/// The keys of settings and of descriptions, each with its value.

namespace Player {

/// Keys of `MediaHandler::SetConfigParam`. An absent or empty value means the default.
namespace Setting {

constexpr char kUseLocalIP[] = "RTSP:UseLocalIP";                    ///< local address; the system's choice
constexpr char kTimeOutAfter[] = "RTSP:TimeOutAfter";                ///< seconds to wait for the server, not 0; 10
constexpr char kTimeOutRTPAfter[] = "RTSP:TimeOutRTPAfter";          ///< seconds without media that end a track; 20
constexpr char kTargetRTPBuffer[] = "RTSP:TargetRTPBuffer";          ///< seconds of media to gather before playing; 3
constexpr char kUseUDPPortsFrom[] = "RTSP:UseUDPPortsFrom";          ///< first local UDP port; 49152
constexpr char kUseUDPPortsTo[] = "RTSP:UseUDPPortsTo";              ///< end of the local UDP ports; 65536
constexpr char kUseInterleavedRTP[] = "RTSP:UseInterleavedRTP";      ///< not 0: media over the RTSP connection; 0
constexpr char kUseProxy[] = "RTSP:UseProxy";                        ///< HOST or HOST:PORT of an RTSP proxy; none
constexpr char kSendProxyAuth[] = "RTSP:SendProxyAuth";              ///< value of Proxy-Authorization; not sent
constexpr char kSendNetworkType[] = "RTSP:SendNetworkType";          ///< value of X-Network-Type; not sent
constexpr char kSendReferrer[] = "RTSP:SendReferrer";                ///< value of Referrer; not sent
constexpr char kSendWAPProfile[] = "RTSP:SendWAPProfile";            ///< value of X-WAP-Profile; not sent
constexpr char kUseUserAgentNameStr[] = "RTSP:UseUserAgentNameStr";  ///< product in User-Agent; QuenraPlayer
constexpr char kUseUserAgentVersionStr[] = "RTSP:UseUserAgentVersionStr";  ///< version in User-Agent; x.x
constexpr char kUseDeviceStr[] = "RTSP:UseDeviceStr";                      ///< device in User-Agent; Generic
constexpr char kProfile[] = "RTSP:Profile";                                ///< "classic" or "modern"; classic
constexpr char kUserName[] = "RTSP:UserName";                              ///< for servers that ask; none
constexpr char kPassword[] = "RTSP:Password";                              ///< for servers that ask; none
constexpr char kTransports[] = "RTSP:Transports";                          ///< ways for media to come in; the profile's
constexpr char kUDPBuffer[] = "RTSP:UDPBuffer";      ///< bytes of a UDP track's receive buffer; the profile's
constexpr char kUDPPatience[] = "RTSP:UDPPatience";  ///< milliseconds for the first media over UDP before TCP; 3000
constexpr char kTLSAuthorities[] = "RTSP:TLSAuthorities";  ///< file of certificates for rtsps, PEM; the system's
constexpr char kQueueLimit[] =
    "RTSP:QueueLimit";  ///< MiB of packets that wait in all tracks; 1024, or 256 with 32-bit addresses

}  // namespace Setting

/// Keys of `MediaPlayer::GetCommonInfo` and `GetTrackInfo`. All values are texts.
namespace Key {

// Of the session.
constexpr char kUserName[] = "UserName";                    ///< of the origin
constexpr char kSessionId[] = "SessionId";                  ///< of the origin
constexpr char kSessionVersion[] = "SessionVersion";        ///< of the origin
constexpr char kOriginNetworkType[] = "OriginNetworkType";  ///< of the origin, "IN"
constexpr char kOriginAddressType[] = "OriginAddressType";  ///< of the origin, "IP4"
constexpr char kOriginAddress[] = "OriginAddress";          ///< of the origin
constexpr char kSessionName[] = "SessionName";              ///< for people

// Of a track.
constexpr char kMediaType[] = "MediaType";      ///< "video", "audio"
constexpr char kPort[] = "Port";                ///< as described; set-up decides
constexpr char kTransport[] = "Transport";      ///< "Sample" for a track that can be played, else as described
constexpr char kPayloadType[] = "PayloadType";  ///< 0 to 127
constexpr char kFormat[] = "Format";            ///< "H264"
constexpr char kTimeRes[] = "TimeRes";          ///< clock rate in Hz
constexpr char kEncParams[] = "EncParams";      ///< channels, of audio
constexpr char kFmtParams[] = "FmtParams";      ///< the format's own parameters, "a=1;b=2"
constexpr char kWidth[] = "Width";              ///< of the picture, when described
constexpr char kHeight[] = "Height";            ///< of the picture, when described
constexpr char kId[] = "Id";                    ///< the control attribute

// Of either.
constexpr char kConnectionNetworkType[] = "ConnectionNetworkType";  ///< "IN"
constexpr char kConnectionAddressType[] = "ConnectionAddressType";  ///< "IP4"
constexpr char kConnectionAddress[] = "ConnectionAddress";          ///< where media goes
constexpr char kStartTime[] = "StartTime";                          ///< in seconds
constexpr char kEndTime[] = "EndTime";                              ///< in seconds; empty without an end
constexpr char kURL[] = "URL";                                      ///< to set up the track; the base of all tracks

}  // namespace Key

}  // namespace Player
