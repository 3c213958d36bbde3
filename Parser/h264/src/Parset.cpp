#include "Parset.hpp"

#include <stdexcept>
#include <string>

#include "NAL.hpp"

namespace Parser {

namespace {

constexpr std::size_t kHeaderSize = 1;

/// `aValue`, when it is within a list or a table of the syntax.
UInt AtMost(UInt aMost, UInt aValue, const char* aName) {
    if (aValue > aMost) { throw std::runtime_error(std::string(aName) + " is out of range"); }
    return aValue;
}

/// The syntax elements of a NAL unit, unescaped in place.
Bitstream Unpack(Byte* aBytes, std::size_t aLength) {
    if (aLength < kHeaderSize) { throw std::runtime_error("Unpack(): No NAL unit"); }
    Byte* lBytes = aBytes + kHeaderSize;
    const std::ptrdiff_t lLength = EBSPtoRBSP(lBytes, aLength - kHeaderSize, 0);
    if (lLength < 0) { throw std::runtime_error("Unpack(): Invalid NAL unit"); }
    return Bitstream{lBytes, RBSPtoSODB(lBytes, static_cast<std::size_t>(lLength)), 0};
}

/// The profiles whose parameter sets have the chroma format.
bool HasChromaFormat(UInt aProfile) {
    switch (aProfile) {
        case 44:
        case 83:
        case 86:
        case 100:
        case 110:
        case 118:
        case 122:
        case 128:
        case 134:
        case 135:
        case 138:
        case 139:
        case 244: return true;
        default: return false;
    }
}

void ReadScalingMatrix(Bitstream& aBitstream, ScalingMatrix& aMatrix, UInt aLists8x8) {
    for (UInt lList = 0; lList < ScalingMatrix::kLists4x4 + aLists8x8; ++lList) {
        aMatrix.scaling_list_present_flag[lList] = u_1(aBitstream);
        if (!aMatrix.scaling_list_present_flag[lList]) { continue; }
        if (lList < ScalingMatrix::kLists4x4) {
            auto& lScaling = aMatrix.ScalingList4x4[lList];
            Scaling_List(lScaling.data(), lScaling.size(), aMatrix.UseDefaultScalingMatrix4x4Flag[lList], aBitstream);
        } else {
            const UInt l8x8 = lList - ScalingMatrix::kLists4x4;
            auto& lScaling = aMatrix.ScalingList8x8[l8x8];
            Scaling_List(lScaling.data(), lScaling.size(), aMatrix.UseDefaultScalingMatrix8x8Flag[l8x8], aBitstream);
        }
    }
}

UInt Lists8x8(const SeqParameterSet& aSps) {
    return SeqParameterSet::kMostChromaFormat == aSps.chroma_format_idc ? 6 : 2;
}

void ReadChromaFormat(Bitstream& aBitstream, SeqParameterSet& aSps) {
    aSps.chroma_format_idc = AtMost(SeqParameterSet::kMostChromaFormat, ue_v(aBitstream), "chroma_format_idc");
    if (SeqParameterSet::kMostChromaFormat == aSps.chroma_format_idc) {
        aSps.separate_colour_plane_flag = u_1(aBitstream);
    }
    aSps.bit_depth_luma_minus8 = ue_v(aBitstream);
    aSps.bit_depth_chroma_minus8 = ue_v(aBitstream);
    aSps.qpprime_y_zero_transform_bypass_flag = u_1(aBitstream);
    aSps.seq_scaling_matrix_present_flag = u_1(aBitstream);
    if (aSps.seq_scaling_matrix_present_flag) {
        ReadScalingMatrix(aBitstream, aSps.seq_scaling_matrix, Lists8x8(aSps));
    }
}

void ReadPicOrderCnt(Bitstream& aBitstream, SeqParameterSet& aSps) {
    aSps.pic_order_cnt_type = ue_v(aBitstream);
    if (0 == aSps.pic_order_cnt_type) { aSps.log2_max_pic_order_cnt_lsb_minus4 = ue_v(aBitstream); }
    if (1 != aSps.pic_order_cnt_type) { return; }
    aSps.delta_pic_order_always_zero_flag = u_1(aBitstream);
    aSps.offset_for_non_ref_pic = se_v(aBitstream);
    aSps.offset_for_top_to_bottom_field = se_v(aBitstream);
    aSps.num_ref_frames_in_pic_order_cnt_cycle =
        AtMost(SeqParameterSet::kMostRefFramesInCycle, ue_v(aBitstream), "num_ref_frames_in_pic_order_cnt_cycle");
    for (UInt lFrame = 0; lFrame < aSps.num_ref_frames_in_pic_order_cnt_cycle; ++lFrame) {
        aSps.offset_for_ref_frame[lFrame] = se_v(aBitstream);
    }
}

void ReadFrameSize(Bitstream& aBitstream, SeqParameterSet& aSps) {
    aSps.pic_width_in_mbs_minus1 = ue_v(aBitstream);
    aSps.pic_height_in_map_units_minus1 = ue_v(aBitstream);
    aSps.frame_mbs_only_flag = u_1(aBitstream);
    if (!aSps.frame_mbs_only_flag) { aSps.mb_adaptive_frame_field_flag = u_1(aBitstream); }
    aSps.direct_8x8_inference_flag = u_1(aBitstream);
    aSps.frame_cropping_flag = u_1(aBitstream);
    if (!aSps.frame_cropping_flag) { return; }
    aSps.frame_crop_left_offset = ue_v(aBitstream);
    aSps.frame_crop_right_offset = ue_v(aBitstream);
    aSps.frame_crop_top_offset = ue_v(aBitstream);
    aSps.frame_crop_bottom_offset = ue_v(aBitstream);
}

/// Everything that says how decoded samples are to be shown.
void ReadPictureAspects(Bitstream& aBitstream, VUIParameters& aVui) {
    aVui.aspect_ratio_info_present_flag = u_1(aBitstream);
    if (aVui.aspect_ratio_info_present_flag) {
        aVui.aspect_ratio_idc = u_v(8, aBitstream);
        if (VUIParameters::kExtendedSAR == aVui.aspect_ratio_idc) {
            aVui.sar_width = u_v(16, aBitstream);
            aVui.sar_height = u_v(16, aBitstream);
        }
    }
    aVui.overscan_info_present_flag = u_1(aBitstream);
    if (aVui.overscan_info_present_flag) { aVui.overscan_appropriate_flag = u_1(aBitstream); }
    aVui.video_signal_type_present_flag = u_1(aBitstream);
    if (aVui.video_signal_type_present_flag) {
        aVui.video_format = u_v(3, aBitstream);
        aVui.video_full_range_flag = u_1(aBitstream);
        aVui.colour_description_present_flag = u_1(aBitstream);
        if (aVui.colour_description_present_flag) {
            aVui.colour_primaries = u_v(8, aBitstream);
            aVui.transfer_characteristics = u_v(8, aBitstream);
            aVui.matrix_coefficients = u_v(8, aBitstream);
        }
    }
    aVui.chroma_loc_info_present_flag = u_1(aBitstream);
    if (aVui.chroma_loc_info_present_flag) {
        aVui.chroma_sample_loc_type_top_field = ue_v(aBitstream);
        aVui.chroma_sample_loc_type_bottom_field = ue_v(aBitstream);
    }
}

void ReadBitstreamRestriction(Bitstream& aBitstream, VUIParameters& aVui) {
    aVui.motion_vectors_over_pic_boundaries_flag = u_1(aBitstream);
    aVui.max_bytes_per_pic_denom = ue_v(aBitstream);
    aVui.max_bits_per_mb_denom = ue_v(aBitstream);
    aVui.log2_max_mv_length_horizontal = ue_v(aBitstream);
    aVui.log2_max_mv_length_vertical = ue_v(aBitstream);
    aVui.max_num_reorder_frames = ue_v(aBitstream);
    aVui.max_dec_frame_buffering = ue_v(aBitstream);
}

/// Bits of one slice_group_id: the logarithm to base 2 of the number of groups, rounded up.
UInt SliceGroupIdBits(UInt aGroupsMinus1) {
    UInt lBits = 0;
    while (0 != aGroupsMinus1 >> lBits) {
        ++lBits;
    }
    return lBits;
}

void ReadSliceGroupIds(Bitstream& aBitstream, PicParameterSet& aPps) {
    aPps.pic_size_in_map_units_minus1 = ue_v(aBitstream);
    const UInt lBits = SliceGroupIdBits(aPps.num_slice_groups_minus1);
    // The count may be anything, yet each round takes a bit or more: the data ends the loop.
    for (UInt lUnit = 0; lUnit <= aPps.pic_size_in_map_units_minus1; ++lUnit) {
        const UInt lGroup = AtMost(aPps.num_slice_groups_minus1, u_v(lBits, aBitstream), "slice_group_id");
        aPps.slice_group_id.push_back(static_cast<Byte>(lGroup));
    }
}

void ReadSliceGroups(Bitstream& aBitstream, PicParameterSet& aPps) {
    aPps.num_slice_groups_minus1 =
        AtMost(PicParameterSet::kMostSliceGroupsMinus1, ue_v(aBitstream), "num_slice_groups_minus1");
    if (0 == aPps.num_slice_groups_minus1) { return; }
    aPps.slice_group_map_type =
        AtMost(PicParameterSet::kMostSliceGroupMapType, ue_v(aBitstream), "slice_group_map_type");
    switch (aPps.slice_group_map_type) {
        case 0:
            for (UInt lGroup = 0; lGroup <= aPps.num_slice_groups_minus1; ++lGroup) {
                aPps.run_length_minus1[lGroup] = ue_v(aBitstream);
            }
            break;
        case 2:
            for (UInt lGroup = 0; lGroup < aPps.num_slice_groups_minus1; ++lGroup) {
                aPps.top_left[lGroup] = ue_v(aBitstream);
                aPps.bottom_right[lGroup] = ue_v(aBitstream);
            }
            break;
        case 3:
        case 4:
        case 5:
            aPps.slice_group_change_direction_flag = u_1(aBitstream);
            aPps.slice_group_change_rate_minus1 = ue_v(aBitstream);
            break;
        case 6: ReadSliceGroupIds(aBitstream, aPps); break;
        default: break;  // type 1, dispersed, has no parameters
    }
}

/// What the High profiles append.
void ReadPpsExtension(Bitstream& aBitstream, PicParameterSet& aPps, const SeqParameterSet& aSps) {
    aPps.transform_8x8_mode_flag = u_1(aBitstream);
    aPps.pic_scaling_matrix_present_flag = u_1(aBitstream);
    if (aPps.pic_scaling_matrix_present_flag) {
        ReadScalingMatrix(aBitstream, aPps.pic_scaling_matrix, aPps.transform_8x8_mode_flag ? Lists8x8(aSps) : 0);
    }
    aPps.second_chroma_qp_index_offset = se_v(aBitstream);
}

}  // namespace

SeqParameterSet* AllocSPS() {
    return new SeqParameterSet();
}

PicParameterSet* AllocPPS() {
    return new PicParameterSet();
}

void FreeSPS(SeqParameterSet* aSps) {
    delete aSps;
}

void FreePPS(PicParameterSet* aPps) {
    delete aPps;
}

void ProcessSPS(SeqParameterSet& aSps, Byte* aBytes, std::size_t aLength) {
    aSps = SeqParameterSet();
    Bitstream lBitstream = Unpack(aBytes, aLength);
    InterpretSPS(lBitstream, aSps);
}

void ProcessPPS(PicParameterSet& aPps, Byte* aBytes, std::size_t aLength, const SeqParameterSet& aSps) {
    aPps = PicParameterSet();
    Bitstream lBitstream = Unpack(aBytes, aLength);
    InterpretPPS(lBitstream, aPps, aSps);
}

void InterpretSPS(Bitstream& aBitstream, SeqParameterSet& aSps) {
    aSps.profile_idc = u_v(8, aBitstream);
    for (bool& lFlag : aSps.constraint_set_flag) {
        lFlag = u_1(aBitstream);
    }
    aSps.reserved_zero_2bits = u_v(2, aBitstream);
    aSps.level_idc = u_v(8, aBitstream);
    aSps.seq_parameter_set_id = AtMost(SeqParameterSet::kMostId, ue_v(aBitstream), "seq_parameter_set_id");
    if (HasChromaFormat(aSps.profile_idc)) { ReadChromaFormat(aBitstream, aSps); }
    aSps.log2_max_frame_num_minus4 = ue_v(aBitstream);
    ReadPicOrderCnt(aBitstream, aSps);
    aSps.max_num_ref_frames = ue_v(aBitstream);
    aSps.gaps_in_frame_num_value_allowed_flag = u_1(aBitstream);
    ReadFrameSize(aBitstream, aSps);
    aSps.vui_parameters_present_flag = u_1(aBitstream);
    if (aSps.vui_parameters_present_flag) { ReadVUI(aBitstream, aSps.vui_parameters); }
    aSps.valid = true;
}

void InterpretPPS(Bitstream& aBitstream, PicParameterSet& aPps, const SeqParameterSet& aSps) {
    aPps.pic_parameter_set_id = AtMost(PicParameterSet::kMostId, ue_v(aBitstream), "pic_parameter_set_id");
    aPps.seq_parameter_set_id = AtMost(SeqParameterSet::kMostId, ue_v(aBitstream), "seq_parameter_set_id");
    aPps.entropy_coding_mode_flag = u_1(aBitstream);
    aPps.bottom_field_pic_order_in_frame_present_flag = u_1(aBitstream);
    ReadSliceGroups(aBitstream, aPps);
    aPps.num_ref_idx_l0_default_active_minus1 = ue_v(aBitstream);
    aPps.num_ref_idx_l1_default_active_minus1 = ue_v(aBitstream);
    aPps.weighted_pred_flag = u_1(aBitstream);
    aPps.weighted_bipred_idc = u_v(2, aBitstream);
    aPps.pic_init_qp_minus26 = se_v(aBitstream);
    aPps.pic_init_qs_minus26 = se_v(aBitstream);
    aPps.chroma_qp_index_offset = se_v(aBitstream);
    aPps.deblocking_filter_control_present_flag = u_1(aBitstream);
    aPps.constrained_intra_pred_flag = u_1(aBitstream);
    aPps.redundant_pic_cnt_present_flag = u_1(aBitstream);
    aPps.second_chroma_qp_index_offset = aPps.chroma_qp_index_offset;
    if (more_rbsp_data(aBitstream)) { ReadPpsExtension(aBitstream, aPps, aSps); }
    aPps.valid = true;
}

void ReadVUI(Bitstream& aBitstream, VUIParameters& aVui) {
    ReadPictureAspects(aBitstream, aVui);
    aVui.timing_info_present_flag = u_1(aBitstream);
    if (aVui.timing_info_present_flag) {
        aVui.num_units_in_tick = u_v(32, aBitstream);
        aVui.time_scale = u_v(32, aBitstream);
        aVui.fixed_frame_rate_flag = u_1(aBitstream);
    }
    aVui.nal_hrd_parameters_present_flag = u_1(aBitstream);
    if (aVui.nal_hrd_parameters_present_flag) { ReadHRDParameters(aBitstream, aVui.nal_hrd_parameters); }
    aVui.vcl_hrd_parameters_present_flag = u_1(aBitstream);
    if (aVui.vcl_hrd_parameters_present_flag) { ReadHRDParameters(aBitstream, aVui.vcl_hrd_parameters); }
    if (aVui.nal_hrd_parameters_present_flag || aVui.vcl_hrd_parameters_present_flag) {
        aVui.low_delay_hrd_flag = u_1(aBitstream);
    }
    aVui.pic_struct_present_flag = u_1(aBitstream);
    aVui.bitstream_restriction_flag = u_1(aBitstream);
    if (aVui.bitstream_restriction_flag) { ReadBitstreamRestriction(aBitstream, aVui); }
}

void ReadHRDParameters(Bitstream& aBitstream, HRDParameters& aHrd) {
    aHrd.cpb_cnt_minus1 = AtMost(HRDParameters::kMostCpbCntMinus1, ue_v(aBitstream), "cpb_cnt_minus1");
    aHrd.bit_rate_scale = u_v(4, aBitstream);
    aHrd.cpb_size_scale = u_v(4, aBitstream);
    for (UInt lCpb = 0; lCpb <= aHrd.cpb_cnt_minus1; ++lCpb) {
        aHrd.bit_rate_value_minus1[lCpb] = ue_v(aBitstream);
        aHrd.cpb_size_value_minus1[lCpb] = ue_v(aBitstream);
        aHrd.cbr_flag[lCpb] = u_1(aBitstream);
    }
    aHrd.initial_cpb_removal_delay_length_minus1 = u_v(5, aBitstream);
    aHrd.cpb_removal_delay_length_minus1 = u_v(5, aBitstream);
    aHrd.dpb_output_delay_length_minus1 = u_v(5, aBitstream);
    aHrd.time_offset_length = u_v(5, aBitstream);
}

void Scaling_List(Byte* aList, std::size_t aSize, bool& aUseDefault, Bitstream& aBitstream) {
    constexpr SInt kRange = 256;
    SInt lLast = 8;
    SInt lNext = 8;
    for (std::size_t lIdx = 0; lIdx < aSize; ++lIdx) {
        if (0 != lNext) {
            const SInt lDelta = se_v(aBitstream);
            if (lDelta < -kRange / 2 || lDelta >= kRange / 2) {
                throw std::runtime_error("delta_scale is out of range");
            }
            lNext = (lLast + lDelta + kRange) % kRange;
            aUseDefault = 0 == lIdx && 0 == lNext;
        }
        if (0 != lNext) { lLast = lNext; }
        aList[lIdx] = static_cast<Byte>(lLast);
    }
}

}  // namespace Parser
