#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "Player/Exception.hpp"
#include "Player/MediaPlayer.hpp"
#include "threads/Lock.hpp"

namespace nsGstVireRtspSrc {

/// The media player of an element, guarded by the player mutex, which serialises every call into the library.
/// Whoever holds it waits for no streaming task and for no other lock of the element but leaf locks.
class PlayerAccess {
public:
    using MakePlayer = Player::MediaPlayer* (*)();
    using OnFailure = std::function<void(const Player::Exception&)>;

    /// `aOnFailure` hears of settings that the player refused, on the thread that applied them and with no
    /// lock held here.
    explicit PlayerAccess(OnFailure aOnFailure = OnFailure());
    ~PlayerAccess();
    PlayerAccess(const PlayerAccess&) = delete;
    PlayerAccess& operator=(const PlayerAccess&) = delete;

    /// The player, locked for as long as this object lives. Settings that came meanwhile are applied when
    /// it lets go.
    class VIRE_SCOPED_CAPABILITY Hold {
    public:
        explicit Hold(PlayerAccess& aAccess) VIRE_ACQUIRE(aAccess.m_playerMutex);
        /// Where the player mutex is held already.
        Hold(PlayerAccess& aAccess, std::adopt_lock_t) VIRE_REQUIRES(aAccess.m_playerMutex) : m_access(aAccess) {}
        ~Hold() VIRE_RELEASE();
        Hold(const Hold&) = delete;
        Hold& operator=(const Hold&) = delete;

        Player::MediaPlayer* operator->() const VIRE_UNCHECKED { return m_access.m_player.get(); }

    private:
        PlayerAccess& m_access;
    };

    /// Hands a setting to the player without ever waiting: where the player is held, its holder applies it.
    void SetConfigParam(const std::string& aKey, const std::string& aValue);

    /// The track's next packet, or null; reads from the network.
    Player::SharedPtr<Player::Packet, Player::SharedObject> TakePacket(unsigned int aTrack);
    /// How many packets of the track have arrived since it was played or sought, and `MediaWaits`.
    struct Intake {
        unsigned int mReceived;
        bool mMediaWaits;
    };
    /// Reads what has arrived and keeps it; never throws. `TakePacket` reports what fails here.
    Intake TakeIn(unsigned int aTrack);
    /// What becomes readable when media of the track arrives, or -1, and how many of its packets have arrived.
    struct Arrival {
        int mDescriptor;
        unsigned int mReceived;
    };
    Arrival NextArrival(unsigned int aTrack);
    /// A copy of the track's description, good without the lock.
    Player::Properties TrackInfo(unsigned int aTrack);

    /// Those of each track's reception, and of the session.
    struct Figures {
        std::vector<Player::Reception> mTracks;
        Player::Time mRoundTrip;
    };
    /// Never waits: while the player is held, these are the figures of the last time.
    Figures GetFigures();

    /// The tracks that no stream plays: what arrives for them is read and dropped along with the others, so
    /// that it does not pile up and their end is noticed.
    void SetUnplayedTracks(std::vector<unsigned int> aTracks);

    /// A new player in place of the old one; settings are not carried over.
    void Renew();

    /// What makes players from now on; tests put in one that talks to no network.
    static void SetMaker(MakePlayer aMake);

private:
    using Pairs = std::vector<std::pair<std::string, std::string>>;

    void DropUnplayed() VIRE_REQUIRES(m_playerMutex);
    Pairs TakePending();
    bool HasPending();
    /// Gives back what was refused.
    std::vector<Player::Exception> ApplyPending() VIRE_REQUIRES(m_playerMutex);
    /// Lets go of the player mutex. What a setter leaves pending in the last moment is applied, here or by the
    /// next holder.
    void LetGo() VIRE_RELEASE(m_playerMutex);

    const OnFailure m_onFailure;
    Mutex m_playerMutex;
    std::unique_ptr<Player::MediaPlayer> m_player VIRE_GUARDED_BY(m_playerMutex);
    std::vector<unsigned int> m_unplayed VIRE_GUARDED_BY(m_playerMutex);
    Mutex m_pendingMutex;  ///< A leaf.
    Figures m_figures VIRE_GUARDED_BY(m_pendingMutex);
    Pairs m_pending VIRE_GUARDED_BY(m_pendingMutex);  ///< In the order in which they came.
};

}  // namespace nsGstVireRtspSrc
