#include <gtest/gtest.h>

#include <stdexcept>

#include "Parset.hpp"
#include "Sets.hpp"

namespace Parser {
namespace {

using namespace Test;

PicParameterSet Interpret(const BitWriter& aBits, UInt aSize, UInt aChromaFormat = 1) {
    const std::vector<Byte> lBytes = aBits.Prefix(aSize);
    Bitstream lBitstream{lBytes.data(), aSize, 0};
    SeqParameterSet lSps;
    lSps.chroma_format_idc = aChromaFormat;
    PicParameterSet lPps;
    try {
        InterpretPPS(lBitstream, lPps, lSps);
    } catch (...) {
        EXPECT_FALSE(lPps.valid);
        throw;
    }
    EXPECT_EQ(aSize, lBitstream.mPos);
    return lPps;
}

/// Reads the whole, asserts that nothing shorter will do and that the tail stands where it should.
PicParameterSet Interpret(const BitWriter& aBits) {
    for (UInt lSize = 0; lSize < aBits.Size(); ++lSize) {
        EXPECT_THROW(Interpret(aBits, lSize), std::runtime_error) << lSize << " of " << aBits.Size() << " bits";
    }
    PicParameterSet lPps = Interpret(aBits, aBits.Size());
    EXPECT_TRUE(lPps.valid);
    EXPECT_EQ(2U, lPps.num_ref_idx_l0_default_active_minus1);
    EXPECT_EQ(1U, lPps.num_ref_idx_l1_default_active_minus1);
    EXPECT_TRUE(lPps.weighted_pred_flag);
    EXPECT_EQ(2U, lPps.weighted_bipred_idc);
    EXPECT_EQ(-3, lPps.pic_init_qp_minus26);
    EXPECT_EQ(4, lPps.pic_init_qs_minus26);
    EXPECT_EQ(-2, lPps.chroma_qp_index_offset);
    EXPECT_TRUE(lPps.deblocking_filter_control_present_flag);
    EXPECT_FALSE(lPps.constrained_intra_pred_flag);
    EXPECT_TRUE(lPps.redundant_pic_cnt_present_flag);
    return lPps;
}

TEST(InterpretPPS, ReadsAPlainSet) {
    const PicParameterSet lPps = Interpret(PpsHead(255, 31).ue(0).Append(PpsTail()));
    EXPECT_EQ(255U, lPps.pic_parameter_set_id);
    EXPECT_EQ(31U, lPps.seq_parameter_set_id);
    EXPECT_TRUE(lPps.entropy_coding_mode_flag);
    EXPECT_FALSE(lPps.bottom_field_pic_order_in_frame_present_flag);
    EXPECT_FALSE(lPps.transform_8x8_mode_flag);
    EXPECT_EQ(-2, lPps.second_chroma_qp_index_offset);  // follows the first when absent
}

TEST(InterpretPPS, TheIdsAreLimited) {
    for (const BitWriter& lHead : {PpsHead(256, 0), PpsHead(0, 32)}) {
        const BitWriter lBits = BitWriter(lHead).ue(0).Append(PpsTail());
        EXPECT_THROW(Interpret(lBits, lBits.Size()), std::runtime_error);
    }
}

TEST(InterpretPPS, SliceGroupsOfType0HaveARunLengthEach) {
    BitWriter lBits = PpsHead().ue(7).ue(0);
    for (UInt lGroup = 0; lGroup < 8; ++lGroup) {
        lBits.ue(10 + lGroup);
    }
    const PicParameterSet lPps = Interpret(lBits.Append(PpsTail()));
    EXPECT_EQ(7U, lPps.num_slice_groups_minus1);
    for (UInt lGroup = 0; lGroup < 8; ++lGroup) {
        EXPECT_EQ(10 + lGroup, lPps.run_length_minus1[lGroup]);
    }
}

TEST(InterpretPPS, SliceGroupsOfType1TellNothingMore) {
    EXPECT_EQ(1U, Interpret(PpsHead().ue(3).ue(1).Append(PpsTail())).slice_group_map_type);
}

TEST(InterpretPPS, SliceGroupsOfType2HaveCornersForAllButTheLast) {
    BitWriter lBits = PpsHead().ue(7).ue(2);
    for (UInt lGroup = 0; lGroup < 7; ++lGroup) {
        lBits.ue(lGroup).ue(20 + lGroup);
    }
    const PicParameterSet lPps = Interpret(lBits.Append(PpsTail()));
    for (UInt lGroup = 0; lGroup < 7; ++lGroup) {
        EXPECT_EQ(lGroup, lPps.top_left[lGroup]);
        EXPECT_EQ(20 + lGroup, lPps.bottom_right[lGroup]);
    }
}

TEST(InterpretPPS, SliceGroupsOfTypes3To5Change) {
    for (const UInt lType : {3U, 4U, 5U}) {
        const PicParameterSet lPps = Interpret(PpsHead().ue(1).ue(lType).u(1, 1).ue(77).Append(PpsTail()));
        EXPECT_EQ(lType, lPps.slice_group_map_type);
        EXPECT_TRUE(lPps.slice_group_change_direction_flag);
        EXPECT_EQ(77U, lPps.slice_group_change_rate_minus1);
    }
}

TEST(InterpretPPS, SliceGroupsOfType6AreGivenPerMapUnit) {
    const UInt kBits[] = {0, 1, 2, 2, 3, 3, 3, 3};  // logarithm of the number of groups, rounded up
    for (UInt lGroupsMinus1 = 1; lGroupsMinus1 < 8; ++lGroupsMinus1) {
        BitWriter lBits = PpsHead().ue(lGroupsMinus1).ue(6).ue(9);
        std::vector<Byte> lIds;
        for (UInt lUnit = 0; lUnit < 10; ++lUnit) {
            lIds.push_back(static_cast<Byte>(lUnit % (lGroupsMinus1 + 1)));
            lBits.u(kBits[lGroupsMinus1], lIds.back());
        }
        const PicParameterSet lPps = Interpret(lBits.Append(PpsTail()));
        EXPECT_EQ(9U, lPps.pic_size_in_map_units_minus1);
        EXPECT_EQ(lIds, lPps.slice_group_id) << lGroupsMinus1;
    }
}

TEST(InterpretPPS, SliceGroupsAreLimited) {
    const BitWriter lCases[] = {
        PpsHead().ue(8).ue(1).Append(PpsTail()),                                   // nine groups
        PpsHead().ue(0xfffffffe).ue(0).u(32, 0xffffffff).Append(PpsTail()),        // more than any list holds
        PpsHead().ue(7).ue(7).Append(PpsTail()),                                   // no such type
        PpsHead().ue(2).ue(6).ue(0).u(2, 3).Append(PpsTail()),                     // group 3 of 0 to 2
        PpsHead().ue(1).ue(6).ue(0xfffffffe).u(32, 0).u(32, 0).Append(PpsTail()),  // more units than data
    };
    for (const BitWriter& lCase : lCases) {
        EXPECT_THROW(Interpret(lCase, lCase.Size()), std::runtime_error);
    }
    const BitWriter lMost = PpsHead().ue(2).ue(6).ue(0).u(2, 2).Append(PpsTail());
    EXPECT_EQ((std::vector<Byte>{2}), Interpret(lMost).slice_group_id);
}

TEST(InterpretPPS, TheExtensionIsReadWhenDataIsLeft) {
    const BitWriter lBits = PlainPps().u(1, 1).u(1, 0).se(-12);
    for (UInt lSize = 0; lSize < lBits.Size(); ++lSize) {
        if (PlainPps().Size() == lSize) {
            EXPECT_FALSE(Interpret(lBits, lSize).transform_8x8_mode_flag);
        } else {
            EXPECT_THROW(Interpret(lBits, lSize), std::runtime_error) << lSize;
        }
    }
    const PicParameterSet lPps = Interpret(lBits, lBits.Size());
    EXPECT_TRUE(lPps.transform_8x8_mode_flag);
    EXPECT_FALSE(lPps.pic_scaling_matrix_present_flag);
    EXPECT_EQ(-2, lPps.chroma_qp_index_offset);
    EXPECT_EQ(-12, lPps.second_chroma_qp_index_offset);
}

TEST(InterpretPPS, TheNumberOfScalingListsHangsOnTransformAndChroma) {
    for (const bool lTransform8x8 : {false, true}) {
        for (UInt lFormat = 0; lFormat < 4; ++lFormat) {
            const UInt lLists = 6 + (lTransform8x8 ? (3 == lFormat ? 6U : 2U) : 0U);
            BitWriter lBits = PlainPps().u(1, lTransform8x8 ? 1 : 0).u(1, 1);
            for (UInt lList = 0; lList < lLists; ++lList) {
                lBits.u(1, 1).se(static_cast<SInt>(lList)).se(-static_cast<SInt>(lList) - 8);
            }
            lBits.se(11);
            const PicParameterSet lPps = Interpret(lBits, lBits.Size(), lFormat);
            EXPECT_TRUE(lPps.pic_scaling_matrix_present_flag);
            EXPECT_EQ(11, lPps.second_chroma_qp_index_offset);
            const ScalingMatrix& lMatrix = lPps.pic_scaling_matrix;
            for (UInt lList = 0; lList < 12; ++lList) {
                EXPECT_EQ(lList < lLists, lMatrix.scaling_list_present_flag[lList]);
                EXPECT_EQ(lList < lLists ? 8 + lList : 0, lList < 6 ? UInt{lMatrix.ScalingList4x4[lList][15]}
                                                                    : UInt{lMatrix.ScalingList8x8[lList - 6][63]});
            }
        }
    }
}

}  // namespace
}  // namespace Parser
