#pragma once

#include <atomic>
#include <condition_variable>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "Player/Player.hpp"

namespace ElementTest {

/// Stands for the session and its server: while it lives, players that the element makes talk to it and to no
/// network. Says what is described, hands out media, remembers what was asked of it. From any thread.
class FakeServer {
public:
    using Description = std::vector<std::pair<std::string, std::string>>;

    FakeServer();
    FakeServer(const FakeServer&) = delete;
    FakeServer& operator=(const FakeServer&) = delete;
    ~FakeServer();

    static Description H264();
    static Description AAC();
    static Description MP4V();

    /// What the next Play describes.
    void Describe(const std::vector<Description>& aTracks);
    /// In seconds; an end of 0 is a live presentation.
    void Range(double aBegin, double aEnd);

    /// Media of a track, at so many ns.
    void Push(unsigned aTrack, long long aPlayTime, const std::string& aBytes);
    /// How far a track is known to reach, in ns, for what is pushed from now on.
    void Latest(unsigned aTrack, long long aLatest);
    /// "Timeout", "Bye" or "EndTime", after what was pushed.
    void End(unsigned aTrack, const std::string& aWhy);

    /// From now on every session has media of its own: for each track a packet per interval, from where it was
    /// played, resumed or sought, as many as are taken. Each track begins so much later than the presentation.
    void Film(long long aInterval, const std::vector<long long>& aBegins);
    /// Media of a track, and its end unless that is empty, which the session takes in by itself: it is there without
    /// anybody asking for a packet. From the next `TakeIn` on.
    void PushOnTakeIn(unsigned aTrack, const std::vector<std::string>& aBytes, const std::string& aEnd);

    /// What the session says of a track's reception from now on.
    void Receive(unsigned aTrack, const Player::Reception& aReception);

    /// What the session says that media can be awaited with, from now on.
    void AwaitWith(int aDescriptor) { mDescriptor = aDescriptor; }

    /// What is not read waits at the server, from now on.
    void KeepMedia() { mMediaWaits = true; }
    void SetRoundTrip(unsigned aMilliseconds) { mRoundTrip = aMilliseconds; }

    /// Drops the media and the ends that were not taken.
    void Forget();

    /// From now on the operation ("Play", "Pause", "Produce" ...) does this, and may throw.
    void On(const std::string& aOperation, std::function<void()> aAction);
    void Clear(const std::string& aOperation) { On(aOperation, nullptr); }
    /// From now on the operation waits, with the player held; `Release` lets it go on.
    void Block(const std::string& aOperation);
    void Release();
    /// Whether the operation has come and waits. Waits for that.
    bool AwaitBlocked();

    /// "Play rtsp://host/clip 0.000000", "Pause", "Seek 1.500000" ... since the last call.
    std::vector<std::string> TakeCalls();
    /// The value of a setting in the last configuration; "(none)" when it is not there.
    std::string Setting(const std::string& aKey) const;
    unsigned PlayersMade() const;
    /// Packets that wait to be taken.
    std::size_t Queued(unsigned aTrack) const;

private:
    class Session;
    struct Media;
    using MediaOfTracks = std::map<unsigned, std::deque<Media>>;

    static Player::MediaPlayer* MakePlayer();
    void Enter(const std::string& aOperation, const std::string& aCall);
    bool Deliver(MediaOfTracks& aMedia, unsigned aTrack, Player::Processor& aConsumer);
    bool HasFilm() const;

    mutable std::mutex mMutex;
    std::condition_variable mChanged;
    std::vector<Description> mTracks;
    Player::Time mBegin;
    Player::Time mEnd;
    MediaOfTracks mMedia;
    MediaOfTracks mTakenIn;
    std::map<unsigned, Player::Reception> mReceptions;
    std::map<unsigned, long long> mLatest;
    long long mInterval = 0;
    std::vector<long long> mBegins;
    std::map<std::string, std::function<void()>> mActions;
    std::string mBlocked;
    bool mIsBlocked = false;
    std::vector<std::string> mCalls;
    std::map<std::string, std::string> mConfiguration;
    unsigned mPlayersMade = 0;
    std::atomic<int> mDescriptor{-1};
    std::atomic<bool> mMediaWaits{false};
    std::atomic<unsigned> mRoundTrip{0};
};

/// For `FakeServer::On`.
template <typename Kind>
std::function<void()> Throws(unsigned short aError, const std::string& aText = "as told") {
    return [aError, aText] { throw Kind(aError, "%s", aText.c_str()); };
}

}  // namespace ElementTest
