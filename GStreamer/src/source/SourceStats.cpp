#include "source/Source.hpp"

#include "Player/String.hpp"

namespace nsGstVireRtspSrc {

namespace {

guint64 NanoSeconds(const Player::Time& aTime) {
    const long long lTime = aTime.NanoSeconds();
    return lTime > 0 ? static_cast<guint64>(lTime) : 0;
}

GstStructure* FiguresOf(const Player::Reception& aReception, guint64 aAccessUnits, guint64 aRoundTrip) {
    GstStructure* const lFigures = gst_structure_new(
        "track", "packets", G_TYPE_UINT, aReception.mPacketsReceived, "lost", G_TYPE_INT, aReception.mPacketsLost,
        "late", G_TYPE_UINT, aReception.mPacketsLate, "reordered", G_TYPE_UINT, aReception.mPacketsReordered,
        "duplicate", G_TYPE_UINT, aReception.mPacketsDuplicate, "bytes", G_TYPE_UINT64, guint64{aReception.mBytes},
        "jitter", G_TYPE_UINT64, NanoSeconds(aReception.mJitter), "buffered-time", G_TYPE_UINT64,
        NanoSeconds(aReception.mBufferedTime), "access-units", G_TYPE_UINT64, aAccessUnits, nullptr);
    if (0 != aRoundTrip) { gst_structure_set(lFigures, "round-trip", G_TYPE_UINT64, aRoundTrip, nullptr); }
    return lFigures;
}

}  // namespace

GstStructure* Source::stats() {
    const auto [lTracks, lRoundTrip] = m_player.GetFigures();
    GstStructure* const lStats =
        gst_structure_new("virertspsrc-stats", "tracks", G_TYPE_UINT, static_cast<guint>(lTracks.size()), nullptr);
    for (unsigned int lTrack = 0; lTrack < lTracks.size(); ++lTrack) {
        GstStructure* const lFigures =
            FiguresOf(lTracks[lTrack], m_streams.access_units(lTrack), NanoSeconds(lRoundTrip));
        const std::string lName = Player::StringWithFormat("src%u", lTrack);
        gst_structure_set(lStats, lName.c_str(), GST_TYPE_STRUCTURE, lFigures, nullptr);
        gst_structure_free(lFigures);
    }
    return lStats;
}

}  // namespace nsGstVireRtspSrc
