// Responses, requests of the server and frames between them, in pieces of any sizes: all that is read stands in the
// stream, every request gets its answer, and without bodies the pieces make no difference. (A body has to come with one
// read, and must: where there is one the pieces count.)

#include "MediaSessions/RTSP/Messages.hpp"

#include "Player/Exception.hpp"
#include "RTP/Transports/OverRTSP.hpp"
#include "support/Frames.hpp"
#include "support/Network.hpp"
#include "support/Target.hpp"

namespace Fuzz {

const Bounds kBounds{kConnectionBytes, 1024};

namespace {

using namespace Player::MediaSessions;

constexpr unsigned kTracks = 2;
constexpr unsigned kMostResponses = 16;

struct Outcome {
    /// A line for each response, and the failure that ended it.
    std::vector<std::string> mResponses;
    std::string mSent;
    std::uint64_t mMediaBytes[kTracks] = {};

    bool operator==(const Outcome& aOther) const {
        return mResponses == aOther.mResponses && mSent == aOther.mSent && mMediaBytes[0] == aOther.mMediaBytes[0] &&
               mMediaBytes[1] == aOther.mMediaBytes[1];
    }
};

bool IsIn(const std::string& aWhole, const std::string& aPart) {
    return std::string::npos != aWhole.find(aPart);
}

void CheckResponse(const Headers& aHeaders, const Player::Buffer& aBody, const std::string& aStream) {
    for (const auto& [lName, lValue] : aHeaders) {
        FUZZ_CHECK(std::string::npos == (lName + lValue).find_first_of("\r\n"));
        FUZZ_CHECK(!IsIn(lName, ":") && (lValue.empty() || ' ' != lValue[0]));
        FUZZ_CHECK(IsIn(aStream, lName) && IsIn(aStream, lValue));
    }
    const std::string lBody(reinterpret_cast<const char*>(aBody.Begin()), aBody.Size());
    FUZZ_CHECK(IsIn(aStream, lBody));
    const std::string lSize = HeaderValue(aHeaders, "Content-Length");
    FUZZ_CHECK(aBody.Size() == std::strtoull(lSize.c_str(), nullptr, 10));
}

std::string Text(const Headers& aHeaders, const Player::Buffer& aBody) {
    std::string lText;
    for (const auto& [lName, lValue] : aHeaders) {
        lText += lName + "=" + lValue + "\n";
    }
    return lText.append(reinterpret_cast<const char*>(aBody.Begin()), aBody.Size());
}

/// Only answers to requests and reports go out.
void CheckSent(const std::string& aSent, const std::string& aStream) {
    constexpr char kAnswer[] = "RTSP/1.0 501 Not Implemented\r\n";
    std::size_t lAt = 0;
    while (lAt < aSent.size()) {
        if ('$' == aSent[lAt]) {
            FUZZ_CHECK(0 == aSent.compare(lAt + 2, 2, std::string("\0\x20", 2)));
            lAt += 4 + 32;
            continue;
        }
        FUZZ_CHECK(0 == aSent.compare(lAt, sizeof(kAnswer) - 1, kAnswer));
        lAt += sizeof(kAnswer) - 1;
        if (0 == aSent.compare(lAt, 6, "CSeq: ")) {
            const std::size_t lEnd = aSent.find("\r\n", lAt);
            FUZZ_CHECK(IsIn(aStream, aSent.substr(lAt + 6, lEnd - lAt - 6)));
            lAt = lEnd + 2;
        }
        FUZZ_CHECK(0 == aSent.compare(lAt, 2, "\r\n"));
        lAt += 2;
    }
    FUZZ_CHECK(lAt == aSent.size());
}

Outcome Receive(const std::vector<Bytes>& aPieces, const std::string& aStream) {
    Outcome lOutcome;
    Network lNetwork;
    const Configuration lConfiguration;
    Connection lConnection(lConfiguration);
    Messages lMessages(lConnection);
    Player::RTP::Transports::OverRTSP lTransport(&lMessages);
    for (unsigned lIdx = 0; lIdx < kTracks; ++lIdx) {
        lTransport.AddTrack();
        lTransport.SetInterLeavedChannelIdentifier(lIdx, std::to_string(2 * lIdx));
    }
    lMessages.SetFrameReceiver(&lTransport);
    lConnection.SetURL("rtsp://127.0.0.1/clip");
    lConnection.DoConnect("127.0.0.1");
    lNetwork.Send(aPieces);
    try {
        for (unsigned lCSeq = 1; lCSeq <= kMostResponses; ++lCSeq) {
            Headers lHeaders;
            Player::Buffer lBody;
            const bool lIsSuccess = lMessages.RecvResponse(lHeaders, lBody, lCSeq);
            CheckResponse(lHeaders, lBody, aStream);
            if (!lIsSuccess && 0 == lMessages.StatusCode()) { break; }
            lOutcome.mResponses.push_back((lIsSuccess ? "yes " : lMessages.StatusText()) + Text(lHeaders, lBody));
        }
    } catch (const Player::RTSPErr& lError) {
        FUZZ_CHECK(2 == lError.Error());
        lOutcome.mResponses.emplace_back(lError.Message());
    }
    lOutcome.mSent = lNetwork.Sent();
    CheckSent(lOutcome.mSent, aStream);
    for (unsigned lIdx = 0; lIdx < kTracks; ++lIdx) {
        lOutcome.mMediaBytes[lIdx] = lTransport.GetTrackRTPStack(lIdx).GetReception().mBytes;
        FUZZ_CHECK(lOutcome.mMediaBytes[lIdx] <= aStream.size());
    }
    return lOutcome;
}

bool AnnouncesNoBody(std::string aStream) {
    for (char& lCh : aStream) {
        lCh = 'A' <= lCh && lCh <= 'Z' ? static_cast<char>(lCh - 'A' + 'a') : lCh;
    }
    return !IsIn(aStream, "content-length");
}

/// Reports go out when the last of several frames has come; whether the server has closed its side then hangs on what
/// was read together with it.
bool CarriesNoReports(const std::string& aStream) {
    return !IsIn(aStream, "$");
}

}  // namespace

void Run(Input& aInput) {
    const Bytes lSizes = aInput.Take(aInput.Below(16));
    const Bytes lStream = FramesWithinLimit()(aInput.Rest());
    const std::string lText = AsText(lStream);
    Outcome lInPieces = Receive(Cut(lStream, lSizes), lText);
    Outcome lAtOnce = Receive({lStream}, lText);
    if (!AnnouncesNoBody(lText)) { return; }
    if (!CarriesNoReports(lText)) { lInPieces.mSent = lAtOnce.mSent; }
    FUZZ_CHECK(lInPieces == lAtOnce);
}

}  // namespace Fuzz
