#include "threads/PlayerAccess.hpp"

#include "Player/Report.hpp"
#include "threads/Boundary.hpp"

namespace nsGstVireRtspSrc {

namespace {

/// Samples dropped per call and unplayed track: more than arrive between two calls for a played one.
constexpr int kDropAtMost = 16;

Player::MediaPlayer* MakeMediaPlayer() {
    return new Player::MediaPlayer;
}

PlayerAccess::MakePlayer gMake = MakeMediaPlayer;

}  // namespace

PlayerAccess::Hold::Hold(PlayerAccess& aAccess) : m_access(aAccess) {
    m_access.m_playerMutex.lock();
}

PlayerAccess::Hold::~Hold() {
    m_access.LetGo();
}

PlayerAccess::PlayerAccess(OnFailure aOnFailure) : m_onFailure(std::move(aOnFailure)), m_player(gMake()) {}

PlayerAccess::~PlayerAccess() = default;

void PlayerAccess::SetMaker(MakePlayer aMake) {
    gMake = nullptr == aMake ? MakeMediaPlayer : aMake;
}

void PlayerAccess::SetConfigParam(const std::string& aKey, const std::string& aValue) {
    {
        const Lock lLock(m_pendingMutex);
        m_pending.emplace_back(aKey, aValue);
    }
    // Whoever holds the player looks for pending settings after it has let go: none is lost.
    if (m_playerMutex.try_lock()) { LetGo(); }
}

void PlayerAccess::LetGo() {
    do {
        // Destructors let go: nothing may be thrown here.
        std::vector<Player::Exception> lRefused;
        AtBoundary(nullptr, [this, &lRefused]() VIRE_UNCHECKED { lRefused = ApplyPending(); });
        m_playerMutex.unlock();
        for (const auto& lException : lRefused) {
            AtBoundary(nullptr, [this, &lException] {
                if (m_onFailure) { m_onFailure(lException); }
            });
        }
    } while (HasPending() && m_playerMutex.try_lock());
}

bool PlayerAccess::HasPending() {
    const Lock lLock(m_pendingMutex);
    return !m_pending.empty();
}

PlayerAccess::Pairs PlayerAccess::TakePending() {
    Pairs lPending;
    const Lock lLock(m_pendingMutex);
    lPending.swap(m_pending);
    return lPending;
}

std::vector<Player::Exception> PlayerAccess::ApplyPending() {
    std::vector<Player::Exception> lRefused;
    for (const auto& lPair : TakePending()) {
        try {
            m_player->SetConfigParam(lPair.first, lPair.second);
        } catch (const Player::Exception& lException) {
            lRefused.push_back(lException);
        } catch (const std::exception& lException) {
            Player::Report(__FILE__, __LINE__, Player::Severity::Error, "Setting %s: %s", lPair.first.c_str(),
                           lException.what());
        }
    }
    return lRefused;
}

Player::SharedPtr<Player::Packet, Player::SharedObject> PlayerAccess::TakePacket(unsigned int aTrack) {
    const Hold lPlayer(*this);
    DropUnplayed();
    return lPlayer->GetTrackPacket(aTrack);
}

PlayerAccess::Intake PlayerAccess::TakeIn(unsigned int aTrack) {
    const Hold lPlayer(*this);
    try {
        lPlayer->TakeIn();
        return {lPlayer->GetTrackReception(aTrack).mPacketsReceived, lPlayer->MediaWaits()};
    } catch (const Player::Exception&) {
        // Reported where it was thrown.
    } catch (const std::exception& lException) {
        Player::Report(__FILE__, __LINE__, Player::Severity::Error, "Taking in: %s", lException.what());
    }
    return {0, false};
}

PlayerAccess::Arrival PlayerAccess::NextArrival(unsigned int aTrack) {
    const Hold lPlayer(*this);
    return {lPlayer->MediaDescriptor(aTrack), lPlayer->GetTrackReception(aTrack).mPacketsReceived};
}

void PlayerAccess::DropUnplayed() {
    for (const unsigned int lTrack : m_unplayed) {
        // What fails here fails for the played track as well, if that needs it, and is reported there.
        try {
            for (int lDropped = 0; lDropped < kDropAtMost && m_player->GetTrackPacket(lTrack); ++lDropped) {}
        } catch (const Player::Exception&) { return; }
    }
}

Player::Properties PlayerAccess::TrackInfo(unsigned int aTrack) {
    const Hold lPlayer(*this);
    return *lPlayer->GetTrackInfo(aTrack);
}

PlayerAccess::Figures PlayerAccess::GetFigures() {
    if (m_playerMutex.try_lock()) {
        const Hold lPlayer(*this, std::adopt_lock);
        Figures lNow;
        lNow.mRoundTrip = lPlayer->RoundTrip();
        for (unsigned int lTrack = 0; lTrack < lPlayer->GetTrackCount(); ++lTrack) {
            lNow.mTracks.push_back(lPlayer->GetTrackReception(lTrack));
        }
        const Lock lLock(m_pendingMutex);
        std::swap(m_figures, lNow);
    }
    const Lock lLock(m_pendingMutex);
    return m_figures;
}

void PlayerAccess::SetUnplayedTracks(std::vector<unsigned int> aTracks) {
    const Hold lPlayer(*this);
    m_unplayed = std::move(aTracks);
}

void PlayerAccess::Renew() {
    std::unique_ptr<Player::MediaPlayer> lPlayer(gMake());
    const Hold lHold(*this);
    m_unplayed.clear();
    m_player.swap(lPlayer);
}

}  // namespace nsGstVireRtspSrc
