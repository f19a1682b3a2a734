// Measuring the rate of a desktop whose clock is scripted: every acquire takes a tenth of a millisecond, a
// wait as long as it is allowed to.
#include "tools/vistrel_diag/sections/capture/capture_measurement.h"

#include <cmath>
#include <limits>

#include "tests/unit/capture/screen_capture_test_base.h"
#include "tests/unit/support/report_capture.h"
#include "tools/vistrel_diag/sections/capture/capture_section.h"

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

constexpr std::int64_t kAcquireTime = 100;  // microseconds

class CaptureMeasurementTest : public ScreenCaptureTestBase {
  protected:
    void SetUp() override {
        ScreenCaptureTestBase::SetUp();
        DiagSettings::Instance().capture_draw_cursor = false;
        start_ = lab::MachineTime();
        device_->GetImmediateContext(&context_);
    }
    void TearDown() override {
        context_.Reset();
        ScreenCaptureTestBase::TearDown();
    }

    void UseHybridLaptop() {
        ScreenCaptureTestBase::UseHybridLaptop();
        context_.Reset();
        device_->GetImmediateContext(&context_);
    }

    /// Lets time pass without an image.
    static ScriptedFrame Nothing() {
        lab::PassTime(kAcquireTime + std::int64_t{Desktop().timeouts.back()} * 1000);
        return {.result = DXGI_ERROR_WAIT_TIMEOUT};
    }

    /// `fps` images a second, the first at once.
    void UseSource(double fps) {
        Desktop().next_frame = [this, fps]() -> ScriptedFrame {
            const double elapsed = static_cast<double>(lab::MachineTime() - start_) / 1e6;
            if (elapsed * fps < delivered_) {
                lab::PassTime(kAcquireTime);
                return {.result = DXGI_ERROR_WAIT_TIMEOUT};
            }
            lab::PassTime(kAcquireTime);
            ++delivered_;
            return {.width = 16, .height = 9, .seed = static_cast<std::uint32_t>(delivered_)};
        };
    }

    /// Frames as scripted, then nothing.
    void UseFrames(std::vector<ScriptedFrame> frames) {
        Desktop().frames.assign(frames.begin(), frames.end());
        Desktop().next_frame = Nothing;
    }

    CaptureMeasurement Measure(double seconds) {
        CaptureMeasurement measurement;
        errors_ = ErrorsOf([&] { measurement = MeasureCaptureRate(device_.Get(), context_.Get(), seconds); });
        return measurement;
    }

    std::int64_t start_ = 0;
    Microsoft::WRL::ComPtr<ID3D11DeviceContext> context_;
    int delivered_ = 0;
    std::string errors_;
};

class CaptureRates : public CaptureMeasurementTest, public testing::WithParamInterface<int> {};

