#include "recording/Split.hpp"

#include <gtest/gtest.h>

#include "Failure.hpp"
#include "recording/Cutter.hpp"

namespace Virertsp {
namespace {

using Player::Time;

TEST(SplitTest, TimesAndSizes) {
    struct Case {
        const char* mText;
        double mSeconds;
        std::uint64_t mBytes;
    };
    for (const Case& lCase : {
             Case{"90s", 90, 0},
             Case{"10min", 600, 0},
             Case{"1.5h", 5400, 0},
             Case{"1H", 3600, 0},
             Case{"512kB", 0, 512000},
             Case{"100MB", 0, 100000000},
             Case{"100mb", 0, 100000000},
             Case{"2GB", 0, 2000000000},
             Case{"1KiB", 0, 1024},
             Case{"1.5MiB", 0, 1572864},
             Case{"4GiB", 0, 4294967296},
         }) {
        const Split lSplit = Split::Of(lCase.mText);
        EXPECT_EQ(Time::Seconds(lCase.mSeconds), lSplit.mLength) << lCase.mText;
        EXPECT_EQ(lCase.mBytes, lSplit.mBytes) << lCase.mText;
        EXPECT_TRUE(lSplit.IsWanted());
    }
    EXPECT_FALSE(Split().IsWanted());
}

TEST(SplitTest, WhatIsNoTimeAndNoSize) {
    for (const char* const lText : {"", "10", "min", "10m", "10M", "10 min", "10minutes", "-1min", "0s", "0MB", "0.5s",
                                    "nans", "inf s", "infMB", "1e30h", "1e300GB"}) {
        EXPECT_THROW(Split::Of(lText), Failure) << lText;
    }
}

TEST(SplitTest, IsDueAtTheLimit) {
    const Split lTime = Split::Of("10s");
    EXPECT_FALSE(lTime.IsDue(Time(9990, 1000), 1000000));
    // Some ticks of a time stamp do not count.
    EXPECT_TRUE(lTime.IsDue(Time(9999, 1000), 0));
    EXPECT_TRUE(lTime.IsDue(Time(10, 1), 0));
    const Split lSize = Split::Of("1kB");
    EXPECT_FALSE(lSize.IsDue(Time(1000, 1), 999));
    EXPECT_TRUE(lSize.IsDue(Time(0), 1000));
    EXPECT_FALSE(Split().IsDue(Time(1000, 1), 1000000));
}

/// Notes what a cutter hands on: "0:1.5" is a sample of track 0 at 1.5 s, "|" a cut.
class Cuts {
public:
    explicit Cuts(const char* aSplit, Player::TrackIdx aLeader = 0)
        : mCutter(
              Split::Of(aSplit), aLeader, Coding::kVisual,
              [this](Player::TrackIdx aTrack, const Cutter::Sample& aSample) {
                  Note(std::to_string(aTrack) + ":" + Tenths(aSample->PlayTime()));
              },
              [this](const Time& aAt) { Note("|" + Tenths(aAt)); }) {}

    /// A picture that begins a group.
    Cuts& Key(unsigned aTenths) { return Take(0, aTenths, std::string("\0\0\1\xB6\0", 5)); }
    /// One that needs others.
    Cuts& Other(unsigned aTenths) { return Take(0, aTenths, std::string("\0\0\1\xB6\x40", 5)); }
    Cuts& Sound(unsigned aTenths) { return Take(1, aTenths, "sound"); }
    std::string Flush() {
        mCutter.Flush();
        return mText;
    }
    const std::string& Text() const { return mText; }

private:
    Cuts& Take(Player::TrackIdx aTrack, unsigned aTenths, const std::string& aData) {
        mCutter.Take(aTrack, Cutter::Sample(new Player::Packet(Time(aTenths, 10), aData.data(),
                                                               static_cast<Player::UInt>(aData.size()))));
        return *this;
    }
    void Note(const std::string& aWhat) { mText += (mText.empty() ? "" : " ") + aWhat; }
    static std::string Tenths(const Time& aTime) { return std::to_string(aTime.Scale(10, 1, true)); }

    std::string mText;
    Cutter mCutter;
};

TEST(CutterTest, CutsInFrontOfTheFirstRandomAccessPointBehindTheLimit) {
    EXPECT_EQ("0:0 0:5 0:10 |15 0:15 0:20 |25 0:25",
              Cuts("1s").Key(0).Key(5).Other(10).Key(15).Other(20).Key(25).Flush());
    EXPECT_EQ("0:0 0:1 |2 0:2", Cuts("0.01kB").Key(0).Other(1).Key(2).Flush());
}

TEST(CutterTest, SoundWaitsForThePicturesThatMayCutIt) {
    Cuts lCuts("1s");
    lCuts.Key(0).Sound(0).Sound(8).Sound(12);
    EXPECT_EQ("0:0 1:0", lCuts.Text());
    lCuts.Key(11);
    EXPECT_EQ("0:0 1:0 |11 0:11 1:8", lCuts.Text());
    EXPECT_EQ("0:0 1:0 |11 0:11 1:8 1:12", lCuts.Flush());
}

TEST(CutterTest, SoundDoesNotWaitForSilentPicturesForEver) {
    Cuts lCuts("1s");
    lCuts.Sound(0).Sound(30).Sound(50);
    EXPECT_EQ("", lCuts.Text());
    lCuts.Sound(51);
    EXPECT_EQ("1:0", lCuts.Text());
}

TEST(CutterTest, PicturesOutOfOrderBelongToTheGroupThatTheyCameIn) {
    EXPECT_EQ("0:0 |12 0:12 0:11 0:13", Cuts("1s").Key(0).Key(12).Other(11).Other(13).Flush());
}

}  // namespace
}  // namespace Virertsp
