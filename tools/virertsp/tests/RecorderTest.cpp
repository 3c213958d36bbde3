#include "recording/Recorder.hpp"

#include <gmock/gmock.h>

#include <utility>

#include "FakeSession.hpp"
#include "Scratch.hpp"

namespace Virertsp {
namespace {

/// Lets a recording take so many looks at the network.
class Looks : public Observer {
public:
    explicit Looks(unsigned aCount) : mLeft(aCount) {}

    bool Update(const Player::MediaPlayer& /*aPlayer*/, Clock::time_point /*aNow*/) override { return 0 != --mLeft; }
    void Conclude(const Player::MediaPlayer& /*aPlayer*/, Clock::time_point /*aNow*/) override {}
    unsigned Left() const { return mLeft; }

private:
    unsigned mLeft;
};

std::string Start(const std::string& aText) {
    return aText.substr(0, aText.find(" samples"));
}

TEST(RecorderTest, EveryUnitOfEveryPacketIsWritten) {
    constexpr unsigned kLooks = 12;
    for (const char* const lFormat : {"H264", "MP4V-ES", "MP4A-LATM", "mpeg4-generic", "AMR"}) {
        for (const unsigned lUnits : {1U, 3U, 8U}) {
            const Scratch lScratch;
            FakePlayer lPlayer({{lFormat, lUnits}});
            Recorder lRecorder(lPlayer, {lScratch.Path("out")});
            Looks lLooks(kLooks);
            lRecorder.Run(lLooks);
            lRecorder.Finish();
            EXPECT_EQ("track 0: " + std::string(lFormat) + ", " + std::to_string(kLooks * lUnits),
                      Start(lRecorder.Summary()));
        }
    }
}

TEST(RecorderTest, TheLimitIsReachedInPlayTimeWhateverAPacketHolds) {
    for (const unsigned lUnits : {1U, 3U, 8U}) {
        FakePlayer lPlayer({{"mpeg4-generic", lUnits}});
        Recorder::Settings lSettings{"/dev/null"};
        lSettings.mSeconds = 2;
        Recorder lRecorder(lPlayer, lSettings);
        Looks lLooks(200);
        lRecorder.Run(lLooks);
        // Ten packets a second, and a second of them is held for those that were overtaken.
        EXPECT_GE(lLooks.Left(), 200U - 35) << lUnits;
    }
}

TEST(RecorderTest, ASilentTrackHoldsUpNoLimit) {
    for (const bool lFirst : {true, false}) {
        FakePlayer lPlayer({{"H264", 1, lFirst}, {"AMR", 1, !lFirst}});
        Recorder::Settings lSettings{"/dev/null"};
        lSettings.mSeconds = 1;
        lSettings.mPatience = std::chrono::milliseconds(300);
        Recorder lRecorder(lPlayer, lSettings);
        Looks lLooks(500);
        lRecorder.Run(lLooks);
        EXPECT_NE(0U, lLooks.Left());
        EXPECT_EQ(std::string("No media of track ") + (lFirst ? "0" : "1") + " came.", lRecorder.Complaint());
    }
}

TEST(RecorderTest, SilentTracksHoldUpNoLimit) {
    FakePlayer lPlayer({{"H264", 1, true}});
    Recorder::Settings lSettings{"/dev/null"};
    lSettings.mSeconds = 1;
    lSettings.mPatience = lSettings.mLongestSilence = std::chrono::milliseconds(300);
    Recorder lRecorder(lPlayer, lSettings);
    Looks lLooks(500);
    lRecorder.Run(lLooks);
    EXPECT_NE(0U, lLooks.Left());
    EXPECT_EQ("No media of track 0 came.", lRecorder.Complaint());
}

TEST(RecorderTest, WhenAllHaveBroughtEnoughNothingIsMissing) {
    FakePlayer lPlayer({{"H264", 1}, {"AMR", 3}});
    Recorder::Settings lSettings{"/dev/null"};
    lSettings.mSeconds = 1;
    Recorder lRecorder(lPlayer, lSettings);
    Looks lLooks(500);
    lRecorder.Run(lLooks);
    EXPECT_NE(0U, lLooks.Left());
    EXPECT_EQ("", lRecorder.Complaint());
}

TEST(RecorderTest, PartsAreNumberedOnFromTheSessionBefore) {
    const Scratch lScratch;
    std::filesystem::create_directory(lScratch.Path("out"));
    std::ofstream(lScratch.Path("out/track0-0002.aac")) << "of the session before";
    FakePlayer lPlayer({{"mpeg4-generic", 1}, {"AMR", 1}});
    Recorder::Settings lSettings{lScratch.Path("out")};
    lSettings.mPart = 3;
    lSettings.mSplit = Split::Of("1s");
    Recorder lRecorder(lPlayer, lSettings);
    // Ten units a second.
    Looks lLooks(25);
    lRecorder.Run(lLooks);
    lRecorder.Finish();
    EXPECT_EQ(5U, lRecorder.Part());
    for (const auto& [lName, lUnits] : {std::pair{"3", 10U}, {"4", 10U}, {"5", 5U}}) {
        EXPECT_EQ(lUnits * 19, lScratch.Contents(std::string("out/track0-000") + lName + ".aac").size()) << lName;
        EXPECT_EQ(6 + lUnits * 13, lScratch.Contents(std::string("out/track1-000") + lName + ".amr").size()) << lName;
    }
}

}  // namespace
}  // namespace Virertsp
