#include "support/MoodyServer.hpp"

#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <stdexcept>

#include "support/Listener.hpp"
#include "support/Packets.hpp"

namespace TestSupport {

namespace {

using Frames = std::vector<Connection::Frame>;

/// Longer than any client waits.
constexpr std::chrono::seconds kPatience(60);
/// One packet per track each; faster than it is played.
constexpr std::chrono::milliseconds kPacketInterval(2);

constexpr std::uint32_t kSsrc = 7;
constexpr std::uint32_t kFrameRate = 25;
constexpr std::uint32_t kClockRates[] = {90000, 44100};

bool EndsWith(const std::string& aText, const std::string& aEnd) {
    return aText.size() >= aEnd.size() && 0 == aText.compare(aText.size() - aEnd.size(), aEnd.size(), aEnd);
}

std::string Description(const std::string& aURL) {
    const std::string lBody = std::string("v=0\r\n") + (EndsWith(aURL, "live") ? "" : "a=range:npt=0-3600\r\n") +
                              "m=video 0 RTP/AVP 96\r\na=rtpmap:96 H264/90000\r\na=control:video\r\n"
                              "m=audio 0 RTP/AVP 97\r\na=rtpmap:97 MP4A-LATM/44100\r\na=control:audio\r\n";
    return "Content-Base: " + aURL + "/\r\nContent-Length: " + std::to_string(lBody.size()) + "\r\n\r\n" + lBody;
}

/// The client's first port in "RTP/AVP;unicast;client_port=50000-50001"; 0 for none.
unsigned ClientPort(const std::string& aTransport) {
    static const std::string kName = "client_port=";
    const std::size_t lFound = aTransport.find(kName);
    return std::string::npos == lFound
               ? 0
               : static_cast<unsigned>(std::strtoul(aTransport.c_str() + lFound + kName.size(), nullptr, 10));
}

std::uint32_t StampOf(unsigned aTrack, unsigned aNumber) {
    return aNumber * (kClockRates[aTrack] / kFrameRate);
}

/// The track's entry of the RTP-Info.
std::string Info(const std::string& aURL, unsigned aTrack, unsigned aNumber) {
    return "url=" + aURL + ";seq=" + std::to_string(aNumber & 0xFFFF) +
           ";rtptime=" + std::to_string(StampOf(aTrack, aNumber));
}

/// What stands after the blanks that follow the colon.
std::string ValueOf(const std::string& aLine) {
    const std::size_t lStart = aLine.find_first_not_of(" ", aLine.find(':') + 1);
    return aLine.substr(lStart, aLine.find_last_not_of("\r\n") + 1 - lStart);
}

}  // namespace

MoodyServer::MoodyServer(Moods aMoods)
    : mMoods(std::move(aMoods)), mPatience(kPatience), mListener(ListenOnLoopback(mPort)), mMedia(kTracks) {
    for (UdpPeer& lMedia : mMedia) {
        // To itself until a client says where it listens.
        lMedia.SetClientPort(lMedia.RtpPort());
    }
    mServer = std::thread([this] { Serve(); });
    mSender = std::thread([this] { SendMedia(); });
}

MoodyServer::~MoodyServer() {
    mStopped = true;
    mPatience.Stop();
    shutdown(mListener, SHUT_RDWR);
    mServer.join();
    mSender.join();
    close(mListener);
}

std::string MoodyServer::URL(const std::string& aPath) const {
    return "rtsp://127.0.0.1:" + std::to_string(mPort) + "/" + aPath;
}

void MoodyServer::Serve() {
    while (!mStopped) {
        try {
            auto lClient = std::make_unique<Connection>(mListener, mPatience);
            {
                const std::lock_guard<std::mutex> lLock(mSending);
                mClient = std::move(lClient);
            }
            ServeClient();
        } catch (const std::runtime_error&) {
            // The client has left, or none has come: the next.
        }
        mPlaying = false;
        const std::lock_guard<std::mutex> lLock(mSending);
        mClient.reset();
    }
}

void MoodyServer::ServeClient() {
    Request lRequest;
    while (ReadRequest(lRequest) && Answer(lRequest)) {}
}

bool MoodyServer::ReadRequest(Request& aRequest) {
    aRequest = Request();
    Frames lFrames;
    const std::string lFirst = mClient->ReadLine(lFrames);
    const std::size_t lBlank = lFirst.find(' ');
    if (std::string::npos == lBlank) { return false; }
    aRequest.mMethod = lFirst.substr(0, lBlank);
    aRequest.mURL = lFirst.substr(lBlank + 1, lFirst.find(' ', lBlank + 1) - lBlank - 1);
    for (std::string lLine = mClient->ReadLine(lFrames); "\r\n" != lLine; lLine = mClient->ReadLine(lFrames)) {
        if (0 == lLine.compare(0, 5, "CSeq:")) { aRequest.mCSeq = ValueOf(lLine); }
        if (0 == lLine.compare(0, 10, "Transport:")) { aRequest.mTransport = ValueOf(lLine); }
    }
    return true;
}

bool MoodyServer::Answer(const Request& aRequest) {
    ++mRequests;
    const Mood lMood = mMoods ? mMoods(aRequest.mMethod) : Mood::kFine;
    Frames lFrames;
    switch (lMood) {
        case Mood::kStall: mClient->ReadEnd(lFrames); return false;
        case Mood::kClose: return false;
        case Mood::kReset: mClient->Reset(); return false;
        case Mood::kHalf: {
            const std::string lAnswer = GoodAnswer(aRequest);
            Send(lAnswer.substr(0, lAnswer.size() / 2));
            return false;
        }
        case Mood::kRefuse:
            Send("RTSP/1.0 500 Internal Server Error\r\nCSeq: " + aRequest.mCSeq + "\r\n\r\n");
            return true;
        case Mood::kRubbish: Send(std::string("\0\xff$\x07\x02no\r\n: :\r\n\r\n", 17)); return true;
        case Mood::kFine:
        case Mood::kMute:
        case Mood::kBye: Send(GoodAnswer(aRequest)); break;
    }
    if (Mood::kBye == lMood) { SayGoodbye(); }
    mPlaying = Mood::kFine == lMood && ("PLAY" == aRequest.mMethod || (mPlaying && "PAUSE" != aRequest.mMethod));
    return true;
}

void MoodyServer::Send(const std::string& aText) {
    const std::lock_guard<std::mutex> lLock(mSending);
    mClient->Send(aText);
}

std::string MoodyServer::GoodAnswer(const Request& aRequest) {
    const std::string lHead = "RTSP/1.0 200 OK\r\nCSeq: " + aRequest.mCSeq + "\r\n";
    if ("DESCRIBE" == aRequest.mMethod) { return lHead + Description(aRequest.mURL); }
    if ("SETUP" == aRequest.mMethod) { return lHead + "Session: 5\r\n" + SetUp(aRequest) + "\r\n"; }
    if ("PLAY" == aRequest.mMethod) {
        const unsigned lNumber = mNumber;
        return lHead + "Session: 5\r\nRTP-Info: " + Info(aRequest.mURL + "/video", 0, lNumber) + "," +
               Info(aRequest.mURL + "/audio", 1, lNumber) + "\r\n\r\n";
    }
    return lHead + "Session: 5\r\n\r\n";
}

std::string MoodyServer::SetUp(const Request& aRequest) {
    mInterleaved = std::string::npos != aRequest.mTransport.find("TCP");
    if (mInterleaved) { return "Transport: " + aRequest.mTransport + "\r\n"; }
    UdpPeer& lMedia = mMedia[EndsWith(aRequest.mURL, "audio") ? 1 : 0];
    const unsigned lPort = ClientPort(aRequest.mTransport);
    if (lPort > 1) { lMedia.SetClientPort(lPort); }
    return "Transport: " + aRequest.mTransport + ";server_port=" + lMedia.Ports() + "\r\n";
}

void MoodyServer::SendMedia() {
    while (!mStopped) {
        if (mPlaying) { SendPackets(); }
        std::this_thread::sleep_for(kPacketInterval);
    }
}

void MoodyServer::SendPackets() {
    const unsigned lNumber = mNumber++;
    const auto lLast = static_cast<std::uint8_t>(lNumber);
    const Bytes lPayloads[] = {{0x65, lLast}, {0x02, 0xaa, lLast}};
    for (unsigned lTrack = 0; lTrack < kTracks; ++lTrack) {
        RtpPacket lPacket;
        lPacket.Type(96 + lTrack)
            .Ssrc(kSsrc + lTrack)
            .Seq(lNumber & 0xFFFF)
            .Timestamp(StampOf(lTrack, lNumber))
            .Marker();
        SendPacket(lTrack, lPacket.Payload(lPayloads[lTrack]).Build());
    }
}

void MoodyServer::SendPacket(unsigned aTrack, const Bytes& aPacket) {
    if (!mInterleaved) { return mMedia[aTrack].SendRtp(aPacket); }
    const std::lock_guard<std::mutex> lLock(mSending);
    try {
        if (mClient && mPlaying) { mClient->Send(AsText(InterleavedFrame(2 * aTrack, aPacket))); }
    } catch (const std::runtime_error&) {
        // The client has left; whoever reads from it notices.
    }
}

void MoodyServer::SayGoodbye() {
    for (unsigned lTrack = 0; lTrack < kTracks; ++lTrack) {
        const Bytes lGoodbye = RtcpCompound(kSsrc + lTrack).RR().BYE().Build();
        if (mInterleaved) {
            Send(AsText(InterleavedFrame(2 * lTrack + 1, lGoodbye)));
        } else {
            mMedia[lTrack].SendRtcp(lGoodbye);
        }
    }
}

}  // namespace TestSupport
