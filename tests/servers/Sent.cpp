#include "Sent.hpp"

#include <dlfcn.h>
#include <sys/socket.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>

namespace {

std::atomic<std::FILE*> gFile{nullptr};

unsigned Number(const unsigned char* aBytes, unsigned aCount) {
    unsigned lNumber = 0;
    for (unsigned lByte = 0; lByte < aCount; ++lByte) {
        lNumber = lNumber << 8U | aBytes[lByte];
    }
    return lNumber;
}

void WriteDown(const msghdr& aMessage) {
    constexpr std::size_t kHeader = 12;
    std::FILE* const lFile = gFile;
    if (nullptr == lFile) { return; }
    unsigned char lHeader[kHeader];
    std::size_t lSize = 0;
    for (std::size_t lPiece = 0; lPiece < aMessage.msg_iovlen && lSize < kHeader; ++lPiece) {
        const auto* const lBytes = static_cast<const unsigned char*>(aMessage.msg_iov[lPiece].iov_base);
        const std::size_t lCount = std::min(kHeader - lSize, aMessage.msg_iov[lPiece].iov_len);
        std::copy(lBytes, lBytes + lCount, lHeader + lSize);
        lSize += lCount;
    }
    const unsigned lType = lHeader[1] & 0x7FU;
    // Version 2, and no report, whose types are 200 and more there.
    if (lSize < kHeader || 2 != lHeader[0] >> 6U || (lType >= 72 && lType <= 79)) { return; }
    std::fprintf(lFile, "%u %u %u\n", lType, Number(lHeader + 2, 2), lHeader[1] >> 7U);
}

template <typename Function>
Function* System(Function* /*aOurs*/, const char* aName) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, aName));
}

}  // namespace

// The libraries' calls come here: a program's functions go before those of the libraries.
extern "C" {

ssize_t sendmsg(int aSocket, const msghdr* aMessage, int aFlags) {
    static auto* const sSystem = System(&sendmsg, "sendmsg");
    const ssize_t lSent = sSystem(aSocket, aMessage, aFlags);
    if (lSent >= 0) { WriteDown(*aMessage); }
    return lSent;
}

int sendmmsg(int aSocket, mmsghdr* aMessages, unsigned aCount, int aFlags) {
    static auto* const sSystem = System(&sendmmsg, "sendmmsg");
    const int lSent = sSystem(aSocket, aMessages, aCount, aFlags);
    for (int lMessage = 0; lMessage < lSent; ++lMessage) {
        WriteDown(aMessages[lMessage].msg_hdr);
    }
    return lSent;
}
}

void WriteDownWhatIsSent(const std::string& aFile) {
    std::FILE* const lFile = std::fopen(aFile.c_str(), "w");
    if (nullptr == lFile) {
        std::perror(aFile.c_str());
        std::exit(1);
    }
    // A line is there as soon as its packet has left.
    std::setvbuf(lFile, nullptr, _IOLBF, BUFSIZ);
    gFile = lFile;
}
