// The least that receiving can cost, to measure others against: sets up and plays the blast server's track,
// then counts packets in the simplest loop there is.
//
//     bare_client udp URL     one blocking recv per packet
//     bare_client tcp URL     reads blocks of 256 KiB and finds the frames where they lie
//
// A third argument, MEGABYTES, makes it keep packets as a player must: each is copied into blocks that hold that much,
// and copied once more, into the memory of an access unit, when its block is wanted again.

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

namespace {

std::uint64_t gPackets = 0;

std::string Ask(int aControl, const std::string& aMethod, const std::string& aURL, int aCSeq,
                const std::string& aHeaders) {
    const std::string lText =
        aMethod + " " + aURL + " RTSP/1.0\r\nCSeq: " + std::to_string(aCSeq) + "\r\n" + aHeaders + "\r\n";
    static_cast<void>(::send(aControl, lText.data(), lText.size(), 0));
    std::string lAnswer;
    char lCh = 0;
    while (std::string::npos == lAnswer.find("\r\n\r\n") && 1 == ::recv(aControl, &lCh, 1, 0)) {
        lAnswer += lCh;
    }
    return lAnswer;
}

int Bound(int aType, unsigned aPort) {
    const int lSocket = ::socket(AF_INET, aType, 0);
    sockaddr_in lAddress{};
    lAddress.sin_family = AF_INET;
    lAddress.sin_port = htons(static_cast<std::uint16_t>(aPort));
    return 0 == ::bind(lSocket, reinterpret_cast<sockaddr*>(&lAddress), sizeof(lAddress)) ? lSocket : -1;
}

/// What was received last, in blocks that are filled one after the other, round and round.
class Kept {
public:
    explicit Kept(std::size_t aMegabytes) : mBlocks((aMegabytes * 1000000 + kBlockSize - 1) / kBlockSize) {
        for (Block& lBlock : mBlocks) {
            lBlock.mBytes.reset(new unsigned char[kBlockSize]);
        }
        mUnit.resize(kBlockSize);
    }

    void Take(const void* aData, std::size_t aSize) {
        if (mBlocks.empty()) { return; }
        if (kBlockSize - mBlocks[mAt].mUsed < aSize) {
            mAt = (mAt + 1) % mBlocks.size();
            std::memcpy(mUnit.data(), mBlocks[mAt].mBytes.get(), mBlocks[mAt].mUsed);
            mBlocks[mAt].mUsed = 0;
        }
        Block& lBlock = mBlocks[mAt];
        std::memcpy(lBlock.mBytes.get() + lBlock.mUsed, aData, aSize);
        lBlock.mUsed += aSize;
    }

private:
    static constexpr std::size_t kBlockSize = 65536;
    struct Block {
        std::unique_ptr<unsigned char[]> mBytes;
        std::size_t mUsed = 0;
    };

    std::vector<Block> mBlocks;
    std::vector<unsigned char> mUnit;
    std::size_t mAt = 0;
};

void ReceiveDatagrams(int aSocket, Kept& aKept) {
    char lData[1500];
    for (ssize_t lSize = 0; 0 < (lSize = ::recv(aSocket, lData, sizeof(lData), 0));) {
        aKept.Take(lData, static_cast<std::size_t>(lSize));
        ++gPackets;
    }
}

void ReceiveFrames(int aControl, Kept& aKept) {
    static unsigned char lData[262144 + 1504];
    std::size_t lHave = 0;
    for (;;) {
        const ssize_t lSize = ::recv(aControl, lData + lHave, 262144, 0);
        if (lSize <= 0) { return; }
        lHave += static_cast<std::size_t>(lSize);
        std::size_t lAt = 0;
        while (lHave - lAt >= 4) {
            const std::size_t lFrame = 4U + lData[lAt + 2] * 256U + lData[lAt + 3];
            if (lHave - lAt < lFrame) { break; }
            aKept.Take(lData + lAt + 4, lFrame - 4);
            lAt += lFrame;
            ++gPackets;
        }
        lHave -= lAt;
        std::memmove(lData, lData + lAt, lHave);
    }
}

}  // namespace

int main(int aCount, char** aArgs) {
    if (3 != aCount && 4 != aCount) { return 2; }
    Kept lKept(4 == aCount ? std::strtoul(aArgs[3], nullptr, 10) : 0);
    const bool lTCP = 0 == std::strcmp("tcp", aArgs[1]);
    const std::string lURL = aArgs[2];
    const unsigned lPort = static_cast<unsigned>(std::strtoul(lURL.c_str() + lURL.rfind(':') + 1, nullptr, 10));
    const int lControl = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in lServer{};
    lServer.sin_family = AF_INET;
    lServer.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    lServer.sin_port = htons(static_cast<std::uint16_t>(lPort));
    if (0 != ::connect(lControl, reinterpret_cast<sockaddr*>(&lServer), sizeof(lServer))) { return 1; }

    int lMedia = -1;
    std::string lTransport = "RTP/AVP/TCP;unicast;interleaved=0-1";
    if (!lTCP) {
        unsigned lLocal = 40000;
        while ((lMedia = Bound(SOCK_DGRAM, lLocal)) < 0) {
            lLocal += 2;
        }
        const int lSize = 300000;
        ::setsockopt(lMedia, SOL_SOCKET, SO_RCVBUF, &lSize, sizeof(lSize));
        lTransport = "RTP/AVP;unicast;client_port=" + std::to_string(lLocal) + "-" + std::to_string(lLocal + 1);
    }
    Ask(lControl, "SETUP", lURL + "/track1", 1, "Transport: " + lTransport + "\r\n");
    Ask(lControl, "PLAY", lURL, 2, "Session: 1\r\n");
    if (lTCP) {
        ReceiveFrames(lControl, lKept);
    } else {
        ReceiveDatagrams(lMedia, lKept);
    }
    std::printf("%llu\n", static_cast<unsigned long long>(gPackets));
    return 0;
}
