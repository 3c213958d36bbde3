#include <gtest/gtest.h>

#include <stdexcept>

#include "Parset.hpp"
#include "Sets.hpp"

namespace Parser {
namespace {

using namespace Test;

SeqParameterSet Interpret(const BitWriter& aBits, UInt aSize) {
    const std::vector<Byte> lBytes = aBits.Prefix(aSize);
    Bitstream lBitstream{lBytes.data(), aSize, 0};
    SeqParameterSet lSps;
    try {
        InterpretSPS(lBitstream, lSps);
    } catch (...) {
        EXPECT_FALSE(lSps.valid);
        throw;
    }
    EXPECT_EQ(aSize, lBitstream.mPos);
    return lSps;
}

/// Reads the whole, and asserts that nothing shorter will do.
SeqParameterSet Interpret(const BitWriter& aBits) {
    for (UInt lSize = 0; lSize < aBits.Size(); ++lSize) {
        EXPECT_THROW(Interpret(aBits, lSize), std::runtime_error) << lSize << " of " << aBits.Size() << " bits";
    }
    return Interpret(aBits, aBits.Size());
}

TEST(InterpretSPS, ReadsABaselineSet) {
    const SeqParameterSet lSps = Interpret(BitWriter()
                                               .u(8, 66)
                                               .u(6, 0b101101)
                                               .u(2, 0b10)
                                               .u(8, 31)
                                               .ue(7)    // seq_parameter_set_id
                                               .ue(12)   // log2_max_frame_num_minus4
                                               .ue(0)    // pic_order_cnt_type
                                               .ue(11)   // log2_max_pic_order_cnt_lsb_minus4
                                               .ue(3)    // max_num_ref_frames
                                               .u(1, 1)  // gaps_in_frame_num_value_allowed_flag
                                               .ue(10)
                                               .ue(8)
                                               .u(1, 1)    // frame_mbs_only_flag
                                               .u(1, 0)    // direct_8x8_inference_flag
                                               .u(1, 0)    // frame_cropping_flag
                                               .u(1, 0));  // vui_parameters_present_flag
    EXPECT_TRUE(lSps.valid);
    EXPECT_EQ(66U, lSps.profile_idc);
    EXPECT_EQ((std::array<bool, 6>{true, false, true, true, false, true}), lSps.constraint_set_flag);
    EXPECT_EQ(2U, lSps.reserved_zero_2bits);
    EXPECT_EQ(31U, lSps.level_idc);
    EXPECT_EQ(7U, lSps.seq_parameter_set_id);
    EXPECT_EQ(1U, lSps.chroma_format_idc);
    EXPECT_EQ(12U, lSps.log2_max_frame_num_minus4);
    EXPECT_EQ(0U, lSps.pic_order_cnt_type);
    EXPECT_EQ(11U, lSps.log2_max_pic_order_cnt_lsb_minus4);
    EXPECT_EQ(3U, lSps.max_num_ref_frames);
    EXPECT_TRUE(lSps.gaps_in_frame_num_value_allowed_flag);
    EXPECT_EQ(10U, lSps.pic_width_in_mbs_minus1);
    EXPECT_EQ(8U, lSps.pic_height_in_map_units_minus1);
    EXPECT_TRUE(lSps.frame_mbs_only_flag);
    EXPECT_FALSE(lSps.mb_adaptive_frame_field_flag);
    EXPECT_FALSE(lSps.direct_8x8_inference_flag);
    EXPECT_FALSE(lSps.frame_cropping_flag);
    EXPECT_FALSE(lSps.vui_parameters_present_flag);
}

TEST(InterpretSPS, ReadsFieldsAndCropping) {
    const SeqParameterSet lSps = Interpret(SpsHead(77)
                                               .Append(PlainOrder())
                                               .ue(1)
                                               .u(1, 0)
                                               .ue(119)
                                               .ue(33)
                                               .u(1, 0)  // frame_mbs_only_flag
                                               .u(1, 1)  // mb_adaptive_frame_field_flag
                                               .u(1, 1)
                                               .u(1, 1)  // frame_cropping_flag
                                               .ue(1)
                                               .ue(2)
                                               .ue(3)
                                               .ue(4)
                                               .u(1, 0));
    EXPECT_EQ(119U, lSps.pic_width_in_mbs_minus1);
    EXPECT_EQ(33U, lSps.pic_height_in_map_units_minus1);
    EXPECT_FALSE(lSps.frame_mbs_only_flag);
    EXPECT_TRUE(lSps.mb_adaptive_frame_field_flag);
    EXPECT_TRUE(lSps.direct_8x8_inference_flag);
    EXPECT_TRUE(lSps.frame_cropping_flag);
    EXPECT_EQ(1U, lSps.frame_crop_left_offset);
    EXPECT_EQ(2U, lSps.frame_crop_right_offset);
    EXPECT_EQ(3U, lSps.frame_crop_top_offset);
    EXPECT_EQ(4U, lSps.frame_crop_bottom_offset);
}

TEST(InterpretSPS, ReadsPicOrderCntOfType1) {
    const SeqParameterSet lSps = Interpret(SpsHead(66)
                                               .ue(0)
                                               .ue(1)    // pic_order_cnt_type
                                               .u(1, 1)  // delta_pic_order_always_zero_flag
                                               .se(-5)   // offset_for_non_ref_pic
                                               .se(6)    // offset_for_top_to_bottom_field
                                               .ue(3)    // num_ref_frames_in_pic_order_cnt_cycle
                                               .se(-0x7fffffff)
                                               .se(0)
                                               .se(0x7fffffff)
                                               .Append(SpsTail(10, 8)));
    EXPECT_TRUE(lSps.delta_pic_order_always_zero_flag);
    EXPECT_EQ(-5, lSps.offset_for_non_ref_pic);
    EXPECT_EQ(6, lSps.offset_for_top_to_bottom_field);
    EXPECT_EQ(3U, lSps.num_ref_frames_in_pic_order_cnt_cycle);
    EXPECT_EQ(-0x7fffffff, lSps.offset_for_ref_frame[0]);
    EXPECT_EQ(0, lSps.offset_for_ref_frame[1]);
    EXPECT_EQ(0x7fffffff, lSps.offset_for_ref_frame[2]);
    EXPECT_EQ(10U, lSps.pic_width_in_mbs_minus1);
}

TEST(InterpretSPS, PicOrderCntOfOtherTypesTellsNothingMore) {
    for (const UInt lType : {2U, 3U, 100U}) {
        const SeqParameterSet lSps = Interpret(SpsHead(66).ue(0).ue(lType).Append(SpsTail(10, 8)));
        EXPECT_EQ(lType, lSps.pic_order_cnt_type);
        EXPECT_EQ(10U, lSps.pic_width_in_mbs_minus1);
        EXPECT_EQ(8U, lSps.pic_height_in_map_units_minus1);
    }
}

TEST(InterpretSPS, AReferenceCycleHasAtMost255Frames) {
    BitWriter lMost = SpsHead(66).ue(0).ue(1).u(1, 0).se(0).se(0).ue(255);
    for (SInt lFrame = 0; lFrame < 255; ++lFrame) {
        lMost.se(lFrame);
    }
    const SeqParameterSet lSps = Interpret(lMost.Append(SpsTail(10, 8)));
    EXPECT_EQ(254, lSps.offset_for_ref_frame[254]);
    EXPECT_EQ(8U, lSps.pic_height_in_map_units_minus1);

    for (const UInt lCount : {256U, 0xfffffffeU}) {
        BitWriter lMore = SpsHead(66).ue(0).ue(1).u(1, 0).se(0).se(0).ue(lCount);
        for (SInt lFrame = 0; lFrame < 300; ++lFrame) {
            lMore.se(0);
        }
        lMore.Append(SpsTail(10, 8));
        EXPECT_THROW(Interpret(lMore, lMore.Size()), std::runtime_error);
    }
}

TEST(InterpretSPS, HighProfilesTellTheChromaFormat) {
    for (UInt lProfile = 0; lProfile < 256; ++lProfile) {
        const std::vector<UInt> kHigh = {44, 83, 86, 100, 110, 118, 122, 128, 134, 135, 138, 139, 244};
        BitWriter lBits = SpsHead(lProfile);
        bool lHigh = false;
        for (const UInt lKnown : kHigh) {
            lHigh = lHigh || lKnown == lProfile;
        }
        if (lHigh) { lBits.ue(2).ue(3).ue(4).u(1, 1).u(1, 0); }
        lBits.Append(PlainOrder()).Append(SpsTail(10, 8));
        const SeqParameterSet lSps = Interpret(lBits, lBits.Size());
        EXPECT_EQ(lProfile, lSps.profile_idc);
        EXPECT_EQ(10U, lSps.pic_width_in_mbs_minus1) << lProfile;
        EXPECT_EQ(8U, lSps.pic_height_in_map_units_minus1) << lProfile;
        EXPECT_EQ(lHigh ? 2U : 1U, lSps.chroma_format_idc);
        EXPECT_EQ(lHigh ? 3U : 0U, lSps.bit_depth_luma_minus8);
        EXPECT_EQ(lHigh ? 4U : 0U, lSps.bit_depth_chroma_minus8);
        EXPECT_EQ(lHigh, lSps.qpprime_y_zero_transform_bypass_flag);
    }
}

TEST(InterpretSPS, OnlyTheFullChromaFormatHasSeparatePlanes) {
    for (UInt lFormat = 0; lFormat < 4; ++lFormat) {
        BitWriter lBits = SpsHead(244).ue(lFormat);
        if (3 == lFormat) { lBits.u(1, 1); }
        lBits.ue(0).ue(6).u(1, 0).u(1, 0).Append(PlainOrder()).Append(SpsTail(10, 8));
        const SeqParameterSet lSps = Interpret(lBits);
        EXPECT_EQ(lFormat, lSps.chroma_format_idc);
        EXPECT_EQ(3 == lFormat, lSps.separate_colour_plane_flag);
        EXPECT_EQ(6U, lSps.bit_depth_chroma_minus8);
        EXPECT_EQ(8U, lSps.pic_height_in_map_units_minus1);
    }
    BitWriter lBeyond = SpsHead(244).ue(4).ue(0).ue(0).u(1, 0).u(1, 0).Append(PlainOrder()).Append(SpsTail(10, 8));
    EXPECT_THROW(Interpret(lBeyond, lBeyond.Size()), std::runtime_error);
}

TEST(InterpretSPS, TheFullChromaFormatHasFourMoreScalingLists) {
    for (UInt lFormat = 0; lFormat < 4; ++lFormat) {
        const UInt lLists = 3 == lFormat ? 12 : 8;
        BitWriter lBits = SpsHead(100).ue(lFormat);
        if (3 == lFormat) { lBits.u(1, 0); }
        lBits.ue(0).ue(0).u(1, 0).u(1, 1);
        for (UInt lList = 0; lList < lLists; ++lList) {
            lBits.u(1, 1);
            for (UInt lIdx = 0; lIdx < (lList < 6 ? 16 : 64); ++lIdx) {
                lBits.se(0 == lIdx ? static_cast<SInt>(lList) : 0);
            }
        }
        lBits.Append(PlainOrder()).Append(SpsTail(10, 8));
        const SeqParameterSet lSps = Interpret(lBits, lBits.Size());
        EXPECT_TRUE(lSps.seq_scaling_matrix_present_flag);
        const ScalingMatrix& lMatrix = lSps.seq_scaling_matrix;
        for (UInt lList = 0; lList < 12; ++lList) {
            EXPECT_EQ(lList < lLists, lMatrix.scaling_list_present_flag[lList]) << lList;
            const Byte lValue = static_cast<Byte>(lList < lLists ? 8 + lList : 0);
            if (lList < 6) {
                EXPECT_EQ(lValue, lMatrix.ScalingList4x4[lList][0]);
                EXPECT_EQ(lValue, lMatrix.ScalingList4x4[lList][15]);
            } else {
                EXPECT_EQ(lValue, lMatrix.ScalingList8x8[lList - 6][0]);
                EXPECT_EQ(lValue, lMatrix.ScalingList8x8[lList - 6][63]);
            }
        }
        EXPECT_EQ(8U, lSps.pic_height_in_map_units_minus1);
    }
}

TEST(InterpretSPS, ScalingListsMayBeAbsentOrTheDefault) {
    BitWriter lBits = SpsHead(100).ue(1).ue(0).ue(0).u(1, 0).u(1, 1);
    for (UInt lList = 0; lList < 8; ++lList) {
        lBits.u(1, lList % 2);
        if (0 != lList % 2) { lBits.se(-8); }
    }
    const SeqParameterSet lSps = Interpret(lBits.Append(PlainOrder()).Append(SpsTail(10, 8)));
    for (UInt lList = 0; lList < 8; ++lList) {
        EXPECT_EQ(0 != lList % 2, lSps.seq_scaling_matrix.scaling_list_present_flag[lList]);
        EXPECT_EQ(0 != lList % 2, lList < 6 ? lSps.seq_scaling_matrix.UseDefaultScalingMatrix4x4Flag[lList]
                                            : lSps.seq_scaling_matrix.UseDefaultScalingMatrix8x8Flag[lList - 6]);
    }
    EXPECT_EQ(10U, lSps.pic_width_in_mbs_minus1);
}

TEST(InterpretSPS, TheIdIsAtMost31) {
    const BitWriter lMost = SpsHead(66, 30, 31).Append(PlainOrder()).Append(SpsTail(10, 8));
    EXPECT_EQ(31U, Interpret(lMost).seq_parameter_set_id);
    const BitWriter lMore = SpsHead(66, 30, 32).Append(PlainOrder()).Append(SpsTail(10, 8));
    EXPECT_THROW(Interpret(lMore, lMore.Size()), std::runtime_error);
}

TEST(InterpretSPS, OddValuesThatChangeNoSyntaxAreTaken) {
    const SeqParameterSet lSps = Interpret(
        SpsHead(100).ue(1).ue(100).ue(200).u(1, 0).u(1, 0).ue(300).ue(0).ue(400).Append(SpsTail(0xfffffffe, 0)));
    EXPECT_EQ(100U, lSps.bit_depth_luma_minus8);
    EXPECT_EQ(200U, lSps.bit_depth_chroma_minus8);
    EXPECT_EQ(300U, lSps.log2_max_frame_num_minus4);
    EXPECT_EQ(400U, lSps.log2_max_pic_order_cnt_lsb_minus4);
    EXPECT_EQ(0xfffffffeU, lSps.pic_width_in_mbs_minus1);
}

// The list of the standard: 8 before the first, each value the one before plus delta_scale, modulo 256.

struct List {
    explicit List(const BitWriter& aBits, UInt aSize = 16) : mValues(aSize) {
        const std::vector<Byte> lBytes = aBits.All();
        Bitstream lBitstream{lBytes.data(), aBits.Size(), 0};
        Scaling_List(mValues.data(), mValues.size(), mUseDefault, lBitstream);
        mRest = aBits.Size() - static_cast<UInt>(lBitstream.mPos);
    }

