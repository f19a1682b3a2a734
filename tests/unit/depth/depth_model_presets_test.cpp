#include "depth/depth_model_presets.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <limits>
#include <string>

namespace {

/// The whole list, one row a line: a slip in any field shows.
TEST(DepthModelPresets, MatchTheProductsListInOrder) {
    std::string table;
    for (const DepthModelPreset& preset : DepthModelPresets()) {
        const std::wstring path = preset.model_path;
        table += std::string(path.begin(), path.end()) + " " + std::to_string(preset.input_width) + "x" +
                 std::to_string(preset.input_height) + " " + preset.item_key + " | " + preset.display_name +
                 "\n";
    }
    EXPECT_EQ(
        table,
        R"(vistrel/virtual_monitor/depth_anything_v2_vits_fp16_252.onnx 256x256 item.quality_square_fast | Square Fast (256)
vistrel/virtual_monitor/depth_anything_v2_small_392_fp16.onnx 392x392 item.quality_square_normal | Square Normal (392)
vistrel/virtual_monitor/depth_anything_v2_vits_fp16.onnx 518x518 item.quality_square_high | Square High (518)
vistrel/virtual_monitor/distill_any_depth_small_518x294_fp16.onnx 518x294 item.quality_distill_fast | Distill Fast (518x294)
vistrel/virtual_monitor/distill_any_depth_small_686x392_fp16.onnx 686x392 item.quality_distill_normal | Distill Normal (686x392)
vistrel/virtual_monitor/distill_any_depth_small_798x448_fp16.onnx 798x448 item.quality_distill_high | Distill High (798x448)
vistrel/virtual_monitor/distill_any_depth_small_924x518_fp16.onnx 924x518 item.quality_distill_quality | Distill Quality (924x518)
vistrel/virtual_monitor/distill_any_depth_small_280x280_fp16.onnx 280x280 item.quality_distill_veryfast | Distill Very Fast (280x280)
vistrel/virtual_monitor/distill_any_depth_small_210x210_fp16.onnx 210x210 item.quality_distill_fastest | Distill Fastest (210x210)
vistrel/virtual_monitor/distill_any_depth_small_322x322_fp16.onnx 322x322 item.quality_distill_mid | Distill Balanced (322x322)
vistrel/virtual_monitor/distill_any_depth_small_182x182_fp16.onnx 182x182 item.quality_distill_potato | Distill Potato (182x182)
vistrel/virtual_monitor/vda_s_ring_518x294_fp16_R15.onnx 518x294 item.quality_temporal_fast | Video Depth Fast (518x294)
)");
}

TEST(DepthModelPresets, AQualityOutsideTheListIsACustomModel) {
    EXPECT_EQ(FindDepthModelPreset(-1), nullptr);
    EXPECT_EQ(FindDepthModelPreset(12), nullptr);
    EXPECT_EQ(FindDepthModelPreset(std::numeric_limits<std::int32_t>::min()), nullptr);
    EXPECT_EQ(FindDepthModelPreset(std::numeric_limits<std::int32_t>::max()), nullptr);
    for (std::int32_t quality = 0; quality < 12; ++quality) {
        EXPECT_EQ(FindDepthModelPreset(quality), &DepthModelPresets()[static_cast<std::size_t>(quality)]);
    }
}

}  // namespace
