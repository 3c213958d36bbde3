// Shows how to write the tracks of a presentation to files: tracks URL DIRECTORY
// Each file has the samples of one track in order; a line for each says when it is to be played.
#include <Player/Player.hpp>

#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

namespace {

constexpr useconds_t kRest = 5000;

struct File {
    std::ofstream mBytes;
    std::ofstream mTimes;
};

std::vector<File> OpenFiles(const Player::MediaPlayer& aPlayer, const std::string& aDirectory) {
    std::vector<File> lFiles;
    for (Player::TrackIdx lTrack = 0; lTrack < aPlayer.GetTrackCount(); ++lTrack) {
        const std::string lName = aDirectory + "/track" + std::to_string(lTrack);
        const std::string lFormat = aPlayer.GetTrackInfo(lTrack)->Get(Player::Key::kFormat);
        lFiles.push_back({std::ofstream(lName, std::ios::binary), std::ofstream(lName + ".times")});
        std::printf("%s: %s\n", lName.c_str(), lFormat.c_str());
    }
    return lFiles;
}

void Write(Player::MediaPlayer& aPlayer, std::vector<File>& aFiles) {
    while (!aPlayer.IsEnded()) {
        bool lWrote = false;
        for (Player::TrackIdx lTrack = 0; lTrack < aFiles.size(); ++lTrack) {
            const auto lSample = aPlayer.GetTrackPacket(lTrack);
            if (!lSample) { continue; }
            const char* const lBytes = reinterpret_cast<const char*>(lSample->Begin());
            aFiles[lTrack].mBytes.write(lBytes, static_cast<std::streamsize>(lSample->Size()));
            aFiles[lTrack].mTimes << lSample->PlayTime().NanoSeconds() << "\n";
            lWrote = true;
        }
        if (!lWrote) { usleep(kRest); }
    }
}

}  // namespace

int main(int aCount, char** aArgs) {
    if (3 != aCount) { return 2; }
    Player::SetReporter(nullptr);
    Player::MediaPlayer lPlayer;
    try {
        lPlayer.Play(aArgs[1], Player::Time(0));
        std::vector<File> lFiles = OpenFiles(lPlayer, aArgs[2]);
        Write(lPlayer, lFiles);
        lPlayer.Close();
    } catch (const std::exception& lException) {
        std::fprintf(stderr, "%s\n", lException.what());
        return 1;
    }
    return 0;
}
