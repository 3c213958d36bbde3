// The values of Transport, RTP-Info and Range headers, read without a session. Values that were written by hand come
// back, whatever stands beside them; of any others each part is a piece of the text.

#include <algorithm>

#include "MediaSessions/RTSP/Headers/RTPInfo.hpp"
#include "MediaSessions/RTSP/Headers/Range.hpp"
#include "MediaSessions/RTSP/Headers/TransportHeader.hpp"
#include "support/Target.hpp"

namespace Fuzz {

const Bounds kBounds{8192, 1024};

namespace {

using Player::Time;
using Player::MediaSessions::Range;
using Player::MediaSessions::RTPInfo;
using Player::MediaSessions::TransportHeader;

constexpr std::size_t kMostEntries = 16384;

bool Holds(const std::string& aText, const std::string& aPiece) {
    return std::string::npos != aText.find(aPiece);
}

void CheckPieces(const std::string& aText, const TransportHeader& aHeader) {
    for (const auto& lPiece : {aHeader.mSource, aHeader.mServerPorts, aHeader.mChannels}) {
        FUZZ_CHECK(!lPiece || (Holds(aText, *lPiece) && !Holds(*lPiece, ";")));
    }
    if (aHeader.mServerPorts) {
        FUZZ_CHECK(std::count(aHeader.mServerPorts->begin(), aHeader.mServerPorts->end(), '-') < 2);
    }
    FUZZ_CHECK(!aHeader.mSSRC || Holds(aText, "ssrc"));
    FUZZ_CHECK(!aHeader.mSeq || Holds(aText, "seq"));
    FUZZ_CHECK(!aHeader.mRTPTime || Holds(aText, "rtptime"));
}

void TakeAnything(Input& aInput) {
    const std::string lText = AsText(aInput.Rest());
    CheckPieces(lText, TransportHeader::Parse(lText));

    const std::vector<RTPInfo::Entry> lEntries = RTPInfo::Parse(lText);
    const auto lCommas = static_cast<std::size_t>(std::count(lText.begin(), lText.end(), ','));
    FUZZ_CHECK(lEntries.size() <= std::min(lCommas + 1, kMostEntries));
    for (const RTPInfo::Entry& lEntry : lEntries) {
        CheckPieces(lText, lEntry.mVars);
        FUZZ_CHECK(Holds(lText, lEntry.mURL));
        FUZZ_CHECK(!lEntry.mName || (Holds(lText, "/" + *lEntry.mName) && !Holds(*lEntry.mName, "/")));
    }
    FUZZ_CHECK(!Range::Parse(lText) || Holds(lText, "npt"));
}

/// An element that says nothing of those that count.
std::string Bystander(Input& aInput) {
    std::string lText = "x" + AsText(aInput.Take(aInput.Below(16)));
    std::replace_if(
        lText.begin(), lText.end(), [](char aCh) { return Holds(std::string(";,=/-\0", 6), {aCh}); }, '_');
    return lText + (aInput.Flag() ? "=7" : "");
}

std::string Seconds(std::uint32_t aMilliseconds) {
    return std::to_string(aMilliseconds / 1000) + "." + std::to_string(1000 + aMilliseconds % 1000).substr(1);
}

void CheckRange(Input& aInput) {
    const std::uint32_t lStart = aInput.Word32();
    const std::uint32_t lEnd = aInput.Word32();
    const bool lIsOpen = aInput.Flag();
    const std::string lText = Bystander(aInput) + "; npt = " + Seconds(lStart) + " - " +
                              (lIsOpen ? "" : Seconds(lEnd)) + ";" + Bystander(aInput);
    const auto lRange = Range::Parse(lText);
    FUZZ_CHECK(lRange && Time(lStart, 1000) == lRange->mStart);
    FUZZ_CHECK(lIsOpen ? !lRange->mEnd : Time(lEnd, 1000) == lRange->mEnd);
}

/// Entries as a server writes them come back one by one.
void CheckInfo(Input& aInput) {
    struct Written {
        std::string mURL;
        std::uint16_t mSeq;
        std::uint32_t mTime;
    };
    std::vector<Written> lWritten;
    std::string lText;
    while (!aInput.Empty()) {
        const std::uint16_t lSeq = static_cast<std::uint16_t>(aInput.Word16());
        const std::uint32_t lTime = aInput.Word32();
        lWritten.push_back({"rtsp://h/" + std::to_string(lSeq), lSeq, lTime});
        lText += (lText.empty() ? "url=" : ", url=") + lWritten.back().mURL + ";" + Bystander(aInput) +
                 ";seq=" + std::to_string(lSeq) + " ;rtptime=" + std::to_string(lTime);
    }
    const auto lEntries = RTPInfo::Parse(lText);
    FUZZ_CHECK(lEntries.size() == std::min(lWritten.size(), kMostEntries));
    for (std::size_t i = 0; i < lEntries.size(); ++i) {
        FUZZ_CHECK(lWritten[i].mURL == lEntries[i].mURL && std::to_string(lWritten[i].mSeq) == lEntries[i].mName);
        FUZZ_CHECK(lWritten[i].mSeq == lEntries[i].mVars.mSeq && lWritten[i].mTime == lEntries[i].mVars.mRTPTime);
    }
}

}  // namespace

void Run(Input& aInput) {
    if (aInput.Flag()) {
        CheckRange(aInput);
        CheckInfo(aInput);
    } else {
        TakeAnything(aInput);
    }
}

}  // namespace Fuzz
