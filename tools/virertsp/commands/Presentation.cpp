#include "commands/Presentation.hpp"

#include "Player/String.hpp"
#include "Printable.hpp"
#include "recording/Progress.hpp"

namespace Virertsp {

namespace {

using Player::Properties;
using Player::StringWithFormat;

std::string Line(const std::string& aName, const std::string& aValue) {
    return StringWithFormat("  %-21s  %s\n", Printable(aName).c_str(), Printable(aValue).c_str());
}

std::string Lines(const Properties& aProperties) {
    std::string lText;
    for (auto lProperty = aProperties.Begin(); lProperty != aProperties.End(); ++lProperty) {
        lText += Line(lProperty->Key(), lProperty->Val());
    }
    return lText;
}

void AddProperties(const Properties& aProperties, Json& aJson) {
    aJson.Open('{');
    for (auto lProperty = aProperties.Begin(); lProperty != aProperties.End(); ++lProperty) {
        aJson.Key(lProperty->Key()).String(lProperty->Val());
    }
    aJson.Close();
}

void AddText(const char* aKey, const std::string& aText, Json& aJson) {
    if (!aText.empty()) { aJson.Key(aKey).String(aText); }
}

void AddNumber(const char* aKey, unsigned aNumber, Json& aJson) {
    if (0 != aNumber) { aJson.Key(aKey).Number(aNumber); }
}

void AddInfo(const MediaInfo& aInfo, Json& aJson) {
    aJson.Open('{').Key("format").String(aInfo.mFormat);
    AddText("profile", aInfo.mProfile, aJson);
    AddText("level", aInfo.mLevel, aJson);
    AddNumber("width", aInfo.mWidth, aJson);
    AddNumber("height", aInfo.mHeight, aJson);
    AddNumber("rate", aInfo.mRate, aJson);
    AddNumber("channels", aInfo.mChannels, aJson);
    AddText("extension", aInfo.mExtension, aJson);
    AddText("obstacle", aInfo.mObstacle, aJson);
    aJson.Close();
}

double Milliseconds(const Dialogue::Exchange& aExchange) {
    return std::chrono::duration<double, std::milli>(aExchange.mRoundTrip).count();
}

std::string ExchangeLine(const Dialogue::Exchange& aExchange, bool aMisunderstood) {
    const std::string lMethod = StringWithFormat("  %-9s", aExchange.mMethod.c_str());
    const std::string lURL = "  " + Printable(aExchange.mURL) + "\n";
    if (0 == aExchange.mStatus) {
        return lMethod + StringWithFormat("  %13s  %s", "", aMisunderstood ? "not understood" : "no answer") + lURL;
    }
    return lMethod + StringWithFormat("  %10.3f ms  %u ", Milliseconds(aExchange), aExchange.mStatus) +
           Printable(aExchange.mReason) + lURL;
}

void AddExchange(const Dialogue::Exchange& aExchange, bool aMisunderstood, Json& aJson) {
    aJson.Open('{').Key("method").String(aExchange.mMethod).Key("url").String(aExchange.mURL);
    if (0 != aExchange.mStatus) {
        aJson.Key("status").Number(aExchange.mStatus).Key("reason").String(aExchange.mReason);
        aJson.Key("round_trip_ms").Decimal(Milliseconds(aExchange), 3);
    } else if (aMisunderstood) {
        aJson.Key("misunderstood").Bool(true);
    }
    aJson.Close();
}

/// Whether the player's track is this one of the description: it may have other values by now, but not for these.
bool IsSame(const Properties& aDescribed, const Properties& aTrack) {
    for (const char* const lKey : {"URL", "MediaType", "PayloadType", "Format"}) {
        if (aDescribed.Get(lKey) != aTrack.Get(lKey)) { return false; }
    }
    return true;
}

/// A format that could be written but is not played: the library takes its name in one spelling alone.
void NameSpelling(const Properties& aTrack, MediaInfo& aInfo) {
    if (aInfo.mExtension.empty() || aInfo.mPlayedAs == aTrack.Get("Format")) { return; }
    aInfo.mExtension.clear();
    aInfo.mObstacle = "The description says " + aTrack.Get("Format") + " where " + aInfo.mPlayedAs + " is understood.";
}

}  // namespace

Presentation::Presentation(const std::string& aURL, const ProbePlayer& aPlayer, bool aMisunderstood)
    : mURL(aURL), mMisunderstood(aMisunderstood), mSession(aPlayer.DescribedSession()) {
    Player::TrackIdx lNext = 0;
    for (const ProbePlayer::PropertiesPtr& lTrack : aPlayer.DescribedTracks()) {
        const bool lPlays = lNext < aPlayer.GetTrackCount() && IsSame(*lTrack, *aPlayer.GetTrackInfo(lNext));
        mTracks.push_back({lTrack, lPlays ? static_cast<int>(lNext++) : -1, MediaInfo::Of(*lTrack)});
        if (!lPlays) { NameSpelling(*lTrack, mTracks.back().mInfo); }
    }
    aPlayer.GetAvailableRange(mBegin, mEnd);
}

std::string Presentation::Range() const {
    return FormatTime(mBegin) + (mEnd > mBegin ? " to " + FormatTime(mEnd) : ", without an end");
}

void Presentation::AddRange(Json& aJson) const {
    aJson.Key("range").Open('{').Key("begin_s").Decimal(mBegin.ToSeconds(), 3).Key("end_s");
    if (mEnd > mBegin) {
        aJson.Decimal(mEnd.ToSeconds(), 3);
    } else {
        aJson.Null();
    }
    aJson.Close();
}

std::string Presentation::Text(const Dialogue& aDialogue) const {
    std::string lText = Printable(mURL) + "\n";
    if (!aDialogue.Server().empty()) { lText += Line("Server", aDialogue.Server()); }
    if (mSession) {
        lText += Line("Base", mSession->Get("URL")) + Line("Range", Range());
        lText += "session\n" + Lines(*mSession);
    }
    for (const Track& lTrack : mTracks) {
        lText += lTrack.mIndex < 0 ? std::string("no track") : StringWithFormat("track %d", lTrack.mIndex);
        lText += ": " + Printable(lTrack.mInfo.Summary());
        lText += lTrack.mIndex < 0 ? std::string("; can't be played") : std::string();
        lText +=
            lTrack.mInfo.mExtension.empty() ? "; " + Printable(lTrack.mInfo.mObstacle) : "; " + lTrack.mInfo.mExtension;
        lText += "\n" + Lines(*lTrack.mProperties);
    }
    return lText + "requests\n" + ExchangeLines(aDialogue);
}

std::string Presentation::ExchangeLines(const Dialogue& aDialogue) const {
    std::string lText;
    bool lMisunderstood = mMisunderstood;
    for (const Dialogue::Exchange& lExchange : aDialogue.Exchanges()) {
        lText += ExchangeLine(lExchange, lMisunderstood);
        lMisunderstood = lMisunderstood && 0 != lExchange.mStatus;
    }
    return lText;
}

void Presentation::AddExchanges(const Dialogue& aDialogue, Json& aJson) const {
    bool lMisunderstood = mMisunderstood;
    for (const Dialogue::Exchange& lExchange : aDialogue.Exchanges()) {
        AddExchange(lExchange, lMisunderstood, aJson);
        lMisunderstood = lMisunderstood && 0 != lExchange.mStatus;
    }
}

std::string Presentation::JsonLine(const Dialogue& aDialogue) const {
    Json lJson;
    lJson.Open('{').Key("url").String(mURL).Key("server").String(aDialogue.Server());
    if (mSession) {
        lJson.Key("base").String(mSession->Get("URL"));
        AddRange(lJson);
        AddProperties(*mSession, lJson.Key("session"));
    }
    lJson.Key("tracks").Open('[');
    for (const Track& lTrack : mTracks) {
        lJson.Open('{').Key("track");
        lTrack.mIndex < 0 ? lJson.Null() : lJson.Number(lTrack.mIndex);
        AddInfo(lTrack.mInfo, lJson.Key("becomes"));
        AddProperties(*lTrack.mProperties, lJson.Key("properties"));
        lJson.Close();
    }
    lJson.Close().Key("requests").Open('[');
    AddExchanges(aDialogue, lJson);
    lJson.Close().Close();
    return lJson.Text() + "\n";
}

}  // namespace Virertsp
