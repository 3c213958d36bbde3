#include "report/Page.hpp"

#include <algorithm>

#include "Player/String.hpp"
#include "Player/Time.hpp"
#include "recording/Progress.hpp"
#include "report/Plot.hpp"
#include "report/Table.hpp"

namespace Virertsp {

namespace {

using Player::StringWithFormat;

/// The page runs nothing and fetches nothing, whatever might get into it.
constexpr char kPolicy[] = "default-src 'none'; style-src 'unsafe-inline'; img-src data:";

constexpr char kStyle[] = R"(
:root{color-scheme:light dark;--page:#fff;--text:#1f2328;--dim:#59636e;--line:#d1d9e0;--box:#f6f8fa;--bad:#b3261e;
--c0:#0969da;--c1:#bc4c00;--c2:#1a7f37;--c3:#8250df}
@media(prefers-color-scheme:dark){:root{--page:#0d1117;--text:#e6edf3;--dim:#9198a1;--line:#3d444d;--box:#151b23;
--bad:#ff8a80;--c0:#58a6ff;--c1:#f0883e;--c2:#3fb950;--c3:#bc8cff}}
*{box-sizing:border-box}
body{margin:0 auto;max-width:1100px;padding:12px;background:var(--page);color:var(--text);
font:15px/1.45 system-ui,sans-serif;overflow-wrap:anywhere}
h1{font-size:1.4em;margin:.3em 0}h2{font-size:1.15em;margin:1.6em 0 .5em}h3{font-size:1em;margin:0 0 .4em}
.dim{color:var(--dim)}.bad{color:var(--bad);font-weight:600}
table{border-collapse:collapse;width:100%;font-variant-numeric:tabular-nums}
th,td{text-align:left;vertical-align:top;padding:3px 10px 3px 0;border-bottom:1px solid var(--line);font-weight:400}
th{color:var(--dim);white-space:nowrap;width:1%}
.cards{display:grid;gap:12px;grid-template-columns:repeat(auto-fit,minmax(min(320px,100%),1fr))}
.card,.plot{background:var(--box);border:1px solid var(--line);border-radius:8px;padding:10px;margin:0;min-width:0}
details{margin-top:8px}summary{cursor:pointer;color:var(--dim)}
svg{display:block;width:100%;height:auto}
svg text{font-size:11px;fill:var(--dim)}.x{text-anchor:middle}.y{text-anchor:end}
.grid{stroke:var(--line)}.line{fill:none;stroke-width:1.6;stroke-linejoin:round;stroke-linecap:round}
.c0{--c:var(--c0)}.c1{--c:var(--c1)}.c2{--c:var(--c2)}.c3{--c:var(--c3)}.line{stroke:var(--c)}
.key{display:block;color:var(--dim);font-size:.87em}
.key::before{content:"";display:inline-block;width:10px;height:10px;border-radius:5px;margin-right:6px;
background:var(--c)}
.sheet{display:grid;gap:8px;grid-template-columns:repeat(auto-fill,minmax(150px,1fr))}
.sheet figure{margin:0}.sheet img{display:block;width:100%;height:auto;border-radius:6px}
.sheet figcaption{color:var(--dim);font-size:.87em}
)";

std::string Decimal(const JsonValue& aValue, int aDigits, const char* aUnit) {
    return StringWithFormat("%.*f", aDigits, aValue.Number()) + aUnit;
}

/// A number that may not be there.
void AddNumber(const char* aName, const JsonValue& aValue, int aDigits, const char* aUnit, Table& aTable) {
    if (aValue.IsNumber()) { aTable.Add({aName, Decimal(aValue, aDigits, aUnit)}); }
}

void AddText(const char* aName, const std::string& aText, Table& aTable) {
    if (!aText.empty()) { aTable.Add({aName, aText}); }
}

void AddFigures(const Findings::Track& aTrack, Table& aTable) {
    const JsonValue& lFigures = aTrack.mFigures;
    AddNumber("Received for", lFigures["time_s"], 1, " s", aTable);
    AddNumber("Bitrate", lFigures["kbit_per_s"], 1, " kbit/s", aTable);
    AddNumber("Packets", lFigures["packets"], 0, "", aTable);
    AddNumber("Lost", lFigures["lost"], 0, "", aTable);
    AddNumber("Out of order", lFigures["reordered"], 0, "", aTable);
    AddNumber("Duplicate", lFigures["duplicates"], 0, "", aTable);
    AddNumber("Jitter", lFigures["jitter_ms"], 3, " ms", aTable);
    AddNumber("Jitter up to", lFigures["jitter_peak_ms"], 3, " ms", aTable);
    if (!aTrack.mUnits.empty()) {
        const bool lAll = aTrack.mUnits.size() == aTrack.mKeys.size();
        aTable.Add({"Access units", std::to_string(aTrack.mUnits.size()) +
                                        (lAll ? "" : ", key frames " + std::to_string(aTrack.mKeys.size()))});
    }
    AddText("End", lFigures["end"].Text(), aTable);
}

std::string PlayTime(double aSeconds) {
    constexpr double kMilli = 1000;
    constexpr double kMost = 1e8;
    return FormatTime(Player::Time(static_cast<long long>(std::clamp(aSeconds, 0., kMost) * kMilli), 1000));
}

std::string Answer(const JsonValue& aRequest) {
    if (aRequest["status"].IsNumber()) { return Decimal(aRequest["status"], 0, " ") + aRequest["reason"].Text(); }
    return aRequest["misunderstood"].IsTrue() ? "not understood" : "no answer";
}

}  // namespace

std::string Page::Text() {
    mHtml.Open("html", {{"lang", "en"}});
    AddHead();
    mHtml.Open("body");
    AddSummary();
    AddTracks();
    AddPlots();
    AddPictures();
    AddServer();
    mHtml.Close().Close();
    return mHtml.Result();
}

void Page::AddHead() {
    const std::string lURL = mFindings.mPresentation["url"].Text();
    mHtml.Open("head").Void("meta", {{"charset", "utf-8"}});
    mHtml.Void("meta", {{"http-equiv", "Content-Security-Policy"}, {"content", kPolicy}});
    mHtml.Void("meta", {{"name", "viewport"}, {"content", "width=device-width, initial-scale=1"}});
    mHtml.Element("title", lURL.empty() ? "Reception" : lURL).Own("style", kStyle).Close();
}

void Page::AddSummary() {
    const JsonValue& lSaid = mFindings.mPresentation;
    const std::string lURL = lSaid["url"].Text();
    mHtml.Element("h1", lURL.empty() ? "Reception" : lURL);
    if (!mFindings.mFailure.empty()) { mHtml.Element("p", mFindings.mFailure, {{"class", "bad"}}); }
    std::string lText = lSaid["server"].Text();
    const JsonValue& lRange = lSaid["range"];
    if (lRange["begin_s"].IsNumber()) {
        const JsonValue& lEnd = lRange["end_s"];
        lText += (lText.empty() ? "" : " \u00B7 ") + PlayTime(lRange["begin_s"].Number()) +
                 (lEnd.IsNumber() ? " to " + PlayTime(lEnd.Number()) : ", without an end");
    }
    if (!lText.empty()) { mHtml.Element("p", lText, {{"class", "dim"}}); }
}

void Page::AddServer() {
    const JsonValue& lSaid = mFindings.mPresentation;
    if (lSaid["requests"].Items().empty()) { return; }
    mHtml.Element("h2", "What the server said");
    Table lRequests({"Request", "Time", "Answer"});
    for (const JsonValue& lRequest : lSaid["requests"].Items()) {
        const JsonValue& lTime = lRequest["round_trip_ms"];
        lRequests.Add({lRequest["method"].Text(), lTime.IsNumber() ? Decimal(lTime, 1, " ms") : "", Answer(lRequest)});
    }
    lRequests.Draw(mHtml);
    AddProperties(lSaid["session"]);
}

void Page::AddProperties(const JsonValue& aProperties) {
    if (aProperties.Members().empty()) { return; }
    mHtml.Open("details").Element("summary", "Description");
    Table lTable;
    for (const auto& [lName, lValue] : aProperties.Members()) {
        lTable.Add({lName, lValue.Text()});
    }
    lTable.Draw(mHtml);
    mHtml.Close();
}

void Page::AddTracks() {
    const std::vector<JsonValue>& lDescribed = mFindings.mPresentation["tracks"].Items();
    if (lDescribed.empty() && mFindings.mTracks.empty()) { return; }
    mHtml.Element("h2", "Tracks").Open("div", {{"class", "cards"}});
    for (const JsonValue& lTrack : lDescribed) {
        AddTrack(lTrack);
    }
    for (const auto& [lIndex, lTrack] : mFindings.mTracks) {
        if (!lDescribed.empty()) { break; }
        mHtml.Open("section", {{"class", "card"}}).Element("h3", TrackName(lIndex));
        Table lTable;
        AddFigures(lTrack, lTable);
        lTable.Draw(mHtml);
        mHtml.Close();
    }
    mHtml.Close();
}

void Page::AddTrack(const JsonValue& aTrack) {
    const JsonValue& lBecomes = aTrack["becomes"];
    const bool lPlays = aTrack["track"].IsNumber();
    mHtml.Open("section", {{"class", "card"}});
    mHtml.Element("h3", (lPlays ? "Track " + Decimal(aTrack["track"], 0, ": ") : "Not played: ") +
                            lBecomes["format"].Text() + " " + lBecomes["profile"].Text());
    Table lTable;
    AddText("Level", lBecomes["level"].Text(), lTable);
    if (lBecomes["width"].IsNumber()) {
        lTable.Add({"Picture", Decimal(lBecomes["width"], 0, " x ") + Decimal(lBecomes["height"], 0, "")});
    }
    AddNumber("Rate", lBecomes["rate"], 0, " Hz", lTable);
    AddNumber("Channels", lBecomes["channels"], 0, "", lTable);
    AddText("File", lBecomes["extension"].Text(), lTable);
    AddText("Obstacle", lBecomes["obstacle"].Text(), lTable);
    for (const auto& [lIndex, lTrack] : mFindings.mTracks) {
        if (lPlays && aTrack["track"].Number() == lIndex) { AddFigures(lTrack, lTable); }
    }
    lTable.Draw(mHtml);
    AddProperties(aTrack["properties"]);
    mHtml.Close();
}

std::string Page::TrackName(unsigned aTrack) const {
    const auto lFound = mFindings.mTracks.find(aTrack);
    const std::string lFormat = mFindings.mTracks.end() == lFound ? "" : lFound->second.mFormat;
    return StringWithFormat("Track %u", aTrack) + (lFormat.empty() ? "" : ", " + lFormat);
}

void Page::AddPlots() {
    Plot lPlots[] = {{"Bitrate", "kbit/s"},
                     {"Lost", "packets in each second"},
                     {"Jitter", "ms"},
                     {"Buffered time", "s"},
                     {"Interval between access units", "ms of play time"},
                     {"Interval between key frames", "ms of play time"}};
    for (const auto& [lIndex, lTrack] : mFindings.mTracks) {
        Findings::Points lKeys = Findings::Intervals(lTrack.mKeys);
        // Of sound every unit is one.
        if (lTrack.mKeys.size() == lTrack.mUnits.size()) { lKeys.clear(); }
        std::size_t lPlot = 0;
        for (const Findings::Points& lPoints : {lTrack.mRate, lTrack.mLost, lTrack.mJitter, lTrack.mBuffered,
                                                Findings::Intervals(lTrack.mUnits), lKeys}) {
            lPlots[lPlot++].Add(lIndex, TrackName(lIndex), lPoints);
        }
    }
    if (lPlots[0].IsEmpty()) { return; }
    mHtml.Element("h2", "Reception").Open("div", {{"class", "cards"}});
    for (const Plot& lPlot : lPlots) {
        lPlot.Draw(mHtml);
    }
    mHtml.Close();
}

void Page::AddPictures() {
    if (mFindings.mPictures.empty()) { return; }
    mHtml.Element("h2", "Pictures").Open("div", {{"class", "sheet"}});
    for (const Findings::Picture& lPicture : mFindings.mPictures) {
        const std::string lTime = PlayTime(lPicture.mPlayTime);
        mHtml.Open("figure").Void("img", {{"src", "data:image/jpeg;base64," + lPicture.mData}, {"alt", "at " + lTime}});
        mHtml.Element("figcaption", lTime).Close();
    }
    mHtml.Close();
}

}  // namespace Virertsp
