#pragma once

#include "recording/StatsObserver.hpp"
#include "report/Gallery.hpp"

namespace Virertsp {

/// Notes for a report, as lines of JSON: the reception each second, and every access unit.
class ReportObserver : public StatsObserver {
public:
    /// The gallery outlives this; null keeps no pictures.
    ReportObserver(double aSeconds, const Print& aPrint, Gallery* aGallery)
        : StatsObserver(true, aSeconds, aPrint), mPrint(aPrint), mGallery(aGallery) {}

    void Sample(const Player::MediaPlayer& aPlayer, Player::TrackIdx aTrack, const Player::Packet& aSample) override;

private:
    Print mPrint;
    Gallery* mGallery;
};

}  // namespace Virertsp