    std::vector<Byte> mValues;
    bool mUseDefault = false;
    UInt mRest = 0;
};

TEST(ScalingList, AddsUpTheDifferences) {
    BitWriter lBits;
    for (UInt lIdx = 0; lIdx < 16; ++lIdx) {
        lBits.se(0 == lIdx % 2 ? 5 : -2);
    }
    const List lList(lBits);
    EXPECT_EQ((std::vector<Byte>{13, 11, 16, 14, 19, 17, 22, 20, 25, 23, 28, 26, 31, 29, 34, 32}), lList.mValues);
    EXPECT_FALSE(lList.mUseDefault);
    EXPECT_EQ(0U, lList.mRest);
}

TEST(ScalingList, ZeroEndsTheListWhichRepeatsItsLastValue) {
    const List lList(BitWriter().se(4).se(-2).se(-10).u(5, 0));
    EXPECT_EQ((std::vector<Byte>{12, 10, 10, 10, 10, 10, 10, 10, 10, 10, 10, 10, 10, 10, 10, 10}), lList.mValues);
    EXPECT_FALSE(lList.mUseDefault);
    EXPECT_EQ(5U, lList.mRest);
}

TEST(ScalingList, ZeroAtTheStartMeansTheDefault) {
    const List lList(BitWriter().se(-8).u(3, 0), 64);
    EXPECT_EQ(std::vector<Byte>(64, 8), lList.mValues);
    EXPECT_TRUE(lList.mUseDefault);
    EXPECT_EQ(3U, lList.mRest);
}

TEST(ScalingList, ValuesWrapAt256) {
    BitWriter lUp = BitWriter().se(127).se(127);  // 135, 262
    const List lWrapped(lUp.se(-6).u(1, 0));      // 0
    EXPECT_EQ((std::vector<Byte>{135, 6, 6}),
              std::vector<Byte>(lWrapped.mValues.begin(), lWrapped.mValues.begin() + 3));
    EXPECT_EQ(1U, lWrapped.mRest);

    const List lDown(BitWriter().se(-128).se(-128).se(-8).se(0).se(-120).u(2, 0));  // -120, 8, 0
    EXPECT_EQ((std::vector<Byte>{136, 8, 8}), std::vector<Byte>(lDown.mValues.begin(), lDown.mValues.begin() + 3));
    EXPECT_FALSE(lDown.mUseDefault);
}

TEST(ScalingList, DifferencesAreOfEightBits) {
    EXPECT_NO_THROW(List(BitWriter().se(127).se(121)));
    EXPECT_NO_THROW(List(BitWriter().se(-128).se(-128).se(-8)));
    EXPECT_THROW(List(BitWriter().se(128).se(120)), std::runtime_error);
    EXPECT_THROW(List(BitWriter().se(-129).se(-128).se(-8)), std::runtime_error);
    EXPECT_THROW(List(BitWriter().se(0x7fffffff)), std::runtime_error);
    EXPECT_THROW(List(BitWriter().se(-0x7fffffff)), std::runtime_error);
}

TEST(ParameterSetRecords, AreMadeEmptyAndFreed) {
    SeqParameterSet* lSps = AllocSPS();
    PicParameterSet* lPps = AllocPPS();
    EXPECT_FALSE(lSps->valid);
    EXPECT_EQ(0U, lSps->pic_width_in_mbs_minus1);
    EXPECT_FALSE(lPps->valid);
    FreeSPS(lSps);
    FreePPS(lPps);
    FreeSPS(nullptr);
    FreePPS(nullptr);
}

TEST(ParameterSetRecords, HoldNothingOfTheSetBefore) {
    const auto lBytesOf = [](const std::string& aNal) { return std::vector<Byte>(aNal.begin(), aNal.end()); };
    const BitWriter lFirstSps =
        SpsHead(100).ue(2).ue(0).ue(0).u(1, 0).u(1, 0).Append(PlainOrder()).Append(SpsTail(10, 8));
    const BitWriter lFirstPps = PpsHead().ue(1).ue(6).ue(2).u(3, 5).Append(PpsTail());
    SeqParameterSet lSps;
    PicParameterSet lPps;

    std::vector<Byte> lBytes = lBytesOf(lFirstSps.Nal(0x67));
    ProcessSPS(lSps, lBytes.data(), lBytes.size());
    lBytes = lBytesOf(lFirstPps.Nal(0x68));
    ProcessPPS(lPps, lBytes.data(), lBytes.size(), lSps);
    EXPECT_EQ(2U, lSps.chroma_format_idc);
    EXPECT_EQ((std::vector<Byte>{1, 0, 1}), lPps.slice_group_id);

    lBytes = lBytesOf(PlainSps().Nal(0x67));
    ProcessSPS(lSps, lBytes.data(), lBytes.size());
    lBytes = lBytesOf(PlainPps().Nal(0x68));
    ProcessPPS(lPps, lBytes.data(), lBytes.size(), lSps);
    EXPECT_EQ(1U, lSps.chroma_format_idc);
    EXPECT_TRUE(lPps.slice_group_id.empty());

    EXPECT_THROW(ProcessSPS(lSps, lBytes.data(), 0), std::runtime_error);
    EXPECT_THROW(ProcessPPS(lPps, lBytes.data(), 0, lSps), std::runtime_error);
    EXPECT_FALSE(lSps.valid);
    EXPECT_FALSE(lPps.valid);
}

}  // namespace
}  // namespace Parser
