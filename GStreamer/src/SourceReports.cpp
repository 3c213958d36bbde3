#include <unistd.h>

#include "Source.hpp"

#define GST_CAT_DEFAULT SourceCategory()

namespace nsGstVireRtspSrc {

namespace {

/// What an application is told when the network has timed out.
constexpr int kNetworkTimeOut = 33043;

/// Between two tries for the state lock, in microseconds.
constexpr useconds_t kTryInterval = 5000;

/// The session was never started: there is nothing that a person could do about it.
bool IsNoSession(const Player::Exception& aException) {
    return static_cast<unsigned short>(Player::Area::kSystem) == aException.Category() &&
           Player::ErrorCode::kNoSession == aException.Error();
}

}  // namespace

void Source::stream_controller_status(StreamStatus aStatus, unsigned int aTrack) {
    switch (aStatus) {
        case kNoData: report_no_data(aTrack); break;
        case kTimedOut: report_timed_out(aTrack); break;
        case kOk: report_ok(aTrack); break;
    }
}

void Source::report_no_data(unsigned int aTrack) {
    const Lock lBuffering(m_bufferingMutex);
    if (m_buffering || !have_all_streams_no_data()) { return; }
    GST_DEBUG_OBJECT(m_element, "kOk -> kNoData on track %d", static_cast<int>(aTrack));
    m_buffering = true;
    m_bufferingUnanswered = true;
    m_messages.buffering(0);
}

void Source::report_ok(unsigned int aTrack) {
    const Lock lBuffering(m_bufferingMutex);
    if (!m_buffering) { return; }
    GST_DEBUG_OBJECT(m_element, "kNoData -> kOk on track %d", static_cast<int>(aTrack));
    m_buffering = false;
    m_bufferingUnanswered = false;
    m_messages.buffering(100);
}

/// Tasks are run again: who was told to wait for data is told to go on.
void Source::answer_buffering() {
    const Lock lBuffering(m_bufferingMutex);
    m_buffering = false;
    if (!m_bufferingUnanswered) { return; }
    m_bufferingUnanswered = false;
    m_messages.buffering(100);
}

bool Source::have_all_streams_no_data() const {
    const Lock lStreams(m_streamsMutex);
    for (unsigned int lTrack = 0; lTrack < m_streams->len; ++lTrack) {
        const Stream* const lStream = stream_at(lTrack);
        if (nullptr != lStream && kNoData != lStream->status_get()) { return false; }
    }
    return true;
}

bool Source::is_task_wanted(unsigned int aTrack) const {
    const Lock lStreams(m_streamsMutex);
    const Stream* const lStream = stream_at(aTrack);
    return nullptr != lStream && lStream->task_is_wanted();
}

void Source::report_timed_out(unsigned int aTrack) {
    GST_DEBUG_OBJECT(m_element, "got kTimedOut from track %d", static_cast<int>(aTrack));
    for (;;) {
        const TryLock lState(m_stateMutex);
        if (lState.Held()) {
            if (PlayerAccess::Hold(m_player)->HasTimedOut()) {
                GST_DEBUG_OBJECT(m_element, "Timed out");
                network_timeout();
            }
            return;
        }
        // The transition that has the lock may be waiting for this very task.
        if (!is_task_wanted(aTrack)) { return; }
        usleep(kTryInterval);
    }
}

void Source::network_timeout() {
    const bool lFirst = !m_networkTimedOut;
    m_networkTimedOut = true;
    GST_DEBUG_OBJECT(m_element, "Send buffer event: %d", kNetworkTimeOut);
    m_messages.error(kNetworkTimeOut);
    if (lFirst) { m_messages.warn_timed_out(m_settings.location()); }
}

void Source::stream_controller_exception(const Player::Exception& aException, unsigned int /*aTrack*/) {
    handle_exception(&aException, "Receiving");
}

void Source::handle_exception(const Player::Exception* aException, const char* aWhat) {
    GST_ERROR_OBJECT(m_element, "Exception. Code: %d, Category: %d, Error: %d, Message: %s\r\n",
                     static_cast<int>(aException->Code()), aException->Category(), aException->Error(),
                     aException->Message());
    m_messages.error(static_cast<gint>(aException->Code()));
    if (!IsNoSession(*aException)) { m_messages.warn_failed(aWhat, m_settings.location(), *aException); }
}

bool Source::guarded(const char* aWhat, const std::function<void()>& aAction) {
    try {
        aAction();
        return true;
    } catch (const Player::Exception& lException) {
        handle_exception(&lException, aWhat);
    } catch (const std::exception& lException) {
        GST_ERROR_OBJECT(m_element, "%s failed: %s", aWhat, lException.what());
        m_messages.warn_failed(aWhat, m_settings.location(), lException.what());
    } catch (...) {
        GST_ERROR_OBJECT(m_element, "%s failed", aWhat);
        m_messages.warn_failed(aWhat, m_settings.location(), "nobody knows why");
    }
    return false;
}

void Source::resetPlayerLib() {
    delete_all_streams();
    m_player.Renew();
    m_networkTimedOut = false;
    const Lock lBuffering(m_bufferingMutex);
    m_buffering = false;
}

}  // namespace nsGstVireRtspSrc
