#include "Processors/RTP/Factories.hpp"

#include <gtest/gtest.h>

#include "Processors/RTP/AMR.hpp"
#include "Processors/RTP/EncMPEG4Generic.hpp"
#include "Processors/RTP/H264.hpp"
#include "Processors/RTP/MP4ALATM.hpp"
#include "Processors/RTP/MP4VES.hpp"
#include "Processors/RTP/MPEG4Generic.hpp"

namespace Player::Processors::RTP {
namespace {

Properties Track(const char* aTransport, const char* aFormat) {
    Properties lFormat;
    lFormat.Insert("Transport", aTransport);
    lFormat.Insert("Format", aFormat);
    lFormat.Insert("FmtParams", "mode=AAC-hbr;sizelength=13");
    return lFormat;
}

using Factory = SharedPtr<Processor, SharedObject> (*)(Properties&);

template <typename T>
bool IsA(const SharedPtr<Processor, SharedObject>& aProcessor) {
    return nullptr != dynamic_cast<const T*>(aProcessor.Ptr());
}

const struct Row {
    const char* mFormat;
    Factory mCreate;
    bool (*mIsRight)(const SharedPtr<Processor, SharedObject>& aProcessor);
} kTable[] = {
    {"H264", H264::Create, IsA<H264>},
    {"MP4V-ES", MP4VES::Create, IsA<MP4VES>},
    {"MP4A-LATM", MP4ALATM::Create, IsA<MP4ALATM>},
    {"AMR", AMR::Create, IsA<AMR>},
    {"mpeg4-generic", MPEG4Generic::Create, IsA<MPEG4Generic>},
    {"enc-mpeg4-generic", MPEG4Generic::Create, IsA<EncMPEG4Generic>},
};

TEST(FactoriesTest, EachFormatGetsItsDepacketizerAndDeliversSamples) {
    for (const Row& lRow : kTable) {
        for (const Factory lCreate : {lRow.mCreate, static_cast<Factory>(CreateDepacketizer)}) {
            Properties lFormat = Track("RTP/AVP", lRow.mFormat);
            const SharedPtr<Processor, SharedObject> lProcessor = lCreate(lFormat);
            EXPECT_TRUE(lRow.mIsRight(lProcessor)) << lRow.mFormat;
            EXPECT_EQ("Sample", lFormat.Get("Transport"));
            EXPECT_EQ(lRow.mFormat, lFormat.Get("Format"));
            EXPECT_EQ("mode=AAC-hbr;sizelength=13", lFormat.Get("FmtParams"));
        }
    }
}

TEST(FactoriesTest, PlainMPEG4GenericIsNotTheEncryptedOne) {
    Properties lFormat = Track("RTP/AVP", "mpeg4-generic");
    EXPECT_FALSE(IsA<EncMPEG4Generic>(CreateDepacketizer(lFormat)));
}

TEST(FactoriesTest, NobodyTakesAnythingElse) {
    const struct {
        const char* mTransport;
        const char* mFormat;
    } kOthers[] = {
        {"RTP/AVP", "h264"},          {"RTP/AVP", "H264 "},
        {"RTP/AVP", "mp4v-es"},       {"RTP/AVP", "AMR-WB"},
        {"RTP/AVP", "MPEG4-GENERIC"}, {"RTP/AVP", ""},
        {"RTP/SAVP", "H264"},         {"RTP/AVP/TCP", "H264"},
        {"Sample", "H264"},           {"", "mpeg4-generic"},
        {"RTP/AVP", "H265"},          {"rtp/avp", "AMR"},
        {"RTP/SAVP", "MP4V-ES"},      {"RTP/SAVP", "MP4A-LATM"},
        {"RTP/SAVP", "AMR"},          {"RTP/SAVP", "enc-mpeg4-generic"},
    };
    for (const auto& lRow : kOthers) {
        Properties lFormat = Track(lRow.mTransport, lRow.mFormat);
        EXPECT_FALSE(CreateDepacketizer(lFormat)) << lRow.mTransport << " " << lRow.mFormat;
        EXPECT_EQ(lRow.mTransport, lFormat.Get("Transport")) << "left as it was";
        EXPECT_EQ(lRow.mFormat, lFormat.Get("Format"));
    }
}

TEST(FactoriesTest, AFactoryRefusesTheFormatsOfTheOthers) {
    for (const Row& lOwn : kTable) {
        for (const Row& lOther : kTable) {
            if (lOwn.mCreate == lOther.mCreate) { continue; }
            Properties lFormat = Track("RTP/AVP", lOther.mFormat);
            EXPECT_FALSE(lOwn.mCreate(lFormat)) << lOwn.mFormat << " " << lOther.mFormat;
            EXPECT_EQ("RTP/AVP", lFormat.Get("Transport"));
        }
    }
}

TEST(FactoriesTest, ATrackWithoutPropertiesGetsNothing) {
    Properties lFormat;
    EXPECT_FALSE(CreateDepacketizer(lFormat));
    EXPECT_FALSE(lFormat.Has("Transport"));
}

TEST(FactoriesTest, ATrackThatHasItsDepacketizerGetsNoSecond) {
    Properties lFormat = Track("RTP/AVP", "AMR");
    EXPECT_TRUE(CreateDepacketizer(lFormat));
    EXPECT_FALSE(CreateDepacketizer(lFormat));
}

}  // namespace
}  // namespace Player::Processors::RTP
