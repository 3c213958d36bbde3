#include "recording/Output.hpp"

#include <sys/stat.h>

#include <filesystem>

#include "Failure.hpp"
#include "Player/String.hpp"

namespace Virertsp {

namespace {

constexpr std::size_t kDigits = 4;
constexpr std::size_t kMostDigits = 9;

bool IsDevice(const std::string& aPath) {
    struct stat lStatus = {};
    return 0 == stat(aPath.c_str(), &lStatus) && S_ISCHR(lStatus.st_mode);
}

bool IsNumber(const std::string& aText) {
    return aText.size() >= kDigits && aText.size() <= kMostDigits &&
           std::string::npos == aText.find_first_not_of("0123456789");
}

}  // namespace

Output::Output(Settings aSettings)
    : mSettings(std::move(aSettings)),
      mDrops(IsDevice(mSettings.mPath)),
      mIsFile(!mDrops && Container::IsFor(mSettings.mPath)) {}

void Output::BeginFirst(unsigned aPart) {
    if (mDrops) { return; }
    if (!mIsFile) { MakeDirectory(mSettings.mPath); }
    if (mSettings.mNumbered && !mSettings.mForce) {
        const std::filesystem::path lPath(mSettings.mPath);
        const std::filesystem::path lFolder = mIsFile ? lPath.parent_path() : lPath;
        std::error_code lError;
        for (const auto& lEntry : std::filesystem::directory_iterator(lFolder.empty() ? "." : lFolder, lError)) {
            if (PartOf(lEntry.path().filename().string()) < aPart) { continue; }
            throw Failure(kExitOutput, lEntry.path().string() + " is there already; --force replaces it.");
        }
    }
    Begin(aPart, Player::Time(0));
}

void Output::Begin(unsigned aPart, const Player::Time& aStart) {
    mPart = aPart;
    if (mIsFile) { mContainer = Container::Make(ContainerPath(aPart), Existing(), aStart); }
}

Output::Files Output::Open(Player::TrackIdx aTrack, const Player::Properties& aInfo) {
    const std::string lName = Player::StringWithFormat("track%u", aTrack);
    const std::string lBase =
        mIsFile ? ContainerPath(mPart) + "." + lName : mSettings.mPath + "/" + lName + Suffix(mPart);
    Files lFiles;
    lFiles.mWriter = mIsFile ? mContainer->AddTrack(aInfo) : MakeWriter(aInfo, lBase, Existing());
    if (mSettings.mTimes) { lFiles.mTimes = std::make_unique<OutputFile>(lBase + ".times", Existing()); }
    return lFiles;
}

OutputFile::Existing Output::Existing() const {
    return mSettings.mForce ? OutputFile::Existing::kReplace : OutputFile::Existing::kKeep;
}

std::string Output::Suffix(unsigned aPart) const {
    if (mSettings.mNumbered) { return Player::StringWithFormat("-%0*u", static_cast<int>(kDigits), aPart); }
    return 1 == aPart ? std::string() : Player::StringWithFormat("-%u", aPart);
}

std::string Output::ContainerPath(unsigned aPart) const {
    std::string lPath = mSettings.mPath;
    return lPath.insert(lPath.size() - 4, Suffix(aPart));
}

unsigned Output::PartOf(const std::string& aName) const {
    const std::filesystem::path lPath(mSettings.mPath);
    const std::string lBegin = mIsFile ? lPath.stem().string() : "track";
    const std::size_t lDash = aName.rfind('-');
    const std::size_t lDot = std::string::npos == lDash ? lDash : aName.find('.', lDash);
    if (0 != aName.compare(0, lBegin.size(), lBegin) || std::string::npos == lDot) { return 0; }
    const bool lOther = mIsFile && (lDash != lBegin.size() || lPath.extension() != aName.substr(lDot));
    const std::string lNumber = aName.substr(lDash + 1, lDot - lDash - 1);
    return !lOther && IsNumber(lNumber) ? Player::DecimalToUInt(lNumber) : 0;
}

}  // namespace Virertsp
