// An RTSP server that sends one H.264 track at a given rate to whoever asks: packets of 1400 bytes for as long as the
// client stays. It does no more than the comparison needs.
//
//     blast_server CLIP.h264 MBIT_PER_S
//
// Prints its URL, and for each line of its standard input how many packets it has sent; ends with its input.
//
// Each access unit is the clip's first picture (an IDR slice), filled up with cabac_zero_words to 22 packets, every
// 30th to 100 packets, and sent in one go, as cameras do; the rate says how many units there are in a second. A unit
// ends with the time at which its last packet was sent: 8 bytes of nanoseconds, host byte order, CLOCK_MONOTONIC.

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace {

using Bytes = std::vector<std::uint8_t>;
using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr unsigned kPacketSize = 1400;
constexpr unsigned kHeaderSize = 12;
constexpr unsigned kFragmentHeader = 2;
constexpr std::size_t kBody = kPacketSize - kHeaderSize - kFragmentHeader;
constexpr unsigned kPackets = 22;
constexpr unsigned kPacketsOfKey = 100;
constexpr unsigned kUnitsPerKey = 30;
constexpr double kPacketsPerUnit = (kPackets * (kUnitsPerKey - 1.0) + kPacketsOfKey) / kUnitsPerKey;
/// Before a unit is due, for which a sleep is precise enough.
constexpr milliseconds kShortWait(20);
constexpr std::uint32_t kSsrc = 0x1A2B3C4D;

Bytes ReadFile(const char* aPath) {
    std::ifstream lFile(aPath, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(lFile), {});
}

std::vector<Bytes> SplitAnnexB(const Bytes& aData) {
    const std::uint8_t kStart[] = {0, 0, 1};
    std::vector<Bytes> lUnits;
    auto lAt = std::search(aData.begin(), aData.end(), kStart, kStart + 3);
    while (lAt != aData.end()) {
        const auto lNext = std::search(lAt + 3, aData.end(), kStart, kStart + 3);
        Bytes lUnit(lAt + 3, lNext);
        while (!lUnit.empty() && 0 == lUnit.back()) {
            lUnit.pop_back();
        }
        lUnits.push_back(lUnit);
        lAt = lNext;
    }
    return lUnits;
}

const Bytes& FirstOfType(const std::vector<Bytes>& aUnits, unsigned aType) {
    for (const Bytes& lUnit : aUnits) {
        if (!lUnit.empty() && (lUnit[0] & 0x1FU) == aType) { return lUnit; }
    }
    throw std::runtime_error("the clip lacks a parameter set or an IDR picture");
}

std::string Base64(const Bytes& aData) {
    const char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string lText;
    for (std::size_t i = 0; i < aData.size(); i += 3) {
        unsigned lGroup = 0;
        for (std::size_t k = 0; k < 3; ++k) {
            lGroup = lGroup << 8 | (i + k < aData.size() ? aData[i + k] : 0U);
        }
        for (std::size_t k = 0; k < 4; ++k) {
            lText += i + k > aData.size() ? '=' : kAlphabet[lGroup >> (18 - 6 * k) & 63];
        }
    }
    return lText;
}

struct Stream {
    Bytes mSps;
    Bytes mPps;
    Bytes mUnit;
    Bytes mKeyUnit;
    double mUnitsPerSecond;
};

std::atomic<std::uint64_t> gPackets{0};

/// Of exactly so many packets; its header travels in those of the fragments.
Bytes FilledUp(Bytes aUnit, unsigned aPackets) {
    while (aUnit.size() < 1 + aPackets * kBody) {
        aUnit.insert(aUnit.end(), {0, 0, 3});
    }
    aUnit.resize(1 + aPackets * kBody);
    return aUnit;
}

Stream LoadStream(const char* aPath, double aMegabits) {
    const std::vector<Bytes> lUnits = SplitAnnexB(ReadFile(aPath));
    const Bytes lPicture = FirstOfType(lUnits, 5);
    return {FirstOfType(lUnits, 7), FirstOfType(lUnits, 8), FilledUp(lPicture, kPackets),
            FilledUp(lPicture, kPacketsOfKey), aMegabits * 1e6 / 8 / kPacketSize / kPacketsPerUnit};
}

/// Where media goes: a connected UDP socket, or frames on the RTSP connection.
class Sender {
public:
    Sender(int aSocket, bool aInterleaved) : mSocket(aSocket), mInterleaved(aInterleaved) {}

    void Send(const Bytes& aPacket) {
        ++gPackets;
        if (!mInterleaved) {
            // A client that is gone makes this fail; the control connection shows it.
            static_cast<void>(::send(mSocket, aPacket.data(), aPacket.size(), MSG_NOSIGNAL));
            return;
        }
        const std::uint8_t kHead[] = {'$', 0, static_cast<std::uint8_t>(aPacket.size() >> 8),
                                      static_cast<std::uint8_t>(aPacket.size())};
        mHeld.insert(mHeld.end(), kHead, kHead + sizeof(kHead));
        mHeld.insert(mHeld.end(), aPacket.begin(), aPacket.end());
    }
    /// False when the client is gone.
    bool Flush() {
        std::size_t lAt = 0;
        while (lAt < mHeld.size()) {
            const ssize_t lSent = ::send(mSocket, mHeld.data() + lAt, mHeld.size() - lAt, MSG_NOSIGNAL);
            if (lSent <= 0) { return false; }
            lAt += static_cast<std::size_t>(lSent);
        }
        mHeld.clear();
        return true;
    }

private:
    int mSocket;
    bool mInterleaved;
    Bytes mHeld;
};

/// The bytes of a packet of the unit.
Bytes Packet(const Bytes& aUnit, std::size_t aIdx, std::uint16_t aSeq, std::uint32_t aTime) {
    const std::size_t lFrom = 1 + aIdx * kBody;
    const bool lLast = aUnit.size() == lFrom + kBody;
    Bytes lPacket = {0x80, static_cast<std::uint8_t>(lLast ? 0xE0 : 0x60), static_cast<std::uint8_t>(aSeq >> 8),
                     static_cast<std::uint8_t>(aSeq)};
    for (const std::uint32_t lWord : {aTime, kSsrc}) {
        for (int lShift = 24; lShift >= 0; lShift -= 8) {
            lPacket.push_back(static_cast<std::uint8_t>(lWord >> lShift));
        }
    }
    lPacket.push_back(static_cast<std::uint8_t>((aUnit[0] & 0x60) | 28));
    lPacket.push_back(static_cast<std::uint8_t>((0 == aIdx ? 0x80 : 0) | (lLast ? 0x40 : 0) | 5));
    const auto lBegin = aUnit.begin() + static_cast<std::ptrdiff_t>(lFrom);
    lPacket.insert(lPacket.end(), lBegin, lBegin + static_cast<std::ptrdiff_t>(kBody));
    if (lLast) {
        const std::int64_t lNow = Clock::now().time_since_epoch().count();
        std::memcpy(lPacket.data() + lPacket.size() - sizeof(lNow), &lNow, sizeof(lNow));
    }
    return lPacket;
}

/// Sends until the client has another request or leaves: `aIsWanted` tells, after so long or when anything came.
template <typename IsWanted>
void Blast(const Stream& aStream, Sender aSender, std::uint16_t& aSeq, IsWanted aIsWanted) {
    const auto lStart = Clock::now();
    for (std::uint64_t lIdx = 0;; ++lIdx) {
        const double lSince = static_cast<double>(lIdx) / aStream.mUnitsPerSecond;
        const auto lTime = static_cast<std::uint32_t>(static_cast<std::uint64_t>(lSince * 90000));
        const Bytes& lUnit = 0 == lIdx % kUnitsPerKey ? aStream.mKeyUnit : aStream.mUnit;
        const auto lDue = lStart + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(lSince));
        // Between units that come seldom requests are answered at once.
        for (auto lLeft = lDue - Clock::now(); lLeft > kShortWait; lLeft = lDue - Clock::now()) {
            if (!aIsWanted(std::chrono::duration_cast<milliseconds>(lLeft - kShortWait))) { return; }
        }
        std::this_thread::sleep_until(lDue);
        for (std::size_t i = 0; i < (lUnit.size() - 1) / kBody; ++i) {
            aSender.Send(Packet(lUnit, i, aSeq++, lTime));
        }
        if (!aSender.Flush() || !aIsWanted(milliseconds::zero())) { return; }
    }
}

