#include "tools/vistrel_diag/sections/depth_model/depth_model_task.h"

#include <gtest/gtest.h>

namespace {

WorkerMessage ThereAndBack(const WorkerMessage& message) {
    return WorkerMessage::FromLine(message.ToLine()).value();
}

TEST(DepthModelRequestMessage, RoundTripsEverything) {
    DepthModelRequest request;
    request.tool_folder = "C:\\\u00DCn\u00EFc\u00F6d\u00E9 \"folder\"";
    request.gpu_index = -1;
    request.first_preset = 3;
    request.preset_count = 9;
    const DepthModelRequest back = DepthModelRequestOf(ThereAndBack(MessageOf(request)));
    EXPECT_EQ(back.tool_folder, request.tool_folder);
    EXPECT_EQ(back.gpu_index, -1);
    EXPECT_EQ(back.first_preset, 3);
    EXPECT_EQ(back.preset_count, 9);
    EXPECT_FALSE(back.custom.has_value());
}

TEST(DepthModelRequestMessage, RoundTripsACustomModel) {
    DepthModelRequest request;
    request.custom = {"D:\\models\\own.onnx", 518};
    const DepthModelRequest back = DepthModelRequestOf(ThereAndBack(MessageOf(request)));
    ASSERT_TRUE(back.custom.has_value());
    EXPECT_EQ(back.custom->path, "D:\\models\\own.onnx");
    EXPECT_EQ(back.custom->size, 518);
    EXPECT_EQ(back.preset_count, 0);
}

TEST(ModelTimingMessage, RoundTripsEverythingBitForBit) {
    ModelTiming timing;
    timing.ok = true;
    timing.name = "Square Normal (392)";
    timing.path_tried = "C:\\models/a.onnx";
    timing.width = 518;
    timing.height = 294;
    timing.median_ms = 1.0 / 3;
    timing.min_ms = 0.1;
    timing.max_ms = 1e6;
    timing.error = "onnxruntime: words\nof two lines";
    const ModelTiming back = ModelTimingOf(ThereAndBack(MessageOf(timing)));
    EXPECT_TRUE(back.ok);
    EXPECT_EQ(back.name, timing.name);
    EXPECT_EQ(back.path_tried, timing.path_tried);
    EXPECT_EQ(back.width, 518);
    EXPECT_EQ(back.height, 294);
    EXPECT_EQ(back.median_ms, timing.median_ms);
    EXPECT_EQ(back.min_ms, timing.min_ms);
    EXPECT_EQ(back.max_ms, timing.max_ms);
    EXPECT_EQ(back.error, timing.error);
}

}  // namespace
