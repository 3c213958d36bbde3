#include "report/Page.hpp"

#include <gmock/gmock.h>

#include "FakeSession.hpp"
#include "Json.hpp"
#include "report/Gallery.hpp"
#include "report/Plot.hpp"

namespace Virertsp {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

/// What would become markup in text and in attributes, and command a terminal.
constexpr char kHostile[] = "<script>alert(1)</script>\"'><img src=x onerror=alert(2)>&amp;\x1b[2J";

std::string Hostile() {
    Json lJson;
    lJson.String(kHostile);
    return lJson.Text();
}

std::string PageOf(const std::vector<std::string>& aLines) {
    Findings lFindings;
    for (const std::string& lLine : aLines) {
        EXPECT_TRUE(lFindings.Take(lLine)) << lLine;
    }
    return Page(lFindings).Text();
}

std::string Row(unsigned aTrack, const std::string& aTime, const std::string& aLost, const std::string& aFormat) {
    return "{\"type\":\"track\",\"time_s\":" + aTime + ",\"track\":" + std::to_string(aTrack) +
           ",\"format\":" + aFormat + ",\"packets\":9,\"lost\":" + aLost +
           ",\"jitter_ms\":1.5,\"kbit_per_s\":100,\"buffered_s\":1}";
}

TEST(PageTest, NothingThatAServerSaysBecomesMarkup) {
    const std::string lText = Hostile();
    const std::string lPage = PageOf({
        "{\"url\":" + lText + ",\"server\":" + lText + ",\"range\":{\"begin_s\":0,\"end_s\":null},\"session\":{" +
            lText + ":" + lText + "},\"tracks\":[{\"track\":0,\"becomes\":{\"format\":" + lText +
            ",\"profile\":" + lText + ",\"level\":" + lText + ",\"extension\":" + lText + ",\"obstacle\":" + lText +
            "},\"properties\":{" + lText + ":" + lText + "}}],\"requests\":[{\"method\":" + lText +
            ",\"url\":" + lText + ",\"status\":200,\"reason\":" + lText + ",\"round_trip_ms\":1}]}",
        Row(0, "1", "0", lText),
        "{\"type\":\"summary\",\"track\":0,\"format\":" + lText + ",\"end\":" + lText + "}",
        "{\"type\":\"picture\",\"track\":0,\"play_s\":1,\"jpeg\":" + lText + "}",
        "{\"type\":\"failure\",\"text\":" + lText + "}",
    });
    for (const char* const lMarkup : {"<script", "<img src=x", "onerror=alert(2)>", "\"'>", "\x1b"}) {
        EXPECT_THAT(lPage, Not(HasSubstr(lMarkup)));
    }
    EXPECT_THAT(lPage, HasSubstr("<h1>&lt;script&gt;alert(1)&lt;/script&gt;&quot;&#39;&gt;&lt;img src=x "
                                 "onerror=alert(2)&gt;&amp;amp;?[2J</h1>"));
    EXPECT_THAT(lPage, HasSubstr("<img src=\"data:image/jpeg;base64,&lt;script&gt;"));
    EXPECT_THAT(lPage, HasSubstr("content=\"default-src &#39;none&#39;; style-src"));
}

TEST(PageTest, ShowsWhatWasFound) {
    const std::string lPage = PageOf({
        R"({"url":"rtsp://host/clip","server":"Test/1.0","range":{"begin_s":0,"end_s":12.5},"session":{},"tracks":[)"
        R"({"track":0,"becomes":{"format":"H.264","profile":"High","width":320,"height":240},"properties":{"Id":"v"}},)"
        R"({"track":null,"becomes":{"format":"VP8","obstacle":"None here."}}],)"
        R"("requests":[{"method":"DESCRIBE","url":"x","status":200,"reason":"OK","round_trip_ms":12.34},{"method":"PLAY"}]})",
        Row(0, "1", "0", "\"H264\""),
        Row(0, "2", "3", "\"H264\""),
        R"({"type":"unit","track":0,"play_s":0,"key":true})",
        R"({"type":"unit","track":0,"play_s":0.08,"key":false})",
        R"({"type":"unit","track":0,"play_s":0.04,"key":false})",
        R"({"type":"summary","track":0,"format":"H264","packets":20,"lost":4,"jitter_peak_ms":2.5,"end":"bye"})",
        R"({"type":"picture","track":0,"play_s":61.5,"jpeg":"QUJD"})",
        R"({"type":"failure","text":"The connection broke."})",
    });
    for (const char* const lPiece : {
             "<title>rtsp://host/clip</title>",
             "<p class=\"dim\">Test/1.0 \u00B7 00:00.0 to 00:12.5</p>",
             "<p class=\"bad\">The connection broke.</p>",
             "<h3>Track 0: H.264 High</h3>",
             "<td>320 x 240</td>",
             "<h3>Not played: VP8 </h3>",
             "<td>None here.</td>",
             "<td>DESCRIBE</td>\n<td>12.3 ms</td>\n<td>200 OK</td>",
             "<td>PLAY</td>\n<td></td>\n<td>no answer</td>",
             "<th scope=\"row\">Lost</th>\n<td>4</td>",
             "<td>3, key frames 1</td>",
             "<b>Lost, packets in each second</b>\n<span class=\"key c0\">Track 0, H264: 0 to 3</span>",
             "<b>Interval between access units, ms of play time</b>\n<span class=\"key c0\">Track 0, H264: 40</span>",
             "<img src=\"data:image/jpeg;base64,QUJD\" alt=\"at 01:01.5\"/>",
         }) {
        EXPECT_THAT(lPage, HasSubstr(lPiece));
    }
    // One key frame has no interval.
    EXPECT_THAT(lPage, Not(HasSubstr("between key frames")));
}

TEST(PageTest, LinesThatAreNotUnderstoodChangeNothing) {
    Findings lFindings;
    for (const char* const lLine :
         {"", "text", "[]", "{}", R"({"type":"else"})", R"({"type":"unit"})", R"({"type":"unit","track":-1})",
          R"({"type":"track","track":128})", R"({"type":"track","track":1e300})", R"({"type":"track","track":"0"})"}) {
        EXPECT_FALSE(lFindings.Take(lLine)) << lLine;
    }
    EXPECT_TRUE(lFindings.mTracks.empty());
}

TEST(PageTest, FiguresBeyondAllMeasureAreDrawnInTheFrame) {
    const std::string lPage = PageOf({Row(0, "1e300", "-1e308", "\"\""), Row(0, "-1e300", "1e308", "\"\""),
                                      Row(1, "1e12", "0", "\"\""), Row(1, "1000000000000.0001", "0", "\"\"")});
    EXPECT_THAT(lPage, HasSubstr("<svg"));
    EXPECT_THAT(lPage, Not(HasSubstr("inf")));
    EXPECT_THAT(lPage, Not(HasSubstr("nan")));
    EXPECT_LT(lPage.size(), 40000U);
}

TEST(PlotTest, ManyPointsBecomeTheLowestAndHighestOfEachColumn) {
    Findings::Points lPoints;
    for (unsigned i = 0; i < 1000; ++i) {
        lPoints.push_back({static_cast<double>(i), 503 == i ? 99. : static_cast<double>(i % 2)});
    }
    const Findings::Points lThinned = Thinned(lPoints, 10);
    ASSERT_EQ(20U, lThinned.size());
    for (std::size_t i = 1; i < lThinned.size(); ++i) {
        EXPECT_LT(lThinned[i - 1].mX, lThinned[i].mX);
    }
    EXPECT_EQ(99, lThinned[11].mY);
    EXPECT_EQ(20U, Thinned(Findings::Points(20, {0, 0}), 10).size());
}

TEST(GalleryTest, KeepsPicturesSpreadOverAllThatCame) {
    FakePlayer lPlayer({{"MP4V-ES"}});
    const std::string lKey("\0\0\1\xB6\0", 5);
    const std::string lOther("\0\0\1\xB6\x40", 5);
    for (const unsigned lCount : {1U, 16U, 17U, 40U, 1000U}) {
        Gallery lGallery;
        for (unsigned i = 0; i < lCount; ++i) {
            for (const std::string& lData : {lKey, lOther}) {
                lGallery.Take(lPlayer, 0, Player::Packet(Player::Time(i, 1), lData.data(), 5));
            }
        }
        const std::vector<Player::Time> lTimes = lGallery.PlayTimes();
        EXPECT_EQ(Player::Time(0), lTimes.front());
        EXPECT_LE(lTimes.size(), 16U);
        EXPECT_GE(lTimes.size(), std::min(lCount, 8U));
        for (std::size_t i = 2; i < lTimes.size(); ++i) {
            EXPECT_EQ(lTimes[1], lTimes[i] - lTimes[i - 1]);
        }
        if (lTimes.size() > 1) { EXPECT_GE(lTimes.back() + lTimes[1], Player::Time(lCount, 1)); }
    }
}

}  // namespace
}  // namespace Virertsp
