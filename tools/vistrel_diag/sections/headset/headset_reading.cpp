#include "tools/vistrel_diag/sections/headset/headset_reading.h"

#include <array>
#include <string_view>
#include <utility>

#include "tools/vistrel_diag/worker/worker_end_reading.h"

namespace {

struct StopLine {
    HeadsetStop stop;
    std::string_view text;
};

constexpr std::array kStops = {
    StopLine{HeadsetStop::NoLoader, "openxr_loader.dll not found next to this exe - OpenXR skipped."},
    StopLine{HeadsetStop::NoEntryPoints, "openxr_loader.dll is missing its entry points - OpenXR skipped."},
    StopLine{HeadsetStop::NoInstance,
             "No OpenXR runtime accepted an instance (SteamVR not running?) - OpenXR skipped."},
    StopLine{HeadsetStop::NoHeadset,
             "A runtime is installed but reports no headset right now. Eye resolution and required GPU "
             "unavailable."},
};

bool ReadRuntime(const SourceLine& line, HeadsetReading& reading) {
    ReadText runtime{{}, line.number};
    if (!reading.runtime && LineScan(line.text).Text("Runtime         : ").Rest(runtime.text).Matches()) {
        reading.runtime = std::move(runtime);
        return true;
    }
    for (const StopLine& known : kStops) {
        if (!reading.stop && IsLine(line.text, known.text)) {
            reading.message = ReadText{std::string(known.text), line.number};
            reading.stop = known.stop;
            return true;
        }
    }
    return false;
}

bool ReadEnd(const SourceLine& line, HeadsetReading& reading) {
    std::string end;
    if (reading.worker_end ||
        !LineScan(line.text).Text("!! The OpenXR query ").UpToLast(end, ".").IsWhole()) {
        return false;
    }
    reading.worker_end = ReadWorkerEnd(end);
    reading.worker_end_line = reading.worker_end ? line.number : 0;
    return reading.worker_end.has_value();
}

bool ReadEyes(const SourceLine& line, HeadsetReading& reading) {
    std::int32_t width = 0;
    std::int32_t height = 0;
    if (!LineScan(line.text)
             .Text("Eye resolution  : ")
             .Whole(width)
             .Text("x")
             .Whole(height)
             .Text(" per eye (runtime recommendation)")
             .IsWhole()) {
        return false;
    }
    // They are printed as signed numbers of the same bits.
    reading.eye_width = static_cast<std::uint32_t>(width);
    reading.eye_height = static_cast<std::uint32_t>(height);
    reading.eye_line = line.number;
    return true;
}

bool ReadRequiredGpu(const SourceLine& line, HeadsetReading& reading) {
    RequiredGpuReading required;
    std::uint32_t high = 0;
    if (reading.required_gpu || !LineScan(line.text)
                                     .Text("Required GPU    : LUID ")
                                     .Hex(high)
                                     .Text(":")
                                     .Hex(required.luid.low)
                                     .Text(" -> GPU ")
                                     .Whole(required.gpu)
                                     .Text(" (")
                                     .UpToLast(required.name, ")")
                                     .IsWhole()) {
        return false;
    }
    required.luid.high = static_cast<std::int32_t>(high);
    required.line = line.number;
    reading.required_gpu = std::move(required);
    return true;
}

bool ReadCrossGpuNote(const SourceLine& line, HeadsetReading& reading) {
    std::int32_t required = 0;
    std::int32_t display = 0;
    std::string name;
    if (LineScan(line.text)
            .Text("!! NOTE: the headset requires GPU ")
            .Whole(required)
            .Text(" while the primary display is driven by GPU ")
            .Whole(display)
            .Text(".")
            .IsWhole()) {
        reading.display_gpu = display;
        reading.cross_gpu_lines.push_back(line.number);
        return true;
    }
    if (reading.cross_gpu_lines.empty()) {
        return false;
    }
    return IsLine(line.text,
                  "!! Every captured frame therefore crosses between the two through system memory. Vistrel "
                  "does "
                  "this and the picture is correct; it costs time that a single-GPU machine does not pay.") ||
           LineScan(line.text)
               .Text(
                   "!! Capturing the game's WINDOW instead skips the trip. On a laptop with a MUX switch, "
                   "forcing "
                   "the panel onto ")
               .UpToLast(name, " does too.")
               .IsWhole();
}

}  // namespace

std::optional<HeadsetReading> ReadHeadsetSection(SourceLines lines, UnreadLines& unread) {
    HeadsetReading reading;
    const bool any = ReadEachLine(lines, unread, [&reading](const SourceLine& line) {
        return ReadEnd(line, reading) || ReadRuntime(line, reading) || ReadEyes(line, reading) ||
               ReadRequiredGpu(line, reading) || ReadCrossGpuNote(line, reading);
    });
    return any ? std::optional(std::move(reading)) : std::nullopt;
}
