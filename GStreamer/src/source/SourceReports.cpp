#include "source/Source.hpp"

#include "debug/Debug.hpp"

#define GST_CAT_DEFAULT SourceCategory()

namespace nsGstVireRtspSrc {

namespace {

/// The error that is posted when the network has timed out.
constexpr int kNetworkTimeOut = 33043;

/// The session was never started: there is nothing that a person could do about it.
bool IsNoSession(const Player::Exception& aException) {
    return static_cast<unsigned short>(Player::Area::kSystem) == aException.Category() &&
           Player::ErrorCode::kNoSession == aException.Error();
}

}  // namespace

void Source::stream_controller_status(StreamStatus aStatus, unsigned int aTrack) {
    const int lTrack = static_cast<int>(aTrack);
    switch (aStatus) {
        case kNoData:
            if (m_buffering.no_data([this] { return m_streams.all_have_no_data(); })) {
                GST_DEBUG_OBJECT(m_element, "kOk -> kNoData on track %d", lTrack);
            }
            break;
        case kTimedOut: report_timed_out(aTrack); break;
        case kOk:
            if (m_buffering.data()) { GST_DEBUG_OBJECT(m_element, "kNoData -> kOk on track %d", lTrack); }
            break;
    }
}

/// Under the player mutex: a seek that brings media again forgets the time-out under it as well.
void Source::report_timed_out(unsigned int aTrack) {
    GST_DEBUG_OBJECT(m_element, "got kTimedOut from track %d", static_cast<int>(aTrack));
    bool lFirst = false;
    {
        const PlayerAccess::Hold lPlayer(m_player);
        if (!lPlayer->HasTimedOut()) { return; }
        lFirst = !m_networkTimedOut.exchange(true);
    }
    GST_DEBUG_OBJECT(m_element, "Timed out");
    network_timeout(lFirst);
}

void Source::network_timeout(bool aFirst) {
    GST_DEBUG_OBJECT(m_element, "Send buffer event: %d", kNetworkTimeOut);
    m_messages.error(kNetworkTimeOut);
    if (aFirst) { m_messages.warn_timed_out(url()); }
}

void Source::stream_controller_exception(const Player::Exception& aException, unsigned int /*aTrack*/) {
    handle_exception(&aException, "Receiving");
}

/// One error ends a pipeline. A track that nothing is linked to is the application's choice, as long as another is.
void Source::stream_controller_peer_failed(GstFlowReturn aResult, unsigned int aTrack) {
    if (GST_FLOW_NOT_LINKED == aResult && !m_streams.all_are_unlinked()) { return; }
    if (!m_peersFailed.exchange(true)) { m_messages.fail_flow(aTrack, aResult); }
}

void Source::handle_exception(const Player::Exception* aException, const char* aWhat) {
    GST_ERROR_OBJECT(m_element, "Exception. Code: %d, Category: %d, Error: %d, Message: %s\r\n",
                     static_cast<int>(aException->Code()), aException->Category(), aException->Error(),
                     aException->Message());
    m_messages.error(static_cast<gint>(aException->Code()));
    if (!IsNoSession(*aException)) { m_messages.warn_failed(aWhat, url(), *aException); }
}

bool Source::guarded(const char* aWhat, const std::function<void()>& aAction) {
    try {
        aAction();
        return true;
    } catch (const Player::Exception& lException) {
        handle_exception(&lException, aWhat);
    } catch (const std::exception& lException) {
        GST_ERROR_OBJECT(m_element, "%s failed: %s", aWhat, lException.what());
        m_messages.warn_failed(aWhat, url(), lException.what());
    } catch (...) {
        GST_ERROR_OBJECT(m_element, "%s failed", aWhat);
        m_messages.warn_failed(aWhat, url(), "the reason is unknown");
    }
    return false;
}

void Source::resetPlayerLib() {
    const bool lKeeps = m_options.profile().keeps_settings();
    if (!lKeeps) { delete_all_streams(); }
    m_player.Renew();
    if (lKeeps) { give_settings(); }
    m_networkTimedOut = false;
    m_buffering.forget();
}

}  // namespace nsGstVireRtspSrc
