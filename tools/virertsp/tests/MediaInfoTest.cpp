#include "MediaInfo.hpp"

#include <gtest/gtest.h>

#include "Written.hpp"

namespace Virertsp {
namespace {

// 320x240, made by an encoder.
const std::string kSets = "sprop-parameter-sets=Z0LAFdoFB+wFqDAwNSgAAAMACAAAAwGUeLF1,aM48gA==";
// Sequence with profile Simple@L1, object, layer of 320x240.
const std::string kVisual = "000001b001000001b58913000001000000012000c48d8ffffd0a041e1463";

TEST(MediaInfoTest, WhatTracksBecome) {
    struct Case {
        const char* mFormat;
        std::string mParameters;
        const char* mSummary;
        const char* mExtension;
    };
    for (const Case& lCase : {
             Case{"H264", kSets, "H.264 Constrained Baseline, level 2.1, 320x240", ".h264"},
             Case{"H264", "profile-level-id=640028", "H.264 High, level 4", ".h264"},
             Case{"H264", "profile-level-id=42001f", "H.264 Baseline, level 3.1", ".h264"},
             Case{"H264", "profile-level-id=2a001f", "H.264 42, level 3.1", ".h264"},
             Case{"H264", "sprop-parameter-sets=AAAA,BBBB", "H.264", ".h264"},
             Case{"MP4V-ES", "config=" + kVisual, "MPEG-4 visual Simple@L1, 320x240", ".m4v"},
             Case{"MP4V-ES", "profile-level-id=245", "MPEG-4 visual Advanced Simple@L5", ".m4v"},
             Case{"MP4V-ES", "", "MPEG-4 visual Simple@L1", ".m4v"},
             Case{"MP4A-LATM", "config=400024203fc0", "AAC LC, 44100 Hz, 2 channels", ".aac"},
             Case{"mpeg4-generic", "config=1188", "AAC LC, 48000 Hz, 1 channel", ".aac"},
             Case{"mpeg4-generic", "config=2b920800", "HE-AAC, 44100 Hz, 2 channels", ".aac"},
             // Object type 29, rate index 7, 1 channel; extension rate index 4; core object type 2.
             Case{"mpeg4-generic", "config=eb8a0800", "HE-AAC v2, 44100 Hz, 2 channels", ".aac"},
             Case{"mpeg4-generic", "config=1238", "AAC LC, 44100 Hz, 8 channels", ".aac"},
             Case{"mpeg4-generic", "config=1200", "AAC LC, 44100 Hz", ""},
             Case{"mpeg4-generic", "", "MPEG-4 audio, 8000 Hz, 1 channel", ""},
             Case{"enc-mpeg4-generic", "config=1210", "AAC LC, encrypted, 44100 Hz, 2 channels", ""},
             Case{"AMR", "octet-align=1", "AMR, 8000 Hz, 1 channel", ".amr"},
             Case{"VP8", "", "VP8", ""},
         }) {
        Player::Properties lTrack = Track(lCase.mFormat, lCase.mParameters);
        lTrack.Insert("TimeRes", "8000");
        lTrack.Insert("EncParams", "");
        const MediaInfo lInfo = MediaInfo::Of(lTrack);
        EXPECT_EQ(lCase.mSummary, lInfo.Summary());
        EXPECT_EQ(lCase.mExtension, lInfo.mExtension);
        EXPECT_EQ(lInfo.mExtension.empty(), !lInfo.mObstacle.empty());
    }
}

TEST(MediaInfoTest, TheDescriptionsSizeStandsInForTheConfigurations) {
    Player::Properties lTrack = Track("H264", "");
    lTrack.Insert("Width", "176");
    lTrack.Insert("Height", "144");
    EXPECT_EQ("H.264, 176x144", MediaInfo::Of(lTrack).Summary());
    lTrack.Insert("FmtParams", kSets);
    EXPECT_EQ(320U, MediaInfo::Of(lTrack).mWidth);
}

}  // namespace
}  // namespace Virertsp
