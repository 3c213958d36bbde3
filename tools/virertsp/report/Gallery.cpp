#include "report/Gallery.hpp"

#include <glib.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "Failure.hpp"
#include "Player/String.hpp"
#include "writers/RandomAccess.hpp"
#include "writers/Writer.hpp"

namespace Virertsp {

namespace {

/// Once enough came, between half of this number and this number are kept.
constexpr std::size_t kMost = 16;
constexpr unsigned kDecoderSeconds = 20;

/// A folder that lives as long as this object.
class Folder {
public:
    Folder() {
        gchar* const lPath = g_dir_make_tmp("virertsp-XXXXXX", nullptr);
        if (nullptr == lPath) { throw Failure(kExitOutput, "Can't make a temporary directory."); }
        mPath = lPath;
        g_free(lPath);
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;
    ~Folder() {
        std::error_code lIgnored;
        std::filesystem::remove_all(mPath, lIgnored);
    }

    const std::string& Path() const { return mPath; }

private:
    std::string mPath;
};

/// In the new process: what a server sent must not keep the decoder busy for ever.
void LimitTime(gpointer /*aNothing*/) {
    alarm(kDecoderSeconds);
}

void Spawn(const std::vector<std::string>& aArguments) {
    std::vector<gchar*> lArguments;
    lArguments.reserve(aArguments.size() + 1);
    for (const std::string& lArgument : aArguments) {
        lArguments.push_back(const_cast<gchar*>(lArgument.c_str()));
    }
    lArguments.push_back(nullptr);
    constexpr auto kFlags =
        static_cast<GSpawnFlags>(G_SPAWN_SEARCH_PATH | G_SPAWN_STDOUT_TO_DEV_NULL | G_SPAWN_STDERR_TO_DEV_NULL);
    g_spawn_sync(nullptr, lArguments.data(), nullptr, kFlags, LimitTime, nullptr, nullptr, nullptr, nullptr, nullptr);
}

bool IsThere(const char* aProgram) {
    gchar* const lPath = g_find_program_in_path(aProgram);
    g_free(lPath);
    return nullptr != lPath;
}

/// What decodes the pictures of a file into 1.jpg, 2.jpg and so on.
std::vector<std::string> Decoder(Coding aCoding, const std::string& aFile, const std::string& aFolder) {
    const std::string lPictures = aFolder + "/%d.jpg";
    if (IsThere("ffmpeg")) {
        return {"ffmpeg",       "-nostdin", "-v", "error", "-i",     aFile,    "-vf",
                "scale=240:-2", "-q:v",     "6",  "-f",    "image2", lPictures};
    }
    // A file of a few pictures is too short to find out what it holds.
    const char* const lParser = Coding::kH264 == aCoding ? "h264parse" : "mpeg4videoparse";
    return {"gst-launch-1.0", "-q", "filesrc", "location=" + aFile, "!", lParser, "!", "decodebin", "!",
            // clang-format off
            "videoconvert", "!", "videoscale", "!", "video/x-raw,width=240,pixel-aspect-ratio=1/1", "!",
            "jpegenc", "quality=75", "!", "multifilesink", "index=1", "location=" + lPictures};
    // clang-format on
}

std::string Contents(const std::string& aPath) {
    std::ostringstream lText;
    lText << std::ifstream(aPath, std::ios::binary).rdbuf();
    return lText.str();
}

}  // namespace

void Gallery::Take(const Player::MediaPlayer& aPlayer, Player::TrackIdx aTrack, const Player::Packet& aSample) {
    if (mInfo && aTrack != mTrack) { return; }
    const auto lInfo = aPlayer.GetTrackInfo(aTrack);
    const Coding lCoding = CodingOf(*lInfo);
    const std::string_view lData(reinterpret_cast<const char*>(aSample.Begin()), aSample.Size());
    if (Coding::kSound == lCoding || !IsRandomAccess(lCoding, lData)) { return; }
    mInfo = lInfo;
    mTrack = aTrack;
    if (0 != mCount++ % mStride) { return; }
    mSamples.push_back({aSample.PlayTime(), std::string(lData)});
    if (mSamples.size() > kMost) { Thin(); }
}

void Gallery::Thin() {
    std::vector<Sample> lKept;
    for (std::size_t i = 0; i < mSamples.size(); i += 2) {
        lKept.push_back(std::move(mSamples[i]));
    }
    mSamples = std::move(lKept);
    mStride *= 2;
}

std::vector<Player::Time> Gallery::PlayTimes() const {
    std::vector<Player::Time> lTimes;
    for (const Sample& lSample : mSamples) {
        lTimes.push_back(lSample.mPlayTime);
    }
    return lTimes;
}

std::string Gallery::Write(const std::string& aFolder) const {
    const auto lWriter = MakeWriter(*mInfo, aFolder + "/track");
    for (const Sample& lSample : mSamples) {
        lWriter->Write(
            Player::Packet(lSample.mPlayTime, lSample.mData.data(), static_cast<Player::UInt>(lSample.mData.size())));
    }
    lWriter->Finish();
    return lWriter->Name();
}

std::vector<Gallery::Picture> Gallery::Decode() const {
    std::vector<Picture> lPictures;
    if (mSamples.empty()) { return lPictures; }
    const Folder lFolder;
    const std::string lFile = Write(lFolder.Path());
    Spawn(Decoder(CodingOf(*mInfo), lFile, lFolder.Path()));
    for (std::size_t i = 0; i < mSamples.size(); ++i) {
        const std::string lJpeg = Contents(lFolder.Path() + Player::StringWithFormat("/%zu.jpg", i + 1));
        if (!lJpeg.empty()) { lPictures.push_back({mSamples[i].mPlayTime, lJpeg}); }
    }
    return lPictures;
}

}  // namespace Virertsp
