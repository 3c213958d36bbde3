// A session description: every value is a piece of one of its lines, and how lines end makes no difference. Brought
// into the form that the parser knows, it is one as well.

#include "SDP/Parser.hpp"

#include <set>

#include "Player/Exception.hpp"
#include "SDP/Normalized.hpp"
#include "support/Target.hpp"

namespace Fuzz {

/// The shortest media section takes 3 bytes and makes a bag with four entries.
const Bounds kBounds{8192, 1024};

namespace {

using PropertiesPtr = Player::SharedPtr<Player::Properties, Player::SharedObject>;

struct Description {
    PropertiesPtr mSession;
    std::list<PropertiesPtr> mMedia;
    /// 0 when it could be read to its end.
    Player::UInt mError = 0;
};

/// Who calls the parser has seen to it that there is room for "v=0": anything shorter is an assertion.
bool HasRoomForVersion(const Bytes& aText) {
    return 3 <= aText.size();
}

Description Parse(Bytes aText) {
    Description lDescription;
    try {
        Player::ParseSDP(Player::BufferRef(aText.data(), static_cast<Player::UInt>(aText.size())),
                         lDescription.mSession, lDescription.mMedia);
    } catch (const Player::SDPErr& lError) { lDescription.mError = lError.Code(); }
    return lDescription;
}

const std::set<std::string> kSessionKeys = {"SessionName",       "UserName",          "SessionId",    "SessionVersion",
                                            "OriginNetworkType", "OriginAddressType", "OriginAddress"};
const std::set<std::string> kMediaKeys = {"MediaType", "Port", "Transport", "PayloadType"};
/// Of the lines that stand after the session's as well as after those of a medium.
const std::set<std::string> kCommonKeys = {"ConnectionNetworkType",
                                           "ConnectionAddressType",
                                           "ConnectionAddress",
                                           "Format",
                                           "TimeRes",
                                           "EncParams",
                                           "Id",
                                           "StartTime",
                                           "EndTime",
                                           "FmtParams",
                                           "Width",
                                           "Height"};

/// `aKeys`: those of its own kind of lines.
void CheckBag(const Player::Properties& aBag, const std::string& aText, const std::set<std::string>& aKeys) {
    std::set<std::string> lSeen;
    for (auto lEntry = aBag.Begin(); lEntry != aBag.End(); ++lEntry) {
        FUZZ_CHECK(1 == aKeys.count(lEntry->Key()) + kCommonKeys.count(lEntry->Key()));
        FUZZ_CHECK(lSeen.insert(lEntry->Key()).second);
        FUZZ_CHECK(std::string::npos == lEntry->Val().find_first_of("\r\n"));
        FUZZ_CHECK(std::string::npos != aText.find(lEntry->Val()));
    }
}

bool AreEqual(const Player::Properties& aA, const Player::Properties& aB) {
    auto lB = aB.Begin();
    for (auto lA = aA.Begin(); lA != aA.End(); ++lA, ++lB) {
        if (lB == aB.End() || lA->Key() != lB->Key() || lA->Val() != lB->Val()) { return false; }
    }
    return lB == aB.End();
}

void CheckEqual(const Description& aA, const Description& aB) {
    FUZZ_CHECK(aA.mError == aB.mError);
    FUZZ_CHECK(static_cast<bool>(aA.mSession) == static_cast<bool>(aB.mSession));
    FUZZ_CHECK(!aA.mSession || AreEqual(*aA.mSession, *aB.mSession));
    FUZZ_CHECK(aA.mMedia.size() == aB.mMedia.size());
    auto lB = aB.mMedia.begin();
    for (const PropertiesPtr& lA : aA.mMedia) {
        FUZZ_CHECK(AreEqual(*lA, **lB++));
    }
}

/// The same lines with another end: CR LF, CR and LF all end one.
Bytes WithLineEnds(const Bytes& aText, const std::string& aEnd) {
    Bytes lText;
    for (std::size_t lIdx = 0; lIdx < aText.size(); ++lIdx) {
        const bool lIsCR = '\r' == aText[lIdx];
        if (!lIsCR && '\n' != aText[lIdx]) {
            lText.push_back(aText[lIdx]);
            continue;
        }
        lText.insert(lText.end(), aEnd.begin(), aEnd.end());
        if (lIsCR && lIdx + 1 < aText.size() && '\n' == aText[lIdx + 1]) { ++lIdx; }
    }
    return lText;
}

std::size_t MediaIn(const std::string& aText) {
    std::size_t lCount = 0;
    for (std::size_t lAt = aText.find("m="); std::string::npos != lAt; lAt = aText.find("m=", lAt + 2)) {
        ++lCount;
    }
    return lCount;
}

void CheckNormalized(const std::string& aText) {
    const std::string lText = Player::NormalizedSDP(aText);
    FUZZ_CHECK(lText == Player::NormalizedSDP(lText));
    // Each line has a blank and an end of its own at most.
    FUZZ_CHECK(lText.size() <= 4 * aText.size() && MediaIn(lText) <= MediaIn(aText));
    const Bytes lBytes(lText.begin(), lText.end());
    if (!HasRoomForVersion(lBytes)) { return; }
    for (const PropertiesPtr& lMedia : Parse(lBytes).mMedia) {
        CheckBag(*lMedia, lText, kMediaKeys);
    }
}

}  // namespace

void Run(Input& aInput) {
    const Bytes lText = aInput.Rest();
    CheckNormalized(AsText(lText));
    if (!HasRoomForVersion(lText)) { return; }
    const Description lDescription = Parse(lText);
    const std::string lWhole = AsText(lText);
    if (lDescription.mSession) { CheckBag(*lDescription.mSession, lWhole, kSessionKeys); }
    FUZZ_CHECK(lDescription.mMedia.size() <= MediaIn(lWhole));
    for (const PropertiesPtr& lMedia : lDescription.mMedia) {
        CheckBag(*lMedia, lWhole, kMediaKeys);
    }
    for (const char* lEnd : {"\n", "\r\n", "\r"}) {
        CheckEqual(lDescription, Parse(WithLineEnds(lText, lEnd)));
    }
}

}  // namespace Fuzz
