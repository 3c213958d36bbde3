#include <gtest/gtest.h>

#include <stdexcept>

#include "Parset.hpp"
#include "Sets.hpp"

namespace Parser {
namespace {

using namespace Test;

VUIParameters Read(const BitWriter& aBits, UInt aSize) {
    const std::vector<Byte> lBytes = aBits.Prefix(aSize);
    Bitstream lBitstream{lBytes.data(), aSize, 0};
    VUIParameters lVui;
    ReadVUI(lBitstream, lVui);
    EXPECT_EQ(aSize, lBitstream.mPos);
    return lVui;
}

/// Reads the whole, and asserts that nothing shorter will do.
VUIParameters Read(const BitWriter& aBits) {
    for (UInt lSize = 0; lSize < aBits.Size(); ++lSize) {
        EXPECT_THROW(Read(aBits, lSize), std::runtime_error) << lSize << " of " << aBits.Size() << " bits";
    }
    return Read(aBits, aBits.Size());
}

/// cpb_cnt_minus1, scales, one line per buffer, then the four lengths.
BitWriter Hrd(UInt aCountMinus1, UInt aSeed) {
    BitWriter lBits = BitWriter().ue(aCountMinus1).u(4, aSeed).u(4, aSeed + 1);
    for (UInt lCpb = 0; lCpb <= aCountMinus1; ++lCpb) {
        lBits.ue(100 * aSeed + lCpb).ue(200 * aSeed + lCpb).u(1, lCpb % 2);
    }
    return lBits.u(5, aSeed + 2).u(5, aSeed + 3).u(5, aSeed + 4).u(5, aSeed + 5);
}

void ExpectHrd(const HRDParameters& aHrd, UInt aCountMinus1, UInt aSeed) {
    EXPECT_EQ(aCountMinus1, aHrd.cpb_cnt_minus1);
    EXPECT_EQ(aSeed, aHrd.bit_rate_scale);
    EXPECT_EQ(aSeed + 1, aHrd.cpb_size_scale);
    for (UInt lCpb = 0; lCpb <= aCountMinus1; ++lCpb) {
        EXPECT_EQ(100 * aSeed + lCpb, aHrd.bit_rate_value_minus1[lCpb]);
        EXPECT_EQ(200 * aSeed + lCpb, aHrd.cpb_size_value_minus1[lCpb]);
        EXPECT_EQ(0 != lCpb % 2, aHrd.cbr_flag[lCpb]);
    }
    EXPECT_EQ(aSeed + 2, aHrd.initial_cpb_removal_delay_length_minus1);
    EXPECT_EQ(aSeed + 3, aHrd.cpb_removal_delay_length_minus1);
    EXPECT_EQ(aSeed + 4, aHrd.dpb_output_delay_length_minus1);
    EXPECT_EQ(aSeed + 5, aHrd.time_offset_length);
}

TEST(ReadVUI, ReadsASetWithNothing) {
    const VUIParameters lVui = Read(BitWriter().u(9, 0));
    EXPECT_FALSE(lVui.aspect_ratio_info_present_flag);
    EXPECT_EQ(5U, lVui.video_format);  // "unspecified"
    EXPECT_EQ(2U, lVui.colour_primaries);
    EXPECT_FALSE(lVui.timing_info_present_flag);
    EXPECT_FALSE(lVui.low_delay_hrd_flag);
    EXPECT_FALSE(lVui.bitstream_restriction_flag);
    EXPECT_EQ(16U, lVui.log2_max_mv_length_vertical);
}

TEST(ReadVUI, ReadsASetWithEverything) {
    const VUIParameters lVui = Read(BitWriter()
                                        .u(1, 1)
                                        .u(8, 255)
                                        .u(16, 0xfedc)
                                        .u(16, 0x1234)  // aspect ratio
                                        .u(1, 1)
                                        .u(1, 1)  // overscan
                                        .u(1, 1)
                                        .u(3, 6)
                                        .u(1, 1)  // video signal type
                                        .u(1, 1)
                                        .u(8, 9)
                                        .u(8, 10)
                                        .u(8, 11)  // colour description
                                        .u(1, 1)
                                        .ue(4)
                                        .ue(5)  // chroma location
                                        .u(1, 1)
                                        .u(32, 0x80000001)
                                        .u(32, 0xffffffff)
                                        .u(1, 1)  // timing
                                        .u(1, 1)
                                        .Append(Hrd(1, 3))
                                        .u(1, 1)
                                        .Append(Hrd(2, 7))
                                        .u(1, 1)  // low delay
                                        .u(1, 1)  // picture structure
                                        .u(1, 1)
                                        .u(1, 0)
                                        .ue(1)
                                        .ue(2)
                                        .ue(3)
                                        .ue(4)
                                        .ue(5)
                                        .ue(6));
    EXPECT_EQ(255U, lVui.aspect_ratio_idc);
    EXPECT_EQ(0xfedcU, lVui.sar_width);
    EXPECT_EQ(0x1234U, lVui.sar_height);
    EXPECT_TRUE(lVui.overscan_appropriate_flag);
    EXPECT_EQ(6U, lVui.video_format);
    EXPECT_TRUE(lVui.video_full_range_flag);
    EXPECT_EQ(9U, lVui.colour_primaries);
    EXPECT_EQ(10U, lVui.transfer_characteristics);
    EXPECT_EQ(11U, lVui.matrix_coefficients);
    EXPECT_EQ(4U, lVui.chroma_sample_loc_type_top_field);
    EXPECT_EQ(5U, lVui.chroma_sample_loc_type_bottom_field);
    EXPECT_EQ(0x80000001U, lVui.num_units_in_tick);
    EXPECT_EQ(0xffffffffU, lVui.time_scale);
    EXPECT_TRUE(lVui.fixed_frame_rate_flag);
    ExpectHrd(lVui.nal_hrd_parameters, 1, 3);
    ExpectHrd(lVui.vcl_hrd_parameters, 2, 7);
    EXPECT_TRUE(lVui.low_delay_hrd_flag);
    EXPECT_TRUE(lVui.pic_struct_present_flag);
    EXPECT_TRUE(lVui.bitstream_restriction_flag);
    EXPECT_FALSE(lVui.motion_vectors_over_pic_boundaries_flag);
    EXPECT_EQ(1U, lVui.max_bytes_per_pic_denom);
    EXPECT_EQ(2U, lVui.max_bits_per_mb_denom);
    EXPECT_EQ(3U, lVui.log2_max_mv_length_horizontal);
    EXPECT_EQ(4U, lVui.log2_max_mv_length_vertical);
    EXPECT_EQ(5U, lVui.max_num_reorder_frames);
    EXPECT_EQ(6U, lVui.max_dec_frame_buffering);
}

TEST(ReadVUI, OnlyTheExtendedAspectHasSides) {
    for (const UInt lIdc : {0U, 1U, 16U, 254U}) {
        const VUIParameters lVui = Read(BitWriter().u(1, 1).u(8, lIdc).u(8, 0));
        EXPECT_EQ(lIdc, lVui.aspect_ratio_idc);
        EXPECT_EQ(0U, lVui.sar_width);
    }
}

TEST(ReadVUI, ASignalTypeMayHaveNoColourDescription) {
    const VUIParameters lVui = Read(BitWriter().u(2, 0).u(1, 1).u(3, 1).u(1, 0).u(1, 0).u(6, 0));
    EXPECT_EQ(1U, lVui.video_format);
    EXPECT_FALSE(lVui.colour_description_present_flag);
    EXPECT_EQ(2U, lVui.matrix_coefficients);
}

TEST(ReadVUI, LowDelayFollowsEitherBufferModel) {
    const VUIParameters lNal = Read(BitWriter().u(5, 0).u(1, 1).Append(Hrd(0, 1)).u(1, 0).u(1, 1).u(2, 0));
    EXPECT_TRUE(lNal.nal_hrd_parameters_present_flag);
    EXPECT_FALSE(lNal.vcl_hrd_parameters_present_flag);
    EXPECT_TRUE(lNal.low_delay_hrd_flag);
    const VUIParameters lVcl = Read(BitWriter().u(6, 0).u(1, 1).Append(Hrd(0, 1)).u(1, 1).u(2, 0));
    EXPECT_FALSE(lVcl.nal_hrd_parameters_present_flag);
    EXPECT_TRUE(lVcl.vcl_hrd_parameters_present_flag);
    EXPECT_TRUE(lVcl.low_delay_hrd_flag);
    ExpectHrd(lVcl.vcl_hrd_parameters, 0, 1);
}

TEST(ReadHRDParameters, HasAtMost32Buffers) {
    const BitWriter lMost = BitWriter().u(5, 0).u(1, 1).Append(Hrd(31, 2)).u(1, 0).u(1, 0).u(2, 0);
    ExpectHrd(Read(lMost).nal_hrd_parameters, 31, 2);
    const BitWriter lMore = BitWriter().u(5, 0).u(1, 1).Append(Hrd(32, 2)).u(1, 0).u(1, 0).u(2, 0);
    EXPECT_THROW(Read(lMore, lMore.Size()), std::runtime_error);
    const BitWriter lHuge = BitWriter().u(5, 0).u(1, 1).ue(0xfffffffe).u(32, 0xffffffff).u(32, 0xffffffff);
    EXPECT_THROW(Read(lHuge, lHuge.Size()), std::runtime_error);
}

TEST(InterpretSPS, ReadsTheVuiLast) {
    const BitWriter lBits = SpsHead(66).Append(PlainOrder()).Append(SpsTail(10, 8, true)).u(1, 1).u(8, 3).u(8, 0);
    const std::vector<Byte> lBytes = lBits.All();
    Bitstream lBitstream{lBytes.data(), lBits.Size(), 0};
    SeqParameterSet lSps;
    InterpretSPS(lBitstream, lSps);
    EXPECT_TRUE(lSps.vui_parameters_present_flag);
    EXPECT_EQ(3U, lSps.vui_parameters.aspect_ratio_idc);
    EXPECT_FALSE(more_rbsp_data(lBitstream));
}

}  // namespace
}  // namespace Parser
