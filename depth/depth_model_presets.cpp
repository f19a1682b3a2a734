#include "depth/depth_model_presets.h"

#include <cstddef>

// Some names and sizes disagree (row 0 is called 252 and uses 256, row 9 is "mid" and "Balanced"). They
// disagree in the product too.
const std::array<DepthModelPreset, 12>& DepthModelPresets() {
    static constexpr std::array<DepthModelPreset, 12> kPresets = {{
        {L"vistrel/virtual_monitor/depth_anything_v2_vits_fp16_252.onnx", 256, 256,
         "item.quality_square_fast", "Square Fast (256)"},
        {L"vistrel/virtual_monitor/depth_anything_v2_small_392_fp16.onnx", 392, 392,
         "item.quality_square_normal", "Square Normal (392)"},
        {L"vistrel/virtual_monitor/depth_anything_v2_vits_fp16.onnx", 518, 518, "item.quality_square_high",
         "Square High (518)"},
        {L"vistrel/virtual_monitor/distill_any_depth_small_518x294_fp16.onnx", 518, 294,
         "item.quality_distill_fast", "Distill Fast (518x294)"},
        {L"vistrel/virtual_monitor/distill_any_depth_small_686x392_fp16.onnx", 686, 392,
         "item.quality_distill_normal", "Distill Normal (686x392)"},
        {L"vistrel/virtual_monitor/distill_any_depth_small_798x448_fp16.onnx", 798, 448,
         "item.quality_distill_high", "Distill High (798x448)"},
        {L"vistrel/virtual_monitor/distill_any_depth_small_924x518_fp16.onnx", 924, 518,
         "item.quality_distill_quality", "Distill Quality (924x518)"},
        {L"vistrel/virtual_monitor/distill_any_depth_small_280x280_fp16.onnx", 280, 280,
         "item.quality_distill_veryfast", "Distill Very Fast (280x280)"},
        {L"vistrel/virtual_monitor/distill_any_depth_small_210x210_fp16.onnx", 210, 210,
         "item.quality_distill_fastest", "Distill Fastest (210x210)"},
        {L"vistrel/virtual_monitor/distill_any_depth_small_322x322_fp16.onnx", 322, 322,
         "item.quality_distill_mid", "Distill Balanced (322x322)"},
        {L"vistrel/virtual_monitor/distill_any_depth_small_182x182_fp16.onnx", 182, 182,
         "item.quality_distill_potato", "Distill Potato (182x182)"},
        {L"vistrel/virtual_monitor/vda_s_ring_518x294_fp16_R15.onnx", 518, 294, "item.quality_temporal_fast",
         "Video Depth Fast (518x294)"},
    }};
    return kPresets;
}

const DepthModelPreset* FindDepthModelPreset(std::int32_t quality) {
    const auto& presets = DepthModelPresets();
    if (quality < 0 || static_cast<std::size_t>(quality) >= presets.size()) {
        return nullptr;
    }
    return &presets[static_cast<std::size_t>(quality)];
}
