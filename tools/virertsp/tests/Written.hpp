#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Scratch.hpp"
#include "writers/Writer.hpp"

namespace Virertsp {

inline Player::Properties Track(const std::string& aFormat, const std::string& aParameters) {
    Player::Properties lTrack;
    lTrack.Insert("Format", aFormat);
    lTrack.Insert("FmtParams", aParameters);
    return lTrack;
}

/// What a track's writer makes of these samples in the file of that extension.
inline std::string Written(const Player::Properties& aTrack, const std::string& aExtension,
                           const std::vector<std::string>& aSamples) {
    const Scratch lScratch;
    const auto lWriter = MakeWriter(aTrack, lScratch.Path("track0"));
    EXPECT_EQ(lScratch.Path("track0" + aExtension), lWriter->Name());
    EXPECT_EQ(aExtension, FileExtension(aTrack));
    for (const std::string& lSample : aSamples) {
        lWriter->Write(Player::Packet(Player::Time(0), lSample.data(), static_cast<Player::UInt>(lSample.size())));
    }
    lWriter->Finish();
    return lScratch.Contents("track0" + aExtension);
}

}  // namespace Virertsp
