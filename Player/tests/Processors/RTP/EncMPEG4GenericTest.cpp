#include "Processors/RTP/EncMPEG4Generic.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Processors/RTP/AUHeaders.hpp"

namespace Player::Testing {
namespace {

using testing::ElementsAre;

Chain Track(const std::string& aFmtParams) {
    return Chain("enc-mpeg4-generic", aFmtParams.c_str());
}

/// Whether a packet whose AU header is after `aWidth` bits of other fields is read rightly.
void ExpectFieldsOf(UInt aWidth, const std::string& aFmtParams) {
    Chain lChain = Track(aFmtParams + ";sizelength=13;indexlength=3");
    const AUHeaders lHeaders = AUHeaders().Put(aWidth, 0).Put(13, 4).Put(3, 5);
    lChain.Push(PacketWith(lHeaders.Payload(Counted(6))).Marker());
    EXPECT_THAT(lChain.Samples(), ElementsAre(Counted(4))) << aFmtParams;
    EXPECT_EQ(5U, lChain.Sample<Packets::MPEG4GenericSample>(0)->AUIndex()) << aFmtParams;
}

TEST(EncMPEG4GenericTest, EncryptionFieldsBeforeTheHeaderAreSteppedOver) {
    ExpectFieldsOf(0, "mode=AAC-hbr");
    ExpectFieldsOf(8, "ismarypselectiveencryption=1");
    ExpectFieldsOf(8, "ISMARypSelectiveEncryption=7");
    ExpectFieldsOf(32, "isamcrypivlength=4");
    ExpectFieldsOf(16, "ismacrypkeyindicatorlength=2");
    ExpectFieldsOf(8 + 64 + 8, "ismarypselectiveencryption=1;isamcrypivlength=8;ismacrypkeyindicatorlength=1");
    ExpectFieldsOf(40 * 8, "isamcrypivlength=40");
    ExpectFieldsOf(64 * 8, "isamcrypivlength=31;ismacrypkeyindicatorlength=33");
}

TEST(EncMPEG4GenericTest, NamesAreLookedUpLetterByLetter) {
    ExpectFieldsOf(0, "ismacrypselectiveencryption=1");
    ExpectFieldsOf(0, "ismacrypivlength=4");
    ExpectFieldsOf(0, "isamcrypkeyindicatorlength=2");
}

TEST(EncMPEG4GenericTest, FieldsOfLaterAUsAreNotInTheFirst) {
    ExpectFieldsOf(0, "isamcrypdeltaivlength=2");
    ExpectFieldsOf(0, "ismacrypkeyindicatorperau=1");
    ExpectFieldsOf(8, "ismacrypkeyindicatorperau=0;ismacrypkeyindicatorlength=1");
}

TEST(EncMPEG4GenericTest, NegativeAndHugeLengthsAreHarmless) {
    ExpectFieldsOf(0, "isamcrypivlength=-1;ismacrypkeyindicatorlength=-1");
    for (const char* lLength : {"2147483647", "536870912"}) {  // bytes; the latter are 2^32 bits
        Chain lChain = Track(std::string("sizelength=8;isamcrypivlength=") + lLength);
        lChain.Push(PacketWith(AUHeaders().Put(8, 2).Put(8, 1).Payload(Counted(3))).Marker());
        EXPECT_THAT(lChain.Samples(), ElementsAre(Counted(3))) << "the size reads as 0";
    }
}

TEST(EncMPEG4GenericTest, OnlyTheFirstAUOfAPacketIsTaken) {
    Chain lChain = Track("sizelength=8");
    lChain.Push(PacketWith(AUHeaders().Put(8, 2).Put(8, 3).Payload(Counted(5))).Marker());
    EXPECT_THAT(lChain.Samples(), ElementsAre(Counted(2)));
}

TEST(EncMPEG4GenericTest, AudioFollowsTheSizes) {
    Chain lChain = Track("mode=AAC-hbr;sizelength=8");
    lChain.Push(PacketWith(AUHeaders().Put(8, 3).Payload(Counted(3))));
    lChain.Push(PacketWith(AUHeaders().Put(8, 2).Payload(Counted(3, 3))).Marker());
    EXPECT_THAT(lChain.Samples(), ElementsAre(Counted(3), Counted(2, 3)));
}

TEST(EncMPEG4GenericTest, AVideoFrameIsAllUpToTheMarkerWhateverTheSizes) {
    Chain lChain = Track("mode=mpeg4-video;isamcrypivlength=4;sizelength=8");
    const auto lFragment = [](UInt aSize, const Bytes& aData) {
        return PacketWith(AUHeaders().Put(32, 0x01020304).Put(8, aSize).Payload(aData));
    };
    lChain.Push(lFragment(3, Counted(3)).Timestamp(40));
    lChain.Push(lFragment(1, Counted(5, 3)).Timestamp(40));
    EXPECT_EQ(0U, lChain.Delivered());
    lChain.Push(lFragment(200, Counted(2, 8)).Timestamp(40).Marker());
    lChain.Push(lFragment(2, Counted(4)).Timestamp(80).Marker());
    EXPECT_THAT(lChain.Samples(), ElementsAre(Counted(10), Counted(4)));
    EXPECT_EQ(Time(40), lChain.End().mSamples[0]->PlayTime());
}

TEST(EncMPEG4GenericTest, TheModeIsComparedLetterByLetter) {
    for (const char* lFmtParams : {"mode=MPEG4-video;sizelength=8", "mode=mpeg4-video2;sizelength=8"}) {
        Chain lChain = Track(lFmtParams);
        lChain.Push(PacketWith(AUHeaders().Put(8, 2).Payload(Counted(3))).Marker());
        EXPECT_THAT(lChain.Samples(), ElementsAre(Counted(2))) << lFmtParams;
    }
    Chain lChain = Track("MODE=mpeg4-video;sizelength=8");
    lChain.Push(PacketWith(AUHeaders().Put(8, 2).Payload(Counted(3))).Marker());
    EXPECT_THAT(lChain.Samples(), ElementsAre(Counted(3))) << "its key is not";
}

TEST(EncMPEG4GenericTest, ThePlainFormatHasNoSuchFieldsAndNoSuchMode) {
    Chain lChain("mpeg4-generic", "mode=mpeg4-video;isamcrypivlength=4;sizelength=8");
    lChain.Push(PacketWith(AUHeaders().Put(8, 2).Put(8, 3).Payload(Counted(5))).Marker());
    EXPECT_THAT(lChain.Samples(), ElementsAre(Counted(2), Counted(3, 2)));
}

}  // namespace
}  // namespace Player::Testing
