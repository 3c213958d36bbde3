#include "Player/MediaHandler.hpp"

#include "MediaSessions/RTSP.hpp"
#include "Throw.hpp"

namespace Player {

MediaHandler::MediaHandler() : SharedObject(0), mConfig(new Properties) {}

MediaHandler::~MediaHandler() = default;

void MediaHandler::Play(const std::string& aURL, Time aStart) {
    if (!mSession) { mSession.Set(new MediaSessions::RTSP); }
    mSession->Configure(*mConfig);
    mSession->Play(*this, aURL, aStart);
}

void MediaHandler::SetConfigParam(const std::string& aKey, const std::string& aVal) {
    mConfig->Insert(aKey, aVal);
    if (mSession) { mSession->Configure(*mConfig); }
}

MediaSession& MediaHandler::SessionFor(const char* aOperation) const {
    if (!mSession) {
        PLAYER_THROW(SystemErr, ErrorCode::kNoSession, "MediaHandler::%s(): %s", aOperation, "No valid media session");
    }
    return *mSession;
}

bool MediaHandler::Produce(UInt aTrack) {
    return SessionFor("Produce").Produce(aTrack);
}

bool MediaHandler::Fetch(UInt aTrack) {
    return SessionFor("Fetch").Fetch(aTrack);
}

bool MediaHandler::Fill(UInt aTrack) {
    return SessionFor("Fill").Fill(aTrack);
}

void MediaHandler::TakeIn() {
    SessionFor("TakeIn").TakeIn();
}

void MediaHandler::Seek(Time aTo) {
    SessionFor("Seek").Seek(*this, aTo);
}

void MediaHandler::Pause() {
    SessionFor("Pause").Pause(*this);
}

void MediaHandler::Resume() {
    SessionFor("Resume").Resume(*this);
}

void MediaHandler::Stop() {
    SessionFor("Stop").Stop(*this);
}

void MediaHandler::Close() {
    SessionFor("Close").Close(*this);
}

void MediaHandler::RequestSent(const std::string& /*aMethod*/, const std::string& /*aURL*/) {}

void MediaHandler::ResponseReceived(UInt /*aStatus*/, const std::string& /*aReason*/, const std::string& /*aServer*/) {}

}  // namespace Player
