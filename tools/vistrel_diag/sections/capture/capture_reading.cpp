#include "tools/vistrel_diag/sections/capture/capture_reading.h"

#include <cmath>
#include <limits>
#include <string>
#include <string_view>
#include <utility>

namespace {

constexpr double kHalfOfLastDecimal = 0.005;  // Of the measured time.

/// A time that prints as `seconds` and with which `frames` print as `rate`. The printed time itself, unless
/// another one is needed.
double SecondsThatPrint(double seconds, std::uint32_t frames, double rate) {
    constexpr double kTenths = 10.0;
    constexpr int kMostSteps = 60;
    double low = std::fmax(seconds - kHalfOfLastDecimal, 0.0);
    double high = seconds + kHalfOfLastDecimal;
    double middle = seconds;
    for (int step = 0; step < kMostSteps; ++step) {
        const double wanted = std::nearbyint(rate * kTenths);
        // No time prints as no rate; just above it the rate is without bounds.
        const double printed = middle > 0.0  ? std::nearbyint(frames / middle * kTenths)
                               : rate == 0.0 ? 0.0
                                             : std::numeric_limits<double>::infinity();
        if (printed == wanted) {
            return middle;
        }
        (printed > wanted ? low : high) = middle;
        middle = (low + high) / 2.0;
    }
    return seconds;
}

bool ReadFailure(const SourceLine& line, std::string_view begin, CaptureReading& reading) {
    std::string error;
    if (reading.failure_line != 0 || !LineScan(line.text).Text(begin).Rest(error).Matches()) {
        return false;
    }
    reading.measurement.ok = false;
    reading.measurement.error = std::move(error);
    reading.failure_line = line.number;
    return true;
}

bool ReadSize(const SourceLine& line, CaptureReading& reading) {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    CaptureMeasurement& measurement = reading.measurement;
    if (LineScan(line.text).Text("Duplicated      : ").Whole(width).Text("x").Whole(height).IsWhole()) {
        measurement.ok = true;
        measurement.width = width;
        measurement.height = height;
        reading.size_line = line.number;
        return true;
    }
    std::string name;
    if (LineScan(line.text)
            .Text("Captured on     : ")
            .UpToLast(
                name,
                " - not the GPU Vistrel renders on, so every frame crosses between the two through system "
                "memory. It works; it costs time.")
            .IsWhole()) {
        measurement.cross_adapter = true;
        measurement.capture_gpu_name = std::move(name);
        reading.other_gpu_line = line.number;
        return true;
    }
    return false;
}

bool ReadDesktopRate(const SourceLine& line, CaptureReading& reading) {
    std::uint32_t frames = 0;
    double seconds = 0.0;
    double rate = 0.0;
    if (!LineScan(line.text)
             .Text("New frames      : ")
             .Whole(frames)
             .Text(" in ")
             .Number(seconds)
             .Text(" s  ->  ")
             .Number(rate)
             .Text(" fps from the desktop")
             .IsWhole()) {
        return false;
    }
    reading.measurement.new_frames = frames;
    reading.measurement.seconds = SecondsThatPrint(seconds, frames, rate);
    reading.frames_per_second = rate;
    reading.frame_rate_line = line.number;
    return true;
}

bool ReadGameRate(const SourceLine& line, CaptureReading& reading) {
    CaptureMeasurement read;
    double rate = 0.0;
    double seconds = 0.0;
    if (!LineScan(line.text)
             .Text("Frame rate reaching the capture: ")
             .Number(rate)
             .Text(" fps (")
             .Whole(read.new_frames)
             .Text(" frames in ")
             .Number(seconds)
             .Text(" s at ")
             .Whole(read.width)
             .Text("x")
             .Whole(read.height)
             .Text(")")
             .IsWhole()) {
        return false;
    }
    read.ok = true;
    read.seconds = SecondsThatPrint(seconds, read.new_frames, rate);
    reading.measurement = std::move(read);
    reading.frames_per_second = rate;
    reading.frame_rate_line = line.number;
    return true;
}

}  // namespace

std::optional<CaptureReading> ReadCaptureSection(SourceLines lines, UnreadLines& unread) {
    CaptureReading reading;
    const bool any = ReadEachLine(lines, unread, [&reading](const SourceLine& line) {
        return ReadFailure(line, "Screen capture FAILED: ", reading) || ReadSize(line, reading) ||
               ReadDesktopRate(line, reading) ||
               IsLine(line.text, "(This is Vistrel's own capture path, so it would fail here too.)") ||
               IsLine(line.text, "(An idle desktop, so this is not a game's rate - part 2 measures that.)") ||
               ReadFixedLine(
                   line,
                   "NOTE: could not read a frame back, so the benchmark uses a synthetic pattern instead "
                   "of your real screen content.",
                   reading.synthetic_picture_line);
    });
    if (reading.measurement.ok && reading.synthetic_picture_line == 0) {
        reading.measurement.pixels.push_back(0);
    }
    return any ? std::optional(std::move(reading)) : std::nullopt;
}

std::optional<CaptureReading> ReadGameFrameRate(SourceLines lines, UnreadLines& unread) {
    CaptureReading reading;
    const bool any = ReadEachLine(lines, unread, [&reading](const SourceLine& line) {
        return ReadFailure(line, "Screen capture FAILED during part 2: ", reading) ||
               ReadGameRate(line, reading) ||
               IsLine(line.text, "(Vistrel's monitor capture would fail here for the same reason.)") ||
               IsLine(line.text,
                      "This is the rate Vistrel would be fed at - the game's own rate, not the headset's.");
    });
    return any ? std::optional(std::move(reading)) : std::nullopt;
}
