#include "support/FakeServer.hpp"

#include "Player/Packet.hpp"
#include "Player/String.hpp"
#include "threads/PlayerAccess.hpp"

namespace ElementTest {

using Player::SharedObject;
using Player::SharedPtr;

namespace {

FakeServer* gServer = nullptr;

class FakePlayer : public Player::MediaPlayer {
public:
    explicit FakePlayer(const SharedPtr<Player::MediaSession, SharedObject>& aSession) { SetSession(aSession); }
};

}  // namespace

struct FakeServer::Media {
    long long mPlayTime;
    long long mLatest;
    std::string mBytes;
    std::string mEnd;
};

class FakeServer::Session : public Player::MediaSession {
public:
    explicit Session(FakeServer& aServer) : mServer(aServer) {}

    void Configure(const Player::Properties& aConfig) override {
        {
            const std::lock_guard<std::mutex> lLock(mServer.mMutex);
            mServer.mConfiguration.clear();
            for (auto lEntry = aConfig.Begin(); lEntry != aConfig.End(); ++lEntry) {
                mServer.mConfiguration[lEntry->Key()] = lEntry->Val();
            }
        }
        mServer.Enter("Configure", "");
    }
    void Play(Player::MediaHandler& aHandler, const std::string& aURL, Player::Time aStart) override {
        mServer.Enter("Play", Player::StringWithFormat("Play %s %f", aURL.c_str(), aStart.ToSeconds()));
        OfferTracks(aHandler);
        Rewind(aStart);
    }
    void Seek(Player::MediaHandler& /*aHandler*/, Player::Time aTo) override {
        mServer.Enter("Seek", Player::StringWithFormat("Seek %f", aTo.ToSeconds()));
        Rewind(aTo);
    }
    void Pause(Player::MediaHandler& /*aHandler*/) override { mServer.Enter("Pause", "Pause"); }
    void Resume(Player::MediaHandler& /*aHandler*/) override { mServer.Enter("Resume", "Resume"); }
    void Stop(Player::MediaHandler& /*aHandler*/) override { mServer.Enter("Stop", "Stop"); }
    void Close(Player::MediaHandler& /*aHandler*/) override { mServer.Enter("Close", "Close"); }
    bool Fill(Player::UInt /*aTrack*/) override { return false; }
    bool Fetch(Player::UInt /*aTrack*/) override { return false; }
    bool Produce(Player::UInt aTrack) override {
        mServer.Enter("Produce", "");
        if (aTrack >= mConsumers.size()) { return false; }
        return mServer.HasFilm() ? Show(aTrack) : mServer.Deliver(mServer.mMedia, aTrack, *mConsumers[aTrack]);
    }
    Player::Reception TrackReception(Player::UInt aTrack) const override {
        const std::lock_guard<std::mutex> lLock(mServer.mMutex);
        return mServer.mReceptions[aTrack];
    }
    Player::Time RoundTrip() const override { return Player::Time(mServer.mRoundTrip, 1000); }
    Player::SInt MediaDescriptor(Player::UInt /*aTrack*/) const override { return mServer.mDescriptor; }
    bool MediaWaits() const override { return mServer.mMediaWaits; }
    void TakeIn() override {
        mServer.Enter("TakeIn", "");
        for (unsigned lTrack = 0; lTrack < mConsumers.size(); ++lTrack) {
            while (mServer.Deliver(mServer.mTakenIn, lTrack, *mConsumers[lTrack])) {}
        }
    }

private:
    /// What is queued is dropped, as the real session does when it seeks.
    void Rewind(Player::Time aTo) {
        const std::lock_guard<std::mutex> lLock(mServer.mMutex);
        if (0 == mServer.mInterval) { return; }
        mNext.assign(mConsumers.size(), aTo.NanoSeconds());
        for (std::size_t lTrack = 0; lTrack < mConsumers.size(); ++lTrack) {
            if (lTrack < mServer.mBegins.size()) { mNext[lTrack] += mServer.mBegins[lTrack]; }
            mConsumers[lTrack]->Flush();
        }
    }
    bool Show(Player::UInt aTrack) {
        const Player::Time lTime(mNext[aTrack], 1000000000, true);
        {
            const std::lock_guard<std::mutex> lLock(mServer.mMutex);
            mNext[aTrack] += mServer.mInterval;
        }
        mConsumers[aTrack]->Handle(
            SharedPtr<Player::Packet, SharedObject>(new Player::Packets::Media(lTime, "picture", 7)), lTime);
        return true;
    }
    void OfferTracks(Player::MediaHandler& aHandler) {
        const std::lock_guard<std::mutex> lLock(mServer.mMutex);
        aHandler.Reset();
        mConsumers.clear();
        const SharedPtr<Player::Properties, SharedObject> lCommon(new Player::Properties);
        std::list<SharedPtr<Player::Properties, SharedObject>> lTracks;
        for (const Description& lDescription : mServer.mTracks) {
            const SharedPtr<Player::Properties, SharedObject> lTrack(new Player::Properties);
            lTracks.push_back(lTrack);
            for (const auto& lPair : lDescription) {
                lTrack->Insert(lPair.first, lPair.second);
            }
            lTrack->Insert("Transport", "Sample");
        }
        aHandler.SelectTracks(lCommon, lTracks);
        aHandler.AvailableRange(mServer.mBegin, mServer.mEnd);
        for (const auto& lTrack : lTracks) {
            mConsumers.push_back(aHandler.AcceptTrack(lTrack));
        }
    }

