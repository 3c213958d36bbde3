#include "support/Dialogue.hpp"

#include "support/Check.hpp"

namespace Fuzz {

namespace {

constexpr std::size_t kReportFrame = 4 + 32;

bool BeginsWith(const std::string& aText, const std::string& aWord) {
    return 0 == aText.compare(0, aWord.size(), aWord);
}

void CheckRequest(const std::string& aRequest) {
    const std::string lLine = aRequest.substr(0, aRequest.find("\r\n"));
    bool lIsKnown = false;
    for (const char* lMethod : {"DESCRIBE ", "SETUP ", "PLAY ", "PAUSE ", "TEARDOWN ", "OPTIONS ", "GET_PARAMETER "}) {
        lIsKnown = lIsKnown || BeginsWith(lLine, lMethod);
    }
    FUZZ_CHECK(lIsKnown && lLine.size() > 9 && " RTSP/1.0" == lLine.substr(lLine.size() - 9));
    FUZZ_CHECK(!HeaderIn(aRequest, "CSeq").empty() && !HeaderIn(aRequest, "User-Agent").empty());
    // No line of a server's became two of ours.
    for (std::size_t lAt = 0; lAt < aRequest.size(); ++lAt) {
        const bool lIsCR = '\r' == aRequest[lAt];
        const bool lIsLF = '\n' == aRequest[lAt];
        FUZZ_CHECK(!lIsCR || (lAt + 1 < aRequest.size() && '\n' == aRequest[lAt + 1]));
        FUZZ_CHECK(!lIsLF || (0 < lAt && '\r' == aRequest[lAt - 1]));
    }
}

}  // namespace

std::string Dialogue::Description() {
    return "v=0\r\no=- 1 1 IN IP4 127.0.0.1\r\ns=Clip\r\nt=0 0\r\na=range:npt=0-100\r\n"
           "m=video 0 RTP/AVP 96\r\na=rtpmap:96 AMR/8000\r\na=control:trackID=1\r\n"
           "m=audio 0 RTP/AVP 97\r\na=rtpmap:97 AMR/8000\r\na=control:trackID=2\r\n";
}

std::string Dialogue::Response(unsigned aCSeq, const std::string& aHeaders, const std::string& aBody) {
    const std::string lLength = aBody.empty() ? "" : "Content-Length: " + std::to_string(aBody.size()) + "\r\n";
    return "RTSP/1.0 200 OK\r\nCSeq: " + std::to_string(aCSeq) + "\r\n" + aHeaders + lLength + "\r\n" + aBody;
}

std::string Dialogue::Describe(unsigned aCSeq) {
    // From this server media is played as soon as it comes.
    return Response(aCSeq, "Server: Quenra Strand\r\nContent-Base: rtsp://127.0.0.1/clip/\r\n", Description());
}

Bytes Dialogue::Speech(std::uint16_t aSeq, std::uint32_t aTimestamp, std::uint32_t aSsrc) {
    Bytes lPacket = {0x80, 0x80 | 96};
    for (const auto& [lValue, lBytes] : {std::pair<std::uint32_t, unsigned>(aSeq, 2), {aTimestamp, 4}, {aSsrc, 4}}) {
        for (unsigned lByte = lBytes; 0 != lByte--;) {
            lPacket.push_back(static_cast<std::uint8_t>(lValue >> 8 * lByte));
        }
    }
    lPacket.push_back(0xF0);
    lPacket.push_back(0x3C);
    lPacket.insert(lPacket.end(), kSpeechBytes, 0x55);
    return lPacket;
}

std::vector<std::string> RequestsIn(const std::string& aSent) {
    std::vector<std::string> lRequests;
    std::size_t lAt = 0;
    while (lAt < aSent.size()) {
        if ('$' == aSent[lAt]) {
            FUZZ_CHECK(aSent.size() - lAt >= kReportFrame);
            lAt += kReportFrame;
            continue;
        }
        const std::size_t lEnd = aSent.find("\r\n\r\n", lAt);
        FUZZ_CHECK(std::string::npos != lEnd);
        const std::string lMessage = aSent.substr(lAt, lEnd + 4 - lAt);
        lAt = lEnd + 4;
        if (BeginsWith(lMessage, "RTSP/1.0 501 Not Implemented\r\n")) { continue; }
        CheckRequest(lMessage);
        lRequests.push_back(lMessage);
    }
    return lRequests;
}

std::string HeaderIn(const std::string& aRequest, const std::string& aName) {
    const std::string lName = "\r\n" + aName + ": ";
    const std::size_t lAt = aRequest.find(lName);
    if (std::string::npos == lAt) { return std::string(); }
    const std::size_t lBegin = lAt + lName.size();
    return aRequest.substr(lBegin, aRequest.find("\r\n", lBegin) - lBegin);
}

}  // namespace Fuzz