std::string HeaderOf(const std::string& aRequest, const char* aName) {
    const std::size_t lAt = aRequest.find(std::string("\r\n") + aName + ": ");
    if (std::string::npos == lAt) { return std::string(); }
    const std::size_t lFrom = lAt + 4 + std::strlen(aName);
    return aRequest.substr(lFrom, aRequest.find("\r\n", lFrom) - lFrom);
}

class Client {
public:
    Client(int aControl, const Stream& aStream, const std::string& aURL)
        : mControl(aControl), mStream(aStream), mURL(aURL) {}
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;
    ~Client() {
        ::close(mMedia);
        ::close(mControl);
    }

    void Serve() {
        std::string lRequest;
        while (Receive(lRequest)) {
            const std::string lMethod = lRequest.substr(0, lRequest.find(' '));
            if ("DESCRIBE" == lMethod) {
                Answer(lRequest, "Content-Base: " + mURL + "/\r\nContent-Type: application/sdp\r\n", Description());
            } else if ("SETUP" == lMethod) {
                Answer(lRequest, "Session: 1\r\nTransport: " + SetUp(HeaderOf(lRequest, "Transport")) + "\r\n", "");
            } else if ("PLAY" == lMethod) {
                Answer(lRequest, PlayHeaders(), "");
                Blast(mStream, Sender(mInterleaved ? mControl : mMedia, mInterleaved), mSeq,
                      [this](milliseconds aWait) {
                          return !HasRequest() && (!HasInput(aWait) || (Read() && !HasRequest()));
                      });
            } else {
                Answer(lRequest, "Public: DESCRIBE, SETUP, PLAY, TEARDOWN\r\n", "");
            }
        }
    }

private:
    bool HasInput(milliseconds aWait) const {
        pollfd lPoll{mControl, POLLIN, 0};
        return 0 < ::poll(&lPoll, 1, static_cast<int>(aWait.count()));
    }

