#include "tools/vistrel_diag/sections/capture/capture_section.h"

#include <gtest/gtest.h>

#include <numeric>

#include "tests/unit/support/report_capture.h"

namespace {

CaptureMeasurement Measured() {
    CaptureMeasurement measurement;
    measurement.ok = true;
    measurement.width = 2560;
    measurement.height = 1440;
    measurement.new_frames = 181;
    measurement.calls = 90'000;
    measurement.seconds = 3.004;
    measurement.pixels = {1, 2, 3, 4};
    measurement.capture_gpu_name = "Fast GPU";
    return measurement;
}

std::string Printed(const CaptureMeasurement& measurement, void (*print)(const CaptureMeasurement&)) {
    const ReportCapture report;
    testing::internal::CaptureStdout();
    print(measurement);
    testing::internal::GetCapturedStdout();
    return report.Text();
}

TEST(PrintCaptureSection, PrintsASuccess) {
    EXPECT_EQ(Printed(Measured(), PrintCaptureSection),
              R"(Duplicated      : 2560x1440
New frames      : 181 in 3.00 s  ->  60.3 fps from the desktop
(An idle desktop, so this is not a game's rate - part 2 measures that.)
)");
}

TEST(PrintCaptureSection, NotesACaptureOnAnotherGpu) {
    CaptureMeasurement measurement = Measured();
    measurement.cross_adapter = true;
    measurement.capture_gpu_name = "Panel GPU 100%s";
    EXPECT_EQ(Printed(measurement, PrintCaptureSection),
              R"(Duplicated      : 2560x1440
Captured on     : Panel GPU 100%s - not the GPU Vistrel renders on, so every frame crosses between the two through system memory. It works; it costs time.
New frames      : 181 in 3.00 s  ->  60.3 fps from the desktop
(An idle desktop, so this is not a game's rate - part 2 measures that.)
)");
}

TEST(PrintCaptureSection, NotesMissingPixels) {
    CaptureMeasurement measurement = Measured();
    measurement.pixels.clear();
    measurement.new_frames = 1;
    measurement.seconds = 0.5;
    EXPECT_EQ(Printed(measurement, PrintCaptureSection),
              R"(Duplicated      : 2560x1440
New frames      : 1 in 0.50 s  ->  2.0 fps from the desktop
(An idle desktop, so this is not a game's rate - part 2 measures that.)
NOTE: could not read a frame back, so the benchmark uses a synthetic pattern instead of your real screen content.
)");
}

TEST(PrintCaptureSection, PrintsAFailure) {
    CaptureMeasurement measurement;
    measurement.error = "100 % lost: %s";
    EXPECT_EQ(Printed(measurement, PrintCaptureSection),
              R"(Screen capture FAILED: 100 % lost: %s
(This is Vistrel's own capture path, so it would fail here too.)
)");
}

TEST(PrintGameFrameRate, PrintsASuccess) {
    EXPECT_EQ(Printed(Measured(), PrintGameFrameRate),
              R"(Frame rate reaching the capture: 60.3 fps (181 frames in 3.00 s at 2560x1440)
This is the rate Vistrel would be fed at - the game's own rate, not the headset's.
)");
}

TEST(PrintGameFrameRate, PrintsAFailure) {
    CaptureMeasurement measurement;
    measurement.error = "the capture started but never produced a frame";
    EXPECT_EQ(Printed(measurement, PrintGameFrameRate),
              R"(Screen capture FAILED during part 2: the capture started but never produced a frame
(Vistrel's monitor capture would fail here for the same reason.)
)");
}

TEST(FramesPerSecond, IsZeroWhenNothingWasMeasured) {
    CaptureMeasurement measurement = Measured();
    measurement.seconds = 0.0;
    EXPECT_EQ(FramesPerSecond(measurement), 0.0);
    measurement.seconds = 2.0;
    measurement.new_frames = 0;
    EXPECT_EQ(FramesPerSecond(measurement), 0.0);
    measurement.new_frames = 289;
    EXPECT_EQ(FramesPerSecond(measurement), 144.5);
}

TEST(PackRows, OmitsThePadding) {
    std::vector<std::uint8_t> rows(3 * 16);
    std::iota(rows.begin(), rows.end(), std::uint8_t{0});
    EXPECT_EQ(PackRows(rows.data(), 16, 4, 3),
              (std::vector<std::uint8_t>{0, 1, 2, 3, 16, 17, 18, 19, 32, 33, 34, 35}));
    EXPECT_EQ(PackRows(rows.data(), 4, 4, 2), (std::vector<std::uint8_t>{0, 1, 2, 3, 4, 5, 6, 7}));
}

TEST(PackRows, ReadsNothingAfterTheLastRow) {
    // The last row has no padding after it; a sanitizer detects a read past its end.
    const std::vector<std::uint8_t> rows(16 + 4, 9);
    EXPECT_EQ(PackRows(rows.data(), 16, 4, 2), std::vector<std::uint8_t>(8, 9));
}

}  // namespace
