#pragma once

#include <array>
#include <vector>

#include "Parser/Types.hpp"

namespace Parser {

// The syntax elements of ITU-T H.264 clauses 7.3.2.1, 7.3.2.2 and E.1 under their own names. An element
// that is absent keeps the value it is inferred to have, or 0.

struct ScalingMatrix {
    static constexpr UInt kLists4x4 = 6;
    static constexpr UInt kLists8x8 = 6;  ///< two unless the chroma format is 4:4:4

    std::array<bool, kLists4x4 + kLists8x8> scaling_list_present_flag{};
    std::array<std::array<Byte, 16>, kLists4x4> ScalingList4x4{};
    std::array<std::array<Byte, 64>, kLists8x8> ScalingList8x8{};
    std::array<bool, kLists4x4> UseDefaultScalingMatrix4x4Flag{};
    std::array<bool, kLists8x8> UseDefaultScalingMatrix8x8Flag{};
};

struct HRDParameters {
    static constexpr UInt kMostCpbCntMinus1 = 31;

    UInt cpb_cnt_minus1 = 0;
    UInt bit_rate_scale = 0;
    UInt cpb_size_scale = 0;
    std::array<UInt, kMostCpbCntMinus1 + 1> bit_rate_value_minus1{};
    std::array<UInt, kMostCpbCntMinus1 + 1> cpb_size_value_minus1{};
    std::array<bool, kMostCpbCntMinus1 + 1> cbr_flag{};
    UInt initial_cpb_removal_delay_length_minus1 = 23;
    UInt cpb_removal_delay_length_minus1 = 23;
    UInt dpb_output_delay_length_minus1 = 23;
    UInt time_offset_length = 24;
};

struct VUIParameters {
    static constexpr UInt kExtendedSAR = 255;

    bool aspect_ratio_info_present_flag = false;
    UInt aspect_ratio_idc = 0;
    UInt sar_width = 0;
    UInt sar_height = 0;
    bool overscan_info_present_flag = false;
    bool overscan_appropriate_flag = false;
    bool video_signal_type_present_flag = false;
    UInt video_format = 5;
    bool video_full_range_flag = false;
    bool colour_description_present_flag = false;
    UInt colour_primaries = 2;
    UInt transfer_characteristics = 2;
    UInt matrix_coefficients = 2;
    bool chroma_loc_info_present_flag = false;
    UInt chroma_sample_loc_type_top_field = 0;
    UInt chroma_sample_loc_type_bottom_field = 0;
    bool timing_info_present_flag = false;
    UInt num_units_in_tick = 0;
    UInt time_scale = 0;
    bool fixed_frame_rate_flag = false;
    bool nal_hrd_parameters_present_flag = false;
    HRDParameters nal_hrd_parameters;
    bool vcl_hrd_parameters_present_flag = false;
    HRDParameters vcl_hrd_parameters;
    bool low_delay_hrd_flag = false;
    bool pic_struct_present_flag = false;
    bool bitstream_restriction_flag = false;
    bool motion_vectors_over_pic_boundaries_flag = true;
    UInt max_bytes_per_pic_denom = 2;
    UInt max_bits_per_mb_denom = 1;
    UInt log2_max_mv_length_horizontal = 16;
    UInt log2_max_mv_length_vertical = 16;
    UInt max_num_reorder_frames = 0;
    UInt max_dec_frame_buffering = 0;
};

struct SeqParameterSet {
    static constexpr UInt kMostId = 31;
    static constexpr UInt kMostChromaFormat = 3;
    static constexpr UInt kMostRefFramesInCycle = 255;

    bool valid = false;  ///< set when all of it was read
    UInt profile_idc = 0;
    std::array<bool, 6> constraint_set_flag{};
    UInt reserved_zero_2bits = 0;
    UInt level_idc = 0;
    UInt seq_parameter_set_id = 0;
    UInt chroma_format_idc = 1;
    bool separate_colour_plane_flag = false;
    UInt bit_depth_luma_minus8 = 0;
    UInt bit_depth_chroma_minus8 = 0;
    bool qpprime_y_zero_transform_bypass_flag = false;
    bool seq_scaling_matrix_present_flag = false;
    ScalingMatrix seq_scaling_matrix;
    UInt log2_max_frame_num_minus4 = 0;
    UInt pic_order_cnt_type = 0;
    UInt log2_max_pic_order_cnt_lsb_minus4 = 0;
    bool delta_pic_order_always_zero_flag = false;
    SInt offset_for_non_ref_pic = 0;
    SInt offset_for_top_to_bottom_field = 0;
    UInt num_ref_frames_in_pic_order_cnt_cycle = 0;
    std::array<SInt, kMostRefFramesInCycle> offset_for_ref_frame{};
    UInt max_num_ref_frames = 0;
    bool gaps_in_frame_num_value_allowed_flag = false;
    UInt pic_width_in_mbs_minus1 = 0;
    UInt pic_height_in_map_units_minus1 = 0;
    bool frame_mbs_only_flag = false;
    bool mb_adaptive_frame_field_flag = false;
    bool direct_8x8_inference_flag = false;
    bool frame_cropping_flag = false;
    UInt frame_crop_left_offset = 0;
    UInt frame_crop_right_offset = 0;
    UInt frame_crop_top_offset = 0;
    UInt frame_crop_bottom_offset = 0;
    bool vui_parameters_present_flag = false;
    VUIParameters vui_parameters;
};

struct PicParameterSet {
    static constexpr UInt kMostId = 255;
    static constexpr UInt kMostSliceGroupsMinus1 = 7;
    static constexpr UInt kMostSliceGroupMapType = 6;

    bool valid = false;  ///< set when all of it was read
    UInt pic_parameter_set_id = 0;
    UInt seq_parameter_set_id = 0;
    bool entropy_coding_mode_flag = false;
    bool bottom_field_pic_order_in_frame_present_flag = false;
    UInt num_slice_groups_minus1 = 0;
    UInt slice_group_map_type = 0;
    std::array<UInt, kMostSliceGroupsMinus1 + 1> run_length_minus1{};
    std::array<UInt, kMostSliceGroupsMinus1> top_left{};
    std::array<UInt, kMostSliceGroupsMinus1> bottom_right{};
    bool slice_group_change_direction_flag = false;
    UInt slice_group_change_rate_minus1 = 0;
    UInt pic_size_in_map_units_minus1 = 0;
    std::vector<Byte> slice_group_id;
    UInt num_ref_idx_l0_default_active_minus1 = 0;
    UInt num_ref_idx_l1_default_active_minus1 = 0;
    bool weighted_pred_flag = false;
    UInt weighted_bipred_idc = 0;
    SInt pic_init_qp_minus26 = 0;
    SInt pic_init_qs_minus26 = 0;
    SInt chroma_qp_index_offset = 0;
    bool deblocking_filter_control_present_flag = false;
    bool constrained_intra_pred_flag = false;
    bool redundant_pic_cnt_present_flag = false;
    bool transform_8x8_mode_flag = false;
    bool pic_scaling_matrix_present_flag = false;
    ScalingMatrix pic_scaling_matrix;
    SInt second_chroma_qp_index_offset = 0;  ///< as chroma_qp_index_offset when absent
};

}  // namespace Parser