    /// Takes in what the client sends. False when it is gone.
    bool Read() {
        char lData[4096];
        const ssize_t lSize = ::recv(mControl, lData, sizeof(lData), 0);
        if (lSize <= 0) { return false; }
        mIn.append(lData, static_cast<std::size_t>(lSize));
        return true;
    }

    /// Drops the receiver reports of an interleaved client, which come between requests.
    bool HasRequest() {
        while (mIn.size() >= 4 && '$' == mIn[0]) {
            const std::size_t lSize = 4U + static_cast<std::uint8_t>(mIn[2]) * 256U + static_cast<std::uint8_t>(mIn[3]);
            if (mIn.size() < lSize) { return false; }
            mIn.erase(0, lSize);
        }
        return !mIn.empty() && '$' != mIn[0] && std::string::npos != mIn.find("\r\n\r\n");
    }

    bool Receive(std::string& aRequest) {
        while (!HasRequest()) {
            if (!Read()) { return false; }
        }
        const std::size_t lEnd = mIn.find("\r\n\r\n") + 4;
        aRequest = mIn.substr(0, lEnd);
        mIn.erase(0, lEnd);
        return true;
    }

    void Answer(const std::string& aRequest, const std::string& aHeaders, const std::string& aBody) const {
        const std::string lText = "RTSP/1.0 200 OK\r\nCSeq: " + HeaderOf(aRequest, "CSeq") + "\r\n" + aHeaders +
                                  (aBody.empty() ? "" : "Content-Length: " + std::to_string(aBody.size()) + "\r\n") +
                                  "\r\n" + aBody;
        static_cast<void>(::send(mControl, lText.data(), lText.size(), MSG_NOSIGNAL));
    }

    std::string Description() const {
        return "v=0\r\no=- 1 1 IN IP4 127.0.0.1\r\ns=Blast\r\nc=IN IP4 0.0.0.0\r\nt=0 0\r\na=range:npt=0-\r\n"
               "m=video 0 RTP/AVP 96\r\na=rtpmap:96 H264/90000\r\na=control:track1\r\n"
               "a=fmtp:96 packetization-mode=1;sprop-parameter-sets=" +
               Base64(mStream.mSps) + "," + Base64(mStream.mPps) + "\r\n";
    }