    FakeServer& mServer;
    std::vector<SharedPtr<Player::Processor, SharedObject>> mConsumers;
    std::vector<long long> mNext;  ///< The time of a track's next picture.
};

FakeServer::FakeServer() {
    gServer = this;
    nsGstVireRtspSrc::PlayerAccess::SetMaker(MakePlayer);
}

FakeServer::~FakeServer() {
    nsGstVireRtspSrc::PlayerAccess::SetMaker(nullptr);
    gServer = nullptr;
}

Player::MediaPlayer* FakeServer::MakePlayer() {
    const std::lock_guard<std::mutex> lLock(gServer->mMutex);
    ++gServer->mPlayersMade;
    return new FakePlayer(SharedPtr<Player::MediaSession, SharedObject>(new Session(*gServer)));
}

FakeServer::Description FakeServer::H264() {
    return {{"MediaType", "video"}, {"Format", "H264"}, {"TimeRes", "90000"}};
}

FakeServer::Description FakeServer::AAC() {
    return {{"MediaType", "audio"}, {"Format", "MP4A-LATM"}, {"TimeRes", "44100"}, {"EncParams", "2"}};
}

FakeServer::Description FakeServer::MP4V() {
    return {{"MediaType", "video"}, {"Format", "MP4V-ES"}, {"TimeRes", "90000"}};
}

void FakeServer::Describe(const std::vector<Description>& aTracks) {
    const std::lock_guard<std::mutex> lLock(mMutex);
    mTracks = aTracks;
}

void FakeServer::Range(double aBegin, double aEnd) {
    const std::lock_guard<std::mutex> lLock(mMutex);
    mBegin = Player::Time::Seconds(aBegin);
    mEnd = Player::Time::Seconds(aEnd);
}

void FakeServer::Push(unsigned aTrack, long long aPlayTime, const std::string& aBytes) {
    const std::lock_guard<std::mutex> lLock(mMutex);
    const auto lLatest = mLatest.find(aTrack);
    mMedia[aTrack].push_back({aPlayTime, mLatest.end() == lLatest ? aPlayTime : lLatest->second, aBytes, ""});
}

void FakeServer::Latest(unsigned aTrack, long long aLatest) {
    const std::lock_guard<std::mutex> lLock(mMutex);
    mLatest[aTrack] = aLatest;
}

void FakeServer::End(unsigned aTrack, const std::string& aWhy) {
    const std::lock_guard<std::mutex> lLock(mMutex);
    mMedia[aTrack].push_back({0, 0, "", aWhy});
}

void FakeServer::Film(long long aInterval, const std::vector<long long>& aBegins) {
    const std::lock_guard<std::mutex> lLock(mMutex);
    mInterval = aInterval;
    mBegins = aBegins;
}

bool FakeServer::HasFilm() const {
    const std::lock_guard<std::mutex> lLock(mMutex);
    return 0 != mInterval;
}

void FakeServer::PushOnTakeIn(unsigned aTrack, const std::vector<std::string>& aBytes, const std::string& aEnd) {
    const std::lock_guard<std::mutex> lLock(mMutex);
    for (const std::string& lBytes : aBytes) {
        mTakenIn[aTrack].push_back({0, 0, lBytes, ""});
    }
    if (!aEnd.empty()) { mTakenIn[aTrack].push_back({0, 0, "", aEnd}); }
}

void FakeServer::Receive(unsigned aTrack, const Player::Reception& aReception) {
    const std::lock_guard<std::mutex> lLock(mMutex);
    mReceptions[aTrack] = aReception;
}

void FakeServer::Forget() {
    const std::lock_guard<std::mutex> lLock(mMutex);
    mMedia.clear();
}

void FakeServer::On(const std::string& aOperation, std::function<void()> aAction) {
    const std::lock_guard<std::mutex> lLock(mMutex);
    mActions[aOperation] = std::move(aAction);
}

void FakeServer::Block(const std::string& aOperation) {
    const std::lock_guard<std::mutex> lLock(mMutex);
    mBlocked = aOperation;
    mIsBlocked = false;
}

void FakeServer::Release() {
    const std::lock_guard<std::mutex> lLock(mMutex);
    mBlocked.clear();
    mChanged.notify_all();
}

bool FakeServer::AwaitBlocked() {
    std::unique_lock<std::mutex> lLock(mMutex);
    return mChanged.wait_for(lLock, std::chrono::seconds(10), [this] { return mIsBlocked; });
}

std::vector<std::string> FakeServer::TakeCalls() {
    const std::lock_guard<std::mutex> lLock(mMutex);
    std::vector<std::string> lCalls;
    lCalls.swap(mCalls);
    return lCalls;
}

std::string FakeServer::Setting(const std::string& aKey) const {
    const std::lock_guard<std::mutex> lLock(mMutex);
    const auto lFound = mConfiguration.find(aKey);
    return mConfiguration.end() == lFound ? "(none)" : lFound->second;
}

unsigned FakeServer::PlayersMade() const {
    const std::lock_guard<std::mutex> lLock(mMutex);
    return mPlayersMade;
}

std::size_t FakeServer::Queued(unsigned aTrack) const {
    const std::lock_guard<std::mutex> lLock(mMutex);
    const auto lFound = mMedia.find(aTrack);
    return mMedia.end() == lFound ? 0 : lFound->second.size();
}

void FakeServer::Enter(const std::string& aOperation, const std::string& aCall) {
    std::function<void()> lAction;
    {
        std::unique_lock<std::mutex> lLock(mMutex);
        if (!aCall.empty()) { mCalls.push_back(aCall); }
        if (aOperation == mBlocked) {
            mIsBlocked = true;
            mChanged.notify_all();
            mChanged.wait_for(lLock, std::chrono::seconds(10), [this, &aOperation] { return aOperation != mBlocked; });
        }
        lAction = mActions[aOperation];
    }
    if (lAction) { lAction(); }
}

bool FakeServer::Deliver(MediaOfTracks& aMedia, unsigned aTrack, Player::Processor& aConsumer) {
    Media lMedia;
    {
        const std::lock_guard<std::mutex> lLock(mMutex);
        std::deque<Media>& lQueue = aMedia[aTrack];
        if (lQueue.empty()) { return false; }
        lMedia = lQueue.front();
        lQueue.pop_front();
    }
    if (!lMedia.mEnd.empty()) {
        aConsumer.Param("EndOfStream", lMedia.mEnd);
        return false;
    }
    const Player::Time lPlayTime(lMedia.mPlayTime, 1000000000, true);
    aConsumer.Handle(SharedPtr<Player::Packet, SharedObject>(new Player::Packets::Media(
                         lPlayTime, lMedia.mBytes.data(), static_cast<Player::UInt>(lMedia.mBytes.size()))),
                     Player::Time(lMedia.mLatest, 1000000000, true));
    return true;
}

}  // namespace ElementTest
