// Shows how to switch channels: channels URL...
// Plays each location until ten samples of its first track have come, and goes on to the next. A server that can switch
// keeps the session; all others are left and joined anew. The program need not know.
#include <Player/Player.hpp>

#include <unistd.h>

#include <cstdio>

namespace {

constexpr unsigned kSamples = 10;
constexpr useconds_t kRest = 5000;

/// Prints what the server is asked and answers.
class TalkingPlayer : public Player::MediaPlayer {
public:
    void RequestSent(const std::string& aMethod, const std::string& aURL) override {
        std::printf("> %s %s\n", aMethod.c_str(), aURL.c_str());
    }
    void ResponseReceived(Player::UInt aStatus, const std::string& aReason, const std::string&) override {
        std::printf("< %03x %s\n", aStatus, aReason.c_str());
    }
};

void Watch(Player::MediaPlayer& aPlayer, const char* aURL) {
    aPlayer.Play(aURL, Player::Time(0));
    unsigned lSamples = 0;
    while (lSamples < kSamples && !aPlayer.IsEnded()) {
        if (aPlayer.GetTrackPacket(0)) {
            ++lSamples;
        } else {
            usleep(kRest);
        }
    }
    std::printf("%s: %u samples\n", aURL, lSamples);
}

}  // namespace

int main(int aCount, char** aArgs) {
    Player::SetReporter(nullptr);
    TalkingPlayer lPlayer;
    lPlayer.SetConfigParam(Player::Setting::kTargetRTPBuffer, "1");
    try {
        for (int i = 1; i < aCount; ++i) {
            Watch(lPlayer, aArgs[i]);
        }
        if (aCount > 1) { lPlayer.Close(); }
    } catch (const Player::Exception& lException) {
        std::fprintf(stderr, "%s (%u)\n", lException.Message(), lException.Code());
        return 1;
    }
    return 0;
}