    std::string SetUp(const std::string& aTransport) {
        mInterleaved = std::string::npos != aTransport.find("TCP");
        if (mInterleaved) { return "RTP/AVP/TCP;unicast;interleaved=0-1"; }
        const std::size_t lAt = aTransport.find("client_port=");
        sockaddr_in lTo{};
        lTo.sin_family = AF_INET;
        lTo.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        lTo.sin_port = htons(static_cast<std::uint16_t>(std::strtoul(aTransport.c_str() + lAt + 12, nullptr, 10)));
        mMedia = ::socket(AF_INET, SOCK_DGRAM, 0);
        static_cast<void>(::connect(mMedia, reinterpret_cast<sockaddr*>(&lTo), sizeof(lTo)));
        sockaddr_in lOwn{};
        socklen_t lSize = sizeof(lOwn);
        static_cast<void>(::getsockname(mMedia, reinterpret_cast<sockaddr*>(&lOwn), &lSize));
        const unsigned lPort = ntohs(lOwn.sin_port);
        return aTransport + ";server_port=" + std::to_string(lPort) + "-" + std::to_string(lPort + 1) +
               ";ssrc=1A2B3C4D";
    }

    std::string PlayHeaders() const {
        return "Session: 1\r\nRange: npt=0-\r\nRTP-Info: url=" + mURL + "/track1;seq=" + std::to_string(mSeq) +
               ";rtptime=0\r\n";
    }

    int mControl;
    const Stream& mStream;
    std::string mURL;
    std::string mIn;
    bool mInterleaved = false;
    int mMedia = -1;
    std::uint16_t mSeq = 1;
};

int Listen(unsigned& aPort) {
    const int lSocket = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in lAddress{};
    lAddress.sin_family = AF_INET;
    lAddress.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t lSize = sizeof(lAddress);
    if (0 != ::bind(lSocket, reinterpret_cast<sockaddr*>(&lAddress), lSize) || 0 != ::listen(lSocket, 1024) ||
        0 != ::getsockname(lSocket, reinterpret_cast<sockaddr*>(&lAddress), &lSize)) {
        throw std::runtime_error("no port to listen on");
    }
    aPort = ntohs(lAddress.sin_port);
    return lSocket;
}

}  // namespace

// NOLINTNEXTLINE(bugprone-exception-escape): what fails ends the program
int main(int aCount, char** aArgs) {
    if (3 != aCount) {
        std::fprintf(stderr, "usage: blast_server CLIP.h264 MBIT_PER_S\n");
        return 2;
    }
    // Each client takes two descriptors.
    rlimit lLimit{};
    ::getrlimit(RLIMIT_NOFILE, &lLimit);
    lLimit.rlim_cur = lLimit.rlim_max;
    ::setrlimit(RLIMIT_NOFILE, &lLimit);
    const Stream lStream = LoadStream(aArgs[1], std::strtod(aArgs[2], nullptr));
    unsigned lPort = 0;
    const int lListener = Listen(lPort);
    const std::string lURL = "rtsp://127.0.0.1:" + std::to_string(lPort) + "/blast";
    std::printf("%s\n", lURL.c_str());
    std::fflush(stdout);

    pollfd lWait[] = {{STDIN_FILENO, POLLIN, 0}, {lListener, POLLIN, 0}};
    for (;;) {
        ::poll(lWait, 2, -1);
        if (0 != lWait[0].revents) {
            char lLine[64];
            if (::read(STDIN_FILENO, lLine, sizeof(lLine)) <= 0) { return 0; }
            std::printf("%llu\n", static_cast<unsigned long long>(gPackets));
            std::fflush(stdout);
        }
        if (0 == lWait[1].revents) { continue; }
        const int lControl = ::accept(lListener, nullptr, nullptr);
        const int lOn = 1;
        ::setsockopt(lControl, IPPROTO_TCP, TCP_NODELAY, &lOn, sizeof(lOn));
        std::thread([lControl, &lStream, lURL] { Client(lControl, lStream, lURL).Serve(); }).detach();
    }
}
