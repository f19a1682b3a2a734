#include "tools/vistrel_diag/sections/warp/warp_timing.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include "tests/lab/tests/lab_device.h"
#include "tests/unit/support/recorded_context.h"
#include "tests/unit/support/report_capture.h"
#include "tests/unit/support/scripted_com.h"
#include "tests/unit/support/scripted_compiler.h"
#include "tests/unit/support/warp_shader_install.h"
#include "tools/vistrel_diag/sections/warp/d3d11_timestamp_queries.h"
#include "tools/vistrel_diag/sections/warp/warp_frame.h"
#include "tools/vistrel_diag/sections/warp/warp_section.h"

namespace {

// The creating calls of one timing: 4 textures with 5 views, the vertex shader and the sampler, the luminance
// shader, then three queries for the calibration and for each of three batches.
constexpr int kLuminanceShaderCall = 12;
constexpr int kFirstBatchCall = 16;
constexpr int kLastCall = 24;

class WarpTimingTest : public testing::Test {
  protected:
    WarpTimingTest() { LoadSampleShader(lab_.device.Get(), shader_); }
    ~WarpTimingTest() override {
        scripted_compile = nullptr;
        DiagSettings::Instance() = DiagSettings();
    }

    /// Times and reports what failed, as the section does.
    WarpTiming Time(std::int32_t width, std::int32_t height, IDXGIAdapter1* adapter = nullptr) {
        const WarpTiming timing =
            TimeStereoWarp(lab_.device.Get(), lab_.context.Get(), adapter, shader_, width, height, {});
        PrintWarpFailures(timing);
        return timing;
    }

