#include "tools/vistrel_diag/sections/warp/warp_reading.h"

#include <array>
#include <cstddef>
#include <string_view>
#include <utility>

namespace {

bool ReadRow(const SourceLine& line, WarpReading& reading) {
    constexpr std::array kLabels = {std::string_view("your desktop (what runs today)"),
                                    std::string_view("1440p"), std::string_view("1080p")};
    WarpRowReading row;
    std::size_t label = 0;
    if (!LineScan(line.text)
             .Blanks()
             .Whole(row.width)
             .Text("x")
             .Whole(row.height)
             .Blanks()
             .OneOf(label, {kLabels[0], kLabels[1], kLabels[2]})
             .Text(" ")
             .Number(row.gpu_ms)
             .Text(" ")
             .Number(row.vram_mb)
             .IsWhole()) {
        return false;
    }
    row.label = kLabels.at(label);
    row.line = line.number;
    reading.rows.push_back(std::move(row));
    return true;
}

bool ReadSizeProblem(std::string_view text) {
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::int32_t eye = 0;
    const auto size = [&](LineScan& scan) -> LineScan& { return scan.Whole(width).Text("x").Whole(height); };
    LineScan colour(text);
    LineScan depth(text);
    LineScan target(text);
    LineScan timing(text);
    return size(colour.Text("could not create the ")).Text(" colour texture (out of VRAM?)").IsWhole() ||
           size(depth.Text("could not create the ")).Text(" depth texture").IsWhole() ||
           size(target.Text("could not create eye target ").Whole(eye).Text(" at ")).IsWhole() ||
           size(timing.Text("GPU timing produced nothing usable at ")).IsWhole();
}

/// Why a size was not timed.
bool ReadProblem(const SourceLine& line, WarpReading& reading) {
    std::string text;
    if (!LineScan(line.text).Text("!! ").Rest(text).Matches() ||
        !(BeginsLine(text, "shader compile failed: ") || IsLine(text, "vertex shader failed to compile") ||
          ReadSizeProblem(text))) {
        return false;
    }
    reading.problems.push_back({std::move(text), line.number});
    return true;
}

bool ReadShaderError(const SourceLine& line, WarpReading& reading) {
    ReadText error{{}, line.number};
    if (reading.shader_error ||
        !LineScan(line.text).Text("!! stereo_warp.hlsl could not be compiled: ").Rest(error.text).Matches()) {
        return false;
    }
    reading.shader_error = std::move(error);
    return true;
}

bool IsAdvice(std::string_view line) {
    return IsLine(line, "!! Put this exe in the Vistrel install folder, next to the vistrel\\ directory.");
}

/// A compiler's message goes on over several lines, which can be anything.
ReadText* OpenMessage(WarpReading& reading, std::uint32_t advice_line) {
    if (reading.shader_error) {
        return advice_line == 0 ? &*reading.shader_error : nullptr;
    }
    const bool open =
        !reading.problems.empty() && reading.problems.back().text.starts_with("shader compile failed: ");
    return open ? &reading.problems.back() : nullptr;
}

}  // namespace

std::optional<WarpReading> ReadWarpSection(SourceLines lines, UnreadLines& unread) {
    WarpReading reading;
    std::uint32_t advice_line = 0;
    ReadText* message = nullptr;
    const bool any = ReadEachLine(lines, unread, [&](const SourceLine& line) {
        if (advice_line == 0 && IsAdvice(line.text)) {
            advice_line = line.number;
            message = nullptr;
            return true;
        }
        if (ReadFixedLine(line, "SIZE                                            GPU ms      VRAM MB",
                          reading.header_line) ||
            ReadRow(line, reading)) {
            message = nullptr;
            return true;
        }
        if (ReadShaderError(line, reading) || ReadProblem(line, reading)) {
            message = OpenMessage(reading, advice_line);
            return true;
        }
        if (message == nullptr) {
            return false;
        }
        message->text.append("\n").append(line.text);
        return true;
    });
    return any ? std::optional(std::move(reading)) : std::nullopt;
}
