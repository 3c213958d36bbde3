#include "report/ReportObserver.hpp"

#include "Json.hpp"
#include "writers/RandomAccess.hpp"

namespace Virertsp {

void ReportObserver::Sample(const Player::MediaPlayer& aPlayer, Player::TrackIdx aTrack,
                            const Player::Packet& aSample) {
    const std::string_view lData(reinterpret_cast<const char*>(aSample.Begin()), aSample.Size());
    Json lJson;
    lJson.Open('{').Key("type").String("unit").Key("track").Number(aTrack);
    lJson.Key("play_s").Decimal(aSample.PlayTime().ToSeconds(), 6).Key("bytes").Number(aSample.Size());
    lJson.Key("key").Bool(IsRandomAccess(CodingOf(*aPlayer.GetTrackInfo(aTrack)), lData)).Close();
    mPrint(lJson.Text() + "\n");
    if (nullptr != mGallery) { mGallery->Take(aPlayer, aTrack, aSample); }
}

}  // namespace Virertsp
