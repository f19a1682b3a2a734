#include "capture/output_choice.h"

#include <gtest/gtest.h>

namespace {

const AdapterLuid kRenderGpu{.low = 7, .high = 1};
const AdapterLuid kOtherGpu{.low = 8, .high = 1};

OutputRecord Output(const AdapterLuid& gpu, const char* name) {
    return {.adapter_luid = gpu, .adapter_name = "GPU", .device_name = name};
}

TEST(ChooseOutput, ReturnsNothingWithoutOutputs) {
    EXPECT_EQ(ChooseOutput({}, kRenderGpu, ""), std::nullopt);
    EXPECT_EQ(ChooseOutput({}, kRenderGpu, "\\\\.\\DISPLAY1"), std::nullopt);
}

TEST(ChooseOutput, TakesTheFirstOnTheRenderGpuWithoutAName) {
    const std::vector<OutputRecord> outputs = {Output(kOtherGpu, "A"), Output(kOtherGpu, "B"),
                                               Output(kRenderGpu, "C"), Output(kRenderGpu, "D")};
    EXPECT_EQ(ChooseOutput(outputs, kRenderGpu, ""), 2U);
}

TEST(ChooseOutput, TakesTheFirstOfAnyGpuWhenTheRenderGpuHasNone) {
    const std::vector<OutputRecord> outputs = {Output(kOtherGpu, "A"), Output({.low = 9, .high = 1}, "B")};
    EXPECT_EQ(ChooseOutput(outputs, kRenderGpu, ""), 0U);
}

TEST(ChooseOutput, ComparesBothHalvesOfTheLuid) {
    const std::vector<OutputRecord> outputs = {Output(kOtherGpu, "A"), Output({.low = 7, .high = 2}, "B"),
                                               Output({.low = 6, .high = 1}, "C"), Output(kRenderGpu, "D")};
    EXPECT_EQ(ChooseOutput(outputs, kRenderGpu, ""), 3U);
}

TEST(ChooseOutput, PrefersTheNameToTheRenderGpu) {
    const std::vector<OutputRecord> outputs = {Output(kRenderGpu, "A"), Output(kOtherGpu, "B"),
                                               Output(kRenderGpu, "B")};
    EXPECT_EQ(ChooseOutput(outputs, kRenderGpu, "B"), 1U) << "the first of that name";
}

TEST(ChooseOutput, ComparesNamesByteForByte) {
    const std::vector<OutputRecord> outputs = {Output(kRenderGpu, "\\\\.\\DISPLAY10"),
                                               Output(kRenderGpu, "\\\\.\\DISPLAY1")};
    EXPECT_EQ(ChooseOutput(outputs, kRenderGpu, "\\\\.\\DISPLAY1"), 1U);
    EXPECT_EQ(ChooseOutput(outputs, kRenderGpu, "\\\\.\\display1"), std::nullopt);
    EXPECT_EQ(ChooseOutput(outputs, kRenderGpu, "\\\\.\\DISPLAY"), std::nullopt);
    EXPECT_EQ(ChooseOutput(outputs, kRenderGpu, " "), std::nullopt);
}

TEST(JoinDeviceNames, SeparatesTheNamesByCommas) {
    EXPECT_EQ(JoinDeviceNames({}), "");
    EXPECT_EQ(JoinDeviceNames({Output(kRenderGpu, "A")}), "A");
    EXPECT_EQ(JoinDeviceNames({Output(kRenderGpu, "A"), Output(kOtherGpu, "B"), Output(kRenderGpu, "A")}),
              "A, B, A");
}

}  // namespace