TEST_P(CaptureRates, EveryImageIsCounted) {
    const int fps = GetParam();
    UseSource(fps);
    const CaptureMeasurement measurement = Measure(2.0);
    EXPECT_TRUE(measurement.ok);
    EXPECT_EQ(measurement.error, "");
    EXPECT_EQ(measurement.new_frames, static_cast<std::uint32_t>(delivered_));
    EXPECT_EQ(delivered_, 2 * fps) << "the source lost none";
    EXPECT_NEAR(FramesPerSecond(measurement), fps, 0.01 * fps);
    EXPECT_NEAR(measurement.seconds, 2.0, 0.001);
    EXPECT_EQ(measurement.calls, 20'000U);
    EXPECT_EQ(lab::Counts().releases_without_frame, 1) << "the capture was shut down";
}

INSTANTIATE_TEST_SUITE_P(Sources, CaptureRates, testing::Values(60, 144, 240, 1000));

TEST_F(CaptureMeasurementTest, AStillDesktopGivesOneImage) {
    UseFrames({{.width = 40, .height = 30, .seed = 4}});
    const CaptureMeasurement measurement = Measure(1.0);
    EXPECT_TRUE(measurement.ok);
    EXPECT_EQ(measurement.new_frames, 1U);
    EXPECT_GT(measurement.calls, 1000U);
    EXPECT_EQ(measurement.width, 40U);
    EXPECT_EQ(measurement.height, 30U);
    EXPECT_EQ(measurement.pixels, ScriptedPixels({.width = 40, .height = 30, .seed = 4}));
    EXPECT_FALSE(measurement.cross_adapter);
    EXPECT_EQ(measurement.capture_gpu_name, "Fast GPU");
    EXPECT_EQ(errors_, "");
}

TEST_F(CaptureMeasurementTest, ReportsADesktopThatNeverGivesAnImage) {
    Desktop().next_frame = Nothing;
    const CaptureMeasurement measurement = Measure(3.0);
    EXPECT_FALSE(measurement.ok);
    EXPECT_EQ(measurement.error, "the capture started but never produced a frame");
    EXPECT_EQ(measurement.new_frames, 0U);
    EXPECT_EQ(measurement.width, 0U);
    EXPECT_THAT(measurement.pixels, IsEmpty());
    // Ten waits of 250 ms and as many acquires, then acquires alone.
    EXPECT_NEAR(measurement.calls, 10 + 4990, 3);
    EXPECT_THAT(std::vector<UINT>(Desktop().timeouts.begin(), Desktop().timeouts.begin() + 12),
                ElementsAre(250, 250, 250, 250, 250, 250, 250, 250, 250, 250, 0, 0));
}

TEST_F(CaptureMeasurementTest, ReportsADurationThatIsNotPositive) {
    UseSource(60);
    for (const double seconds : {0.0, -0.0, -1.0, -1e300, -std::numeric_limits<double>::infinity(),
                                 std::numeric_limits<double>::quiet_NaN()}) {
        const CaptureMeasurement measurement = Measure(seconds);
        EXPECT_FALSE(measurement.ok) << seconds;
        EXPECT_EQ(measurement.error, "the capture started but never produced a frame");
        EXPECT_EQ(measurement.calls, 0U);
        EXPECT_EQ(measurement.seconds, 0.0);
        EXPECT_EQ(measurement.capture_gpu_name, "Fast GPU");
    }
    EXPECT_EQ(delivered_, 0);
}

TEST_F(CaptureMeasurementTest, MeasuresForAVeryLongTime) {
    // An image an hour, for a year and more; the clock jumps so that the test does not.
    Desktop().next_frame = [this]() -> ScriptedFrame {
        lab::PassTime(std::int64_t{3600} * 1'000'000);
        ++delivered_;
        return {.width = 16, .height = 9};
    };
    const CaptureMeasurement measurement = Measure(4e7);
    EXPECT_TRUE(measurement.ok);
    EXPECT_EQ(measurement.new_frames, 11'112U);
    EXPECT_EQ(measurement.seconds, 11'112 * 3600.0);
}

TEST_F(CaptureMeasurementTest, ReportsAMissingMonitor) {
    Output(0).unplugged = true;
    const CaptureMeasurement measurement = Measure(1.0);
    EXPECT_FALSE(measurement.ok);
    EXPECT_EQ(measurement.error,
              "No display is attached to any GPU, so there is nothing to capture. Capture the game window "
              "instead.");
    EXPECT_EQ(measurement.calls, 0U);
    EXPECT_EQ(measurement.capture_gpu_name, "");
}

TEST_F(CaptureMeasurementTest, ReportsACaptureOnAnotherGpu) {
    UseHybridLaptop();
    UseFrames({{.width = 33, .height = 5, .seed = 4}});
    const CaptureMeasurement measurement = Measure(0.1);
    EXPECT_TRUE(measurement.ok);
    EXPECT_TRUE(measurement.cross_adapter);
    EXPECT_EQ(measurement.capture_gpu_name, "Panel GPU");
    EXPECT_EQ(measurement.pixels, ScriptedPixels({.width = 33, .height = 5, .seed = 4}));
}

TEST_F(CaptureMeasurementTest, ContinuesAfterALossThatIsRestored) {
    UseFrames({{}, {.result = DXGI_ERROR_ACCESS_LOST}, {.seed = 2}, {.seed = 3}});
    const CaptureMeasurement measurement = Measure(0.01);
    EXPECT_TRUE(measurement.ok);
    EXPECT_EQ(measurement.new_frames, 3U);
    EXPECT_GE(measurement.calls, 4U);
    EXPECT_EQ(
        errors_,
        "[ScreenCaptureDxgi] Access lost. Reinitializing...\n[ScreenCaptureDxgi] Duplication restored.\n");
}

TEST_F(CaptureMeasurementTest, APermanentLossCountsOnlyCalls) {
    lab::StartClock(true, kAcquireTime / 2);  // A call reads the counter and the tick count.
    Desktop().next_frame = [this]() -> ScriptedFrame {
        if (++delivered_ == 1) {
            return {};
        }
        RefuseDuplication(0, E_ACCESSDENIED);
        return {.result = DXGI_ERROR_ACCESS_LOST};
    };
    const CaptureMeasurement measurement = Measure(0.05);
    EXPECT_TRUE(measurement.ok);
    EXPECT_EQ(measurement.new_frames, 1U);
    EXPECT_NEAR(measurement.calls, 500, 5);
    EXPECT_EQ(delivered_, 2);
    EXPECT_EQ(DuplicatedOutputs().size(), 2U) << "the scripted tick stands still";
    EXPECT_THAT(measurement.pixels, SizeIs(64 * 48 * 4));
    EXPECT_EQ(errors_, "[ScreenCaptureDxgi] Access lost. Reinitializing...\n");
}

TEST_F(CaptureMeasurementTest, RowPitchMayExceedTheWidth) {
    Desktop().extra_row_pitch = 100;
    UseFrames({{.width = 33, .height = 7, .seed = 4}});
    EXPECT_EQ(Measure(0.01).pixels, ScriptedPixels({.width = 33, .height = 7, .seed = 4}));
}

TEST_F(CaptureMeasurementTest, TakesALaterImageWhenTheFirstCannotBeReadBack) {
    Desktop().staging_textures_fail = true;
    Desktop().next_frame = [this]() -> ScriptedFrame {
        lab::PassTime(kAcquireTime);
        Desktop().staging_textures_fail = ++delivered_ < 3;
        return {.seed = static_cast<std::uint32_t>(delivered_)};
    };
    const CaptureMeasurement measurement = Measure(0.001);
    EXPECT_EQ(measurement.new_frames, 10U);
    EXPECT_EQ(measurement.pixels, ScriptedPixels({.seed = 3}));
}

TEST_F(CaptureMeasurementTest, TheFirstPresentedImageReplacesAnUnpresentedOne) {
    const ScriptedFrame presented = {.width = 16, .height = 9, .seed = 2, .present_ticks = start_};
    UseFrames({{.width = 16, .height = 9, .seed = 1},
               {.width = 16, .height = 9, .seed = 3},
               presented,
               {.width = 16, .height = 9, .seed = 4, .present_ticks = start_ + 1}});
    const CaptureMeasurement measurement = Measure(1.0);
    EXPECT_EQ(measurement.new_frames, 4U);
    EXPECT_EQ(measurement.pixels, ScriptedPixels(presented));
}

TEST_F(CaptureMeasurementTest, UsesTheAvailableImageWithoutAPresent) {
    UseFrames({{.width = 16, .height = 9, .seed = 1}, {.width = 16, .height = 9, .seed = 3}});
    EXPECT_EQ(Measure(1.0).pixels, ScriptedPixels({.width = 16, .height = 9, .seed = 1}));
}

TEST_F(CaptureMeasurementTest, AFrameThatCannotBeCopiedAcrossIsNotAnImage) {
    UseHybridLaptop();
    const ScriptedFrame carried = {.width = 16, .height = 9, .seed = 2, .present_ticks = start_ + 1};
    Desktop().map_result = E_OUTOFMEMORY;
    Desktop().frames = {{.width = 16, .height = 9, .seed = 1, .present_ticks = start_}};
    Desktop().next_frame = [carried]() -> ScriptedFrame {
        if (Desktop().map_result == S_OK) {
            return Nothing();
        }
        // The previous one was not copied across. From now on only the benchmark device maps.
        Desktop().map_result = S_OK;
        return carried;
    };
    const CaptureMeasurement measurement = Measure(1.0);
    EXPECT_EQ(measurement.new_frames, 2U);
    EXPECT_EQ(measurement.pixels, ScriptedPixels(carried));
}

TEST_F(CaptureMeasurementTest, ReadsNothingBackWhenMappingFails) {
    Desktop().map_result = DXGI_ERROR_DEVICE_REMOVED;
    UseFrames({{}, {}});
    const CaptureMeasurement measurement = Measure(0.001);
    EXPECT_TRUE(measurement.ok);
    EXPECT_EQ(measurement.new_frames, 2U);
    EXPECT_THAT(measurement.pixels, IsEmpty());
}

TEST_F(CaptureMeasurementTest, APictureOfAnotherSizeThanReportedIsNotReadBack) {
    Desktop().next_frame = [this]() -> ScriptedFrame {
        lab::PassTime(kAcquireTime);
        Desktop().staging_textures_fail = ++delivered_ == 1;
        return {.width = delivered_ == 1 ? 64U : 32U, .height = delivered_ == 1 ? 48U : 24U};
    };
    const CaptureMeasurement measurement = Measure(0.001);
    EXPECT_EQ(measurement.width, 64U);
    EXPECT_EQ(measurement.height, 48U);
    EXPECT_THAT(measurement.pixels, IsEmpty());
}

TEST_F(CaptureMeasurementTest, ReportsADesktopInAFormatWithoutAPicture) {
    for (const DXGI_FORMAT format : {DXGI_FORMAT_R8G8B8A8_UNORM, DXGI_FORMAT_R16G16B16A16_FLOAT}) {
        UseFrames({{.format = format}, {.format = format}});
        const CaptureMeasurement measurement = Measure(0.001);
        EXPECT_FALSE(measurement.ok);
        EXPECT_EQ(measurement.error, "the capture started but never produced a frame");
        EXPECT_THAT(measurement.pixels, IsEmpty());
        EXPECT_EQ(measurement.new_frames, 0U);
    }
}

TEST_F(CaptureMeasurementTest, APictureWithoutFourByteTexelsIsNotReadBack) {
    Desktop().gdi_flag_ignored = true;  // A driver that allows more than it has to.
    UseFrames({{.format = DXGI_FORMAT_R16G16B16A16_FLOAT}});
    const ReportCapture report;
    testing::internal::CaptureStdout();
    const CaptureMeasurement measurement = ReportCaptureSection(device_.Get(), context_.Get(), 0.5);
    testing::internal::GetCapturedStdout();
    EXPECT_THAT(measurement.pixels, IsEmpty());
    EXPECT_EQ(report.Text(), R"(
== SCREEN CAPTURE ================================================
Duplicated      : 64x48
New frames      : 1 in 0.50 s  ->  2.0 fps from the desktop
(An idle desktop, so this is not a game's rate - part 2 measures that.)
NOTE: could not read a frame back, so the benchmark uses a synthetic pattern instead of your real screen content.
)");
}

TEST_F(CaptureMeasurementTest, PrintsTheWholeSection) {
    UseFrames({{}});
    const ReportCapture report;
    testing::internal::CaptureStdout();
    ReportCaptureSection(device_.Get(), context_.Get(), 0.5);
    testing::internal::GetCapturedStdout();
    EXPECT_EQ(report.Text(), R"(
== SCREEN CAPTURE ================================================
Duplicated      : 64x48
New frames      : 1 in 0.50 s  ->  2.0 fps from the desktop
(An idle desktop, so this is not a game's rate - part 2 measures that.)
)");
}

TEST_F(CaptureMeasurementTest, PrintsTheGamesFrameRate) {
    UseSource(144);
    const ReportCapture report;
    testing::internal::CaptureStdout();
    ReportGameFrameRate(device_.Get(), context_.Get(), 0.5);
    testing::internal::GetCapturedStdout();
    EXPECT_EQ(report.Text(), R"(
Frame rate reaching the capture: 144.0 fps (72 frames in 0.50 s at 16x9)
This is the rate Vistrel would be fed at - the game's own rate, not the headset's.
)");
}

}  // namespace
