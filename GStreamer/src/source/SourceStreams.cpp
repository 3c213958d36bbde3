#include "source/Source.hpp"

#include <unistd.h>

#include <algorithm>

#include "Player/String.hpp"
#include "debug/Debug.hpp"
#include "streams/StreamFactory.hpp"

#define GST_CAT_DEFAULT SourceCategory()

namespace nsGstVireRtspSrc {

namespace {

/// Between two looks for a first packet, in microseconds.
constexpr useconds_t kWaitInterval = 10000;

/// A socket holds less of a fast stream than comes in that time, so it is emptied so often meanwhile.
constexpr useconds_t kTakeInsPerWait = 5;

/// How long a first packet is looked for, apart from the time in which media gather. The player gives up on a silent
/// server sooner; this ends the waiting for one that sends without end what makes no packet, while the application
/// waits for the transition.
constexpr unsigned int kMostSeconds = 30;
constexpr unsigned int kMostGatheredSeconds = 3600;
constexpr unsigned int kLooksPerSecond = 1000000 / kWaitInterval;

gint64 OrUnknown(const Player::Time& aTime) {
    const gint64 lTime = aTime.NanoSeconds();
    return 0 == lTime ? -1 : lTime;
}

}  // namespace

bool Source::configure_streams() {
    const unsigned int tracks = [this] { return PlayerAccess::Hold(m_player)->GetTrackCount(); }();
    remove_changed_streams(tracks);
    // Handlers of the pads' signals may seek.
    read_times();
    create_missing_streams(tracks);
    m_streams.cut(tracks);
    PLAYER_ASSERT(tracks == m_streams.size());
    tell_times();
    return settle_unplayed_tracks();
}

void Source::remove_changed_streams(unsigned int aTracks) {
    for (unsigned int lTrack = 0; lTrack < aTracks && lTrack < m_streams.size(); ++lTrack) {
        Stream* const lStream = m_streams.at(lTrack);
        if (nullptr != lStream && !lStream->caps_are_valid()) { m_streams.clear(lTrack); }
    }
}

void Source::create_missing_streams(unsigned int aTracks) {
    bool lAdded = false;
    for (unsigned int lTrack = 0; lTrack < aTracks; ++lTrack) {
        if (nullptr != m_streams.at(lTrack)) { continue; }
        Stream* const lStream = create_stream(lTrack);
        m_streams.put(lTrack, lStream);
        lAdded = lAdded || nullptr != lStream;
    }
    if (lAdded) { gst_element_no_more_pads(m_element); }
}

/// Null for a track that no stream can play: the others go on without it.
Stream* Source::create_stream(unsigned int aTrack) {
    try {
        return StreamFactory::CreateStream(m_element, this, m_player, aTrack, m_options.profile());
    } catch (const char* lRefusal) {
        GST_ERROR_OBJECT(m_element, "Track %u: %s", aTrack, lRefusal);
        return nullptr;
    }
}

bool Source::settle_unplayed_tracks() {
    std::vector<unsigned int> lUnplayed;
    for (unsigned int lTrack = 0; lTrack < m_streams.size(); ++lTrack) {
        if (nullptr == m_streams.at(lTrack)) { lUnplayed.push_back(lTrack); }
    }
    const bool lAnyPlayed = lUnplayed.size() < m_streams.size();
    m_player.SetUnplayedTracks(std::move(lUnplayed));
    if (!lAnyPlayed) { m_messages.warn_no_tracks(url()); }
    return lAnyPlayed;
}

void Source::read_times() {
    Player::Time lStart;
    Player::Time lEnd;
    Player::Time lDuration;
    {
        const PlayerAccess::Hold lPlayer(m_player);
        lPlayer->GetAvailableRange(lStart, lEnd);
        lDuration = lPlayer->GetAvailableDuration();
    }
    m_streamStartTime = lStart.NanoSeconds();
    m_streamEndTime = OrUnknown(lEnd);
    m_streamDuration = OrUnknown(lDuration);
    m_seeking.set_range(m_streamStartTime, is_live() ? -1 : m_streamEndTime);
}

void Source::tell_times() {
    GST_DEBUG_OBJECT(m_element,
                     "StreamStartTime: %" G_GINT64_FORMAT ", StreamEndTime: %" G_GINT64_FORMAT
                     ", StreamDuration: %" G_GINT64_FORMAT,
                     m_streamStartTime, m_streamEndTime, m_streamDuration);
    m_streams.for_each([this](Stream& aStream) {
        aStream.set_duration(m_streamDuration);
        aStream.set_profile(profile());
    });
    m_messages.duration(m_streamDuration);
}

void Source::delete_all_streams() {
    m_streams.cut(0);
}

/// Ended tracks and a lost network end the waiting as well: nothing would ever come.
void Source::wait_for_packets() {
    const unsigned int lGathered =
        std::min(Player::DecimalToUInt(m_settings.text(kRtpBufferSize)), kMostGatheredSeconds);
    const unsigned int lMostLooks = (kMostSeconds + lGathered) * kLooksPerSecond;
    bool lDone = false;
    for (unsigned int lLook = 0; !lDone && lLook < lMostLooks; ++lLook) {
        lDone = has_packet_or_end();
        for (useconds_t lTakeIn = 0; lTakeIn < kTakeInsPerWait; ++lTakeIn) {
            m_player.TakeIn(0);
            usleep(kWaitInterval / kTakeInsPerWait);
        }
    }
    if (!lDone) { GST_WARNING_OBJECT(m_element, "No packet among all that the server sends; going on without"); }
}

bool Source::has_packet_or_end() {
    if (!m_network.available() || has_packet()) { return true; }
    const PlayerAccess::Hold lPlayer(m_player);
    return lPlayer->HasTimedOut() || lPlayer->IsEnded();
}

bool Source::has_packet() {
    const PlayerAccess::Hold lPlayer(m_player);
    for (unsigned int lTrack = 0; lTrack < m_streams.size(); ++lTrack) {
        if (lPlayer->TrackHasPacket(lTrack)) { return true; }
    }
    return false;
}

void Source::run_streams(bool aFlush, guint32 aSeqnum) {
    m_buffering.answer();
    m_streams.run(aFlush, aSeqnum);
}

}  // namespace nsGstVireRtspSrc