    LabDevice lab_;
    StereoWarpShader shader_;
};

void ExpectFailed(const WarpTiming& timing) {
    EXPECT_FALSE(timing.ok);
    EXPECT_EQ(timing.gpu_ms, 0.0);
    EXPECT_TRUE(timing.failure.has_value());
}

TEST_F(WarpTimingTest, TimesAndLeaksNothing) {
    const ReportCapture report;
    ScriptedDevice scripted(lab_.device.Get());
    const WarpTiming timing = Time(160, 90);
    EXPECT_TRUE(timing.ok);
    EXPECT_EQ(timing.width, 160);
    EXPECT_EQ(timing.height, 90);
    EXPECT_GT(timing.gpu_ms, 0.0);
    EXPECT_EQ(timing.vram_mb, 0.0);
    EXPECT_EQ(scripted.LivingObjects(), 0);
    EXPECT_EQ(report.Text(), "");
}

/// `count` times `word`.
std::string Repeated(int count, const std::string& word) {
    std::string words;
    for (int i = 0; i < count; ++i) {
        words += word;
    }
    return words;
}

TEST_F(WarpTimingTest, WarmsUpBeforeTheFirstTimestampAndCleansUpAtTheEnd) {
    RecordedContext recorded(lab_.context.Get());
    ScriptedDevice scripted(lab_.device.Get());
    scripted.result_of_call = [](int call) { return call >= kFirstBatchCall ? E_FAIL : S_OK; };
    ASSERT_TRUE(Time(160, 90).ok);
    const std::string depth_map = "draw ";
    const std::string frame = "fill draw fill draw ";  // Both eyes.
    EXPECT_EQ(recorded.Calls(), depth_map + Repeated(4, frame) + "flush begin-clock end-stamp " + frame +
                                    "end-stamp end-clock clear flush ");
}

TEST_F(WarpTimingTest, DrawsTheLeftEyeFirstOnAScreenOfTheSettingsScale) {
    DiagSettings::Instance().scale = 2.5F;
    RecordedContext recorded(lab_.context.Get());
    ASSERT_TRUE(Time(32, 18).ok);
    StereoWarpArguments arguments;
    arguments.screen_size = 7.5F;
    for (std::size_t i = 0; i < recorded.Constants().size(); ++i) {
        arguments.eye = i % 2;
        const StereoWarpConstants expected =
            ComputeStereoWarpConstants(DiagSettings::Instance(), arguments, 1.0F);
        ASSERT_EQ(std::memcmp(&recorded.Constants()[i], &expected, sizeof(expected)), 0) << i;
    }
}

TEST_F(WarpTimingTest, DrawsThreeBatchesOfOneSize) {
    RecordedContext recorded(lab_.context.Get());
    ASSERT_TRUE(Time(32, 18).ok);
    const std::size_t warm_up_and_calibration = 4 + 1;
    const std::size_t frames = recorded.Constants().size() / 2 - warm_up_and_calibration;
    EXPECT_EQ(frames % 3, 0U);
    EXPECT_GE(frames, 3U);
    EXPECT_LE(frames, 3U * 40U);
}

struct FailingCall {
    int call;
    const char* line;  // Empty if the timing continues.
};

/// The failures that end the timing, with the line printed.
const std::vector<FailingCall> kFailingCalls = {
    {1, "!! could not create the 160x90 colour texture (out of VRAM?)\n"},
    {2, "!! could not create the 160x90 depth texture\n"},
    {3, "!! could not create the 160x90 depth texture\n"},
    {4, "!! could not create the 160x90 depth texture\n"},
    {5, "!! could not create the 160x90 depth texture\n"},
    {6, "!! could not create eye target 0 at 160x90\n"},
    {7, "!! could not create eye target 0 at 160x90\n"},
    {8, "!! could not create eye target 1 at 160x90\n"},
    {9, "!! could not create eye target 1 at 160x90\n"},
    {10, "!! vertex shader failed to compile\n"},
    {11, "!! vertex shader failed to compile\n"},
    {13, "!! GPU timing produced nothing usable at 160x90\n"},
    {14, "!! GPU timing produced nothing usable at 160x90\n"},
    {15, "!! GPU timing produced nothing usable at 160x90\n"},
};

TEST_F(WarpTimingTest, EachFailureHasItsLineAndLeaksNothing) {
    for (const FailingCall& failing : kFailingCalls) {
        SCOPED_TRACE(failing.call);
        const ReportCapture report;
        ScriptedDevice scripted(lab_.device.Get());
        scripted.result_of_call = [&](int call) { return call == failing.call ? E_OUTOFMEMORY : S_OK; };
        ExpectFailed(Time(160, 90));
        EXPECT_EQ(report.Text(), failing.line);
        EXPECT_EQ(scripted.Calls(), failing.call);
        EXPECT_EQ(scripted.LivingObjects(), 0);
    }
}

TEST_F(WarpTimingTest, ALostDeviceGivesTheSameLines) {
    for (const FailingCall& failing : kFailingCalls) {
        SCOPED_TRACE(failing.call);
        const ReportCapture report;
        ScriptedDevice scripted(lab_.device.Get());
        scripted.result_of_call = [&](int call) {
            return call >= failing.call ? DXGI_ERROR_DEVICE_REMOVED : S_OK;
        };
        ExpectFailed(Time(160, 90));
        EXPECT_EQ(report.Text(), failing.line);
        EXPECT_EQ(scripted.LivingObjects(), 0);
    }
}

TEST_F(WarpTimingTest, ContinuesWithoutADepthMap) {
    const ReportCapture report;
    ScriptedDevice scripted(lab_.device.Get());
    scripted.result_of_call = [](int call) { return call == kLuminanceShaderCall ? E_FAIL : S_OK; };
    EXPECT_TRUE(Time(160, 90).ok);
    EXPECT_EQ(report.Text(), "!! shader compile failed: CreatePixelShader failed (0x80004005)\n");
    EXPECT_EQ(scripted.LivingObjects(), 0);
}

TEST_F(WarpTimingTest, SurvivesALostBatch) {
    for (int failing = kFirstBatchCall; failing <= kLastCall; ++failing) {
        SCOPED_TRACE(failing);
        const ReportCapture report;
        ScriptedDevice scripted(lab_.device.Get());
        scripted.result_of_call = [&](int call) { return call == failing ? E_OUTOFMEMORY : S_OK; };
        EXPECT_TRUE(Time(32, 18).ok);
        EXPECT_EQ(report.Text(), "");
        EXPECT_EQ(scripted.LivingObjects(), 0);
    }
}

TEST_F(WarpTimingTest, ADeviceLostAfterTheCalibrationLeavesItsTime) {
    const ReportCapture report;
    ScriptedDevice scripted(lab_.device.Get());
    scripted.result_of_call = [](int call) {
        return call >= kFirstBatchCall ? DXGI_ERROR_DEVICE_REMOVED : S_OK;
    };
    const WarpTiming timing = Time(160, 90);
    EXPECT_TRUE(timing.ok);
    EXPECT_GT(timing.gpu_ms, 0.0);
    EXPECT_EQ(report.Text(), "");
}

TEST_F(WarpTimingTest, KeepsAskingForDataAfterErrors) {
    for (const HRESULT result : {S_FALSE, DXGI_ERROR_DEVICE_REMOVED, DXGI_ERROR_INVALID_CALL}) {
        const ReportCapture report;
        ScriptedQueryData scripted(lab_.context.Get(), 50, result);
        EXPECT_TRUE(Time(32, 18).ok);
        EXPECT_EQ(scripted.FailuresLeft(), 0);
        EXPECT_EQ(report.Text(), "");
    }
}

/// A compiler that fails for one target with `message`, or silently without one.
auto FailingCompiler(std::string target, std::string message) {
    return [=](std::string_view asked, ID3DBlob**, ID3DBlob** messages) -> HRESULT {
        if (asked != target) {
            return E_PENDING;
        }
        if (!message.empty()) {
            D3DCreateBlob(message.size() + 1, messages);
            std::memcpy((*messages)->GetBufferPointer(), message.c_str(), message.size() + 1);
        }
        return E_FAIL;
    };
}

TEST_F(WarpTimingTest, ReportsAVertexShaderThatDoesNotCompile) {
    const ReportCapture report;
    ScriptedDevice scripted(lab_.device.Get());
    scripted_compile = FailingCompiler("vs_5_0", "error X0000");
    ExpectFailed(Time(160, 90));
    EXPECT_EQ(report.Text(), "!! vertex shader failed to compile\n");
    EXPECT_EQ(scripted.LivingObjects(), 0);
}

TEST_F(WarpTimingTest, QuotesTheCompilerOnTheDepthMap) {
    const ReportCapture report;
    scripted_compile = FailingCompiler("ps_5_0", "(1,1): error X3000: syntax error %s");
    EXPECT_TRUE(Time(32, 18).ok);
    EXPECT_EQ(report.Text(), "!! shader compile failed: (1,1): error X3000: syntax error %s\n");
}

TEST_F(WarpTimingTest, ReportsASilentCompilerOnTheDepthMap) {
    const ReportCapture report;
    scripted_compile = FailingCompiler("ps_5_0", "");
    EXPECT_TRUE(Time(32, 18).ok);
    EXPECT_EQ(report.Text(), "!! shader compile failed: \n");
}

constexpr UINT64 kMegabyte = 1048576;

TEST_F(WarpTimingTest, CountsTheMemoryThatTheTexturesTook) {
    constexpr UINT64 kBefore = 100 * kMegabyte;
    ScriptedVideoMemory scripted(lab_.adapter.Get(),
                                 {kBefore, kBefore, kBefore, 137 * kMegabyte + kMegabyte / 2});
    EXPECT_EQ(Time(32, 18, lab_.adapter.Get()).vram_mb, 37.5);
}

TEST_F(WarpTimingTest, ReportsZeroWhenMemoryIsFreedMeanwhile) {
    ScriptedVideoMemory scripted(lab_.adapter.Get(), {kMegabyte, kMegabyte, kMegabyte, 0});
    EXPECT_EQ(Time(32, 18, lab_.adapter.Get()).vram_mb, 0.0);
}

TEST_F(WarpTimingTest, WaitsForMemoryThatIsFreedLate) {
    ScriptedVideoMemory scripted(lab_.adapter.Get(),
                                 {9 * kMegabyte, 9 * kMegabyte, 5 * kMegabyte, 5 * kMegabyte, 8 * kMegabyte});
    EXPECT_EQ(Time(32, 18, lab_.adapter.Get()).vram_mb, 3.0);
}

TEST_F(WarpTimingTest, BeforeTheFirstReadingNothingIsBoundAndTheGpuIsIdle) {
    RecordedContext recorded(lab_.context.Get());
    ScriptedVideoMemory scripted(lab_.adapter.Get(), {0, 0, 0, 0});
    Time(32, 18, lab_.adapter.Get());
    EXPECT_THAT(recorded.Calls(), testing::StartsWith("clear end-other flush draw "));
}

TEST_F(WarpTimingTest, KeepsTheMemoryOfATimingThatFailedLater) {
    ScriptedVideoMemory memory(lab_.adapter.Get(), {0, 0, 0, 8 * kMegabyte});
    ScriptedDevice scripted(lab_.device.Get());
    scripted.result_of_call = [](int call) { return call == 14 ? E_FAIL : S_OK; };
    const WarpTiming timing = Time(32, 18, lab_.adapter.Get());
    ExpectFailed(timing);
    EXPECT_EQ(timing.vram_mb, 8.0);
}

TEST_F(WarpTimingTest, ForgetsTheMemoryOfTexturesThatFailed) {
    ScriptedVideoMemory memory(lab_.adapter.Get(), {0, 0, 0});
    ScriptedDevice scripted(lab_.device.Get());
    scripted.result_of_call = [](int call) { return call == 10 ? E_FAIL : S_OK; };
    EXPECT_EQ(Time(32, 18, lab_.adapter.Get()).vram_mb, 0.0);
}

TEST_F(WarpTimingTest, ReportsDirect3dsResultWithTheFailure) {
    ScriptedDevice scripted(lab_.device.Get());
    scripted.result_of_call = [](int call) { return call == 8 ? DXGI_ERROR_DEVICE_REMOVED : S_OK; };
    const WarpTiming timing = Time(160, 90);
    ASSERT_TRUE(timing.failure);
    EXPECT_EQ(timing.failure->stop, WarpStop::RightEyeTarget);
    EXPECT_EQ(timing.failure->result, static_cast<std::uint32_t>(DXGI_ERROR_DEVICE_REMOVED));
}

class WarpWarmUpTest : public WarpTimingTest {
  protected:
    void WarmUp() { WarmUpWarp(lab_.device.Get(), lab_.context.Get(), shader_, 160, 90, {}); }
};

TEST_F(WarpWarmUpTest, DrawsFramesAndLeaksNothing) {
    const ReportCapture report;
    RecordedContext recorded(lab_.context.Get());
    ScriptedDevice scripted(lab_.device.Get());
    WarmUp();
    EXPECT_THAT(recorded.Calls(),
                testing::StartsWith("draw begin-clock end-stamp fill draw fill draw end-stamp"));
    EXPECT_THAT(recorded.Calls(), testing::EndsWith("end-clock clear flush "));
    EXPECT_EQ(scripted.LivingObjects(), 0);
    EXPECT_EQ(report.Text(), "");
}

TEST_F(WarpWarmUpTest, EndsAtOnceWhenNothingCanBeDrawnOrTimed) {
    const ReportCapture report;
    for (const int failing : {1, 8, 10, 13}) {
        SCOPED_TRACE(failing);
        RecordedContext recorded(lab_.context.Get());
        ScriptedDevice scripted(lab_.device.Get());
        scripted.result_of_call = [failing](int call) { return call >= failing ? E_OUTOFMEMORY : S_OK; };
        WarmUp();
        EXPECT_THAT(recorded.Calls(), testing::AnyOf("clear flush ", "draw clear flush "));
        EXPECT_EQ(scripted.LivingObjects(), 0);
    }
    EXPECT_EQ(report.Text(), "");
}

TEST_F(WarpTimingTest, TimesTheWidestEye) {
    EXPECT_TRUE(Time(16384, 4).ok);
}

TEST_F(WarpTimingTest, HandlesSizesBeyondTheDeviceAndItsMemory) {
    const ReportCapture report;
    ScriptedDevice scripted(lab_.device.Get());
    constexpr std::int32_t kLargest = std::numeric_limits<std::int32_t>::max();
    ExpectFailed(Time(16385, 4));
    ExpectFailed(Time(4, 16385));
    ExpectFailed(Time(kLargest, kLargest));
    ExpectFailed(Time(kLargest, kLargest / 16));
    ExpectFailed(Time(0, 90));
    ExpectFailed(Time(160, -1));
    EXPECT_EQ(scripted.LivingObjects(), 0);
    EXPECT_EQ(report.Text(), R"(!! could not create the 16385x4 colour texture (out of VRAM?)
!! could not create the 4x16385 colour texture (out of VRAM?)
!! could not create the 2147483647x2147483647 colour texture (out of VRAM?)
!! could not create the 2147483647x134217727 colour texture (out of VRAM?)
!! could not create the 0x90 colour texture (out of VRAM?)
!! could not create the 160x-1 colour texture (out of VRAM?)
)");
}

/// How many times as long the second of two things takes. Other work on the machine only ever makes a time
/// longer, so each counts with the best of its rounds. Their number is fixed: whoever went on until a ratio
/// pleased him would find one.
template <typename First, typename Second>
double RatioOfBest(First&& first, Second&& second) {
    constexpr int kRounds = 4;
    double first_best = std::numeric_limits<double>::infinity();
    double second_best = first_best;
    for (int round = 0; round < kRounds; ++round) {
        first_best = std::min(first_best, first());
        second_best = std::min(second_best, second());
    }
    return second_best / first_best;
}

TEST_F(WarpTimingTest, TwiceThePixelsCostAboutTwice) {
    const double ratio =
        RatioOfBest([this] { return Time(480, 270).gpu_ms; }, [this] { return Time(480, 540).gpu_ms; });
    EXPECT_GT(ratio, 1.4);
    EXPECT_LT(ratio, 3.0);
}

TEST_F(WarpTimingTest, MoreStepsCostMore) {
    const auto time_with_steps = [this](std::int32_t steps) {
        DiagSettings::Instance().f3d_search_steps = steps;
        return Time(320, 180).gpu_ms;
    };
    const double ratio = RatioOfBest([&] { return time_with_steps(4); }, [&] { return time_with_steps(64); });
    EXPECT_GT(ratio, 1.5);
}

TEST_F(WarpTimingTest, TwiceTheFramesCostTheSameEach) {
    WarpResources resources;
    ASSERT_FALSE(CreateWarpTextures(*lab_.device.Get(), {}, 320, 180, resources));
    ASSERT_FALSE(CreateWarpStates(*lab_.device.Get(), 320, 180, resources));
    ASSERT_FALSE(DrawDepthMap(*lab_.device.Get(), *lab_.context.Get(), resources));
    D3D11TimestampQueries queries(*lab_.device.Get(), *lab_.context.Get());
    const auto time_frames = [&](int frames) {
        return GpuTimeFrames(queries, frames,
                             [&] { DrawWarpFrame(*lab_.context.Get(), resources, shader_, 3.0F); });
    };
    time_frames(4);
    const double ratio = RatioOfBest([&] { return time_frames(8); }, [&] { return time_frames(16); });
    EXPECT_GT(ratio, 0.6);
    EXPECT_LT(ratio, 1.6);
}

}  // namespace
