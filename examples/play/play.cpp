#include <Player/Player.hpp>

#include <cstdio>
#include <unistd.h>

int main(int, char** aArgs) {
    Player::MediaPlayer lPlayer;
    try {
        lPlayer.Play(aArgs[1], Player::Time(0));
        while (!lPlayer.IsEnded()) {
            for (Player::TrackIdx lTrack = 0; lTrack < lPlayer.GetTrackCount(); ++lTrack) {
                while (const auto lSample = lPlayer.GetTrackPacket(lTrack)) {
                    std::printf("track %u: %lld ns, %u bytes\n", lTrack, lSample->PlayTime().NanoSeconds(), lSample->Size());
                }
            }
            usleep(10000);
        }
        lPlayer.Close();
    } catch (const Player::Exception& lException) {
        std::printf("%s\n", lException.Message());
    }
}
