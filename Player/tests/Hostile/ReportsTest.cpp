// Compound RTCP packets: which are refused whole, and what the others do.
#include "Hostile/Row.hpp"
#include "RTP/StackFixture.hpp"

namespace Player::Hostile {

using Testing::Bytes;
using Testing::Compound;
using Testing::SizeOf;

struct ReportRow {
    const char* mName;
    Bytes mCompound;
    bool mIsTaken;
    /// The state of the track afterwards: 0 goes on, 3 has ended.
    UInt mEnded = 0;
    /// Seconds of the sender's clock, 0 when it is not known.
    UInt mSeconds = 0;
};

namespace {

/// The compound with the length of the packet at `aAt` replaced.
Bytes Lying(Bytes aCompound, std::size_t aAt, UInt aWords) {
    aCompound[aAt + 2] = static_cast<Byte>(aWords >> 8);
    aCompound[aAt + 3] = static_cast<Byte>(aWords);
    return aCompound;
}

Bytes Longer(Bytes aCompound, std::size_t aBytes) {
    aCompound.resize(aCompound.size() + aBytes);
    return aCompound;
}

const Bytes kSRAndBye = Compound().SR(9, 0, 90000).BYE().Build();

const ReportRow kReports[] = {
    {"Nothing", {}, false},
    {"OneByte", {0x80}, false},
    {"AHeaderWithoutASender", Compound().Raw(201, {}).Build(), false},
    {"AProperOne", kSRAndBye, true, 3, 9},
    {"ALengthOf0", Lying(kSRAndBye, 0, 0), false},
    {"ALengthOfTheRest", Lying(kSRAndBye, 0, 8), true, 0, 9},
    {"ALengthOneTooLong", Lying(kSRAndBye, 0, 7), false},
    {"ALengthOneTooShort", Lying(kSRAndBye, 0, 5), false},
    {"ALengthBeyondTheEnd", Lying(kSRAndBye, 0, 9), false},
    {"ALengthOf65535", Lying(kSRAndBye, 0, 65535), false},
    {"ALaterLengthOf0", Lying(kSRAndBye, 28, 0), false},
    {"ALaterLengthBeyondTheEnd", Lying(kSRAndBye, 28, 2), false},
    {"ALaterLengthOf65535", Lying(kSRAndBye, 28, 65535), false},
    {"OneByteMore", Longer(kSRAndBye, 1), false},
    {"AWordOfZerosMore", Longer(kSRAndBye, 4), false},
    {"ManyPackets",
     [] {
         auto lCompound = Compound().RR();
         for (int i = 0; i < 10000; ++i) {
             lCompound.Raw(204, {});
         }
         return lCompound.BYE().Build();
     }(),
     true, 3},
    {"AnotherSender", Compound(0x11223345).SR(9, 0, 0).BYE().Build(), false},
    {"NoSender", Compound(0).SR(9, 0, 0).BYE().Build(), false},
    {"AGoodbyeOfAnother", Compound().RR().Raw(203, {0x99999999}).Build(), true, 3},
    {"AGoodbyeFirst", Compound().BYE().SR(9, 0, 0).Build(), false},
    {"AGoodbyeOfNobody", Compound().RR().Raw(203, {}).Build(), true, 3},
    {"ADescriptionFirst", Compound().SDES().SR(9, 0, 0).Build(), false},
    {"AVersionOf1", Compound().Raw(200, {0x11223344, 9, 0, 0, 0, 0}, 1).Build(), false},
    {"ALaterVersionOf3", Compound().SR(9, 0, 0).Raw(203, {1}, 3).Build(), false},
    {"ASenderReportWithoutItsTimes", Compound().Raw(200, {0x11223344}).BYE().Build(), true, 3},
    {"ASenderReportCutInItsTimes", Compound().Raw(200, {0x11223344, 9, 9}).Build(), true},
    {"TheEndOfAllClocks", Compound().SR(0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF).Build(), true, 0, 0xFFFFFFFF},
    {"AClockOf0", Compound().SR(0, 0, 0).Build(), true},
    {"ATimeThatGoesBackAndForth", Compound().SR(9, 0, 0x80000000).SR(1, 0, 0).SR(2, 0, 0x7FFFFFFF).Build(), true, 0,
     // The RTP time went on by 2^31 - 1 - 2^31 ticks: the clock is a tick short of 9 s.
     8},
    {"UnknownTypes", Compound().RR().Raw(0, {1}).Raw(199, {}).Raw(255, {1, 2, 3}).Build(), true},
};

class HostileReportTest : public Testing::StackFixture, public testing::WithParamInterface<ReportRow> {};

TEST_P(HostileReportTest, IsRefusedWholeOrRead) {
    const ReportRow& lRow = GetParam();
    mStack.SetExpectedSSRC(0x11223344);
    EXPECT_TRUE(TakeFrame(1));
    const Bytes lCompound = Testing::Exactly(lRow.mCompound);
    EXPECT_EQ(lRow.mIsTaken, mStack.HandleRTCP(lCompound.data(), SizeOf(lCompound), Time(1000, 1)));
    EXPECT_EQ(lRow.mEnded, mStack.Ended(Time(1000, 1)));
    EXPECT_EQ(lRow.mSeconds, mStack.GetLastNTPTime() >> 32);
    // The media goes on, and is reported on.
    EXPECT_TRUE(TakeFrame(2));
    EXPECT_EQ(0x81, Report()[0]);
    EXPECT_EQ(2U, PopAll().size());
}

INSTANTIATE_TEST_SUITE_P(Rows, HostileReportTest, testing::ValuesIn(kReports), NameOfRow());

}  // namespace
}  // namespace Player::Hostile
