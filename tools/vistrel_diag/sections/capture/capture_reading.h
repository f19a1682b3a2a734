// Reads the lines about the screen capture back into the record.
#pragma once

#include <cstdint>
#include <optional>

#include "tools/vistrel_diag/report/line_reading.h"
#include "tools/vistrel_diag/sections/capture/capture_measurement.h"

/// SCREEN CAPTURE, or the game's frame rate of part 2.
///
/// Not in the lines: the number of calls; the measured time to less than a hundredth of a second (the time
/// read back prints the same lines, frame rate included); the picture (one byte stands for any picture that
/// was read back); everything but the error of a failed capture; for the game's frame rate also the other GPU
/// and the picture.
struct CaptureReading {
    CaptureMeasurement measurement;
    double frames_per_second = 0.0;  ///< as printed
    std::uint32_t failure_line = 0;
    std::uint32_t size_line = 0;
    std::uint32_t other_gpu_line = 0;
    std::uint32_t frame_rate_line = 0;
    std::uint32_t synthetic_picture_line = 0;  ///< of "NOTE: could not read a frame back ..."
};

/// Empty when no line was understood. Lines that were not understood are added to `unread`.
std::optional<CaptureReading> ReadCaptureSection(SourceLines lines, UnreadLines& unread);
std::optional<CaptureReading> ReadGameFrameRate(SourceLines lines, UnreadLines& unread);
