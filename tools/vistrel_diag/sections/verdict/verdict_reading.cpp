#include "tools/vistrel_diag/sections/verdict/verdict_reading.h"

#include <array>
#include <cstddef>
#include <string_view>
#include <utility>

namespace {

bool ReadWarpCost(const SourceLine& line, VerdictReading& reading) {
    WarpCost cost;
    if (!reading.desktop && LineScan(line.text)
                                .Text("At ")
                                .Whole(cost.width)
                                .Text("x")
                                .Whole(cost.height)
                                .Text(" the warp costs ")
                                .Number(cost.milliseconds)
                                .Text(" ms per headset frame, for both eyes.")
                                .IsWhole()) {
        reading.desktop = cost;
        reading.desktop_line = line.number;
        return true;
    }
    CheaperSizeReading cheaper;
    if (!LineScan(line.text)
             .Text("  Dropping the desktop to ")
             .Whole(cheaper.cost.width)
             .Text("x")
             .Whole(cheaper.cost.height)
             .Text(" would make it ")
             .AnyNumber(cheaper.times_cheaper)
             .Text("x cheaper (")
             .Number(cheaper.cost.milliseconds)
             .Text(" ms).")
             .IsWhole()) {
        return false;
    }
    cheaper.line = line.number;
    reading.cheaper_sizes.push_back(cheaper);
    return true;
}

bool ReadModelCost(const SourceLine& line, VerdictReading& reading) {
    if (reading.model) {
        return ReadFixedLine(
            line,
            ">>> The depth map cannot keep up with the picture here. Every figure below assumes it "
            "runs as often as it can, which is far less often than you asked for.",
            reading.model->cannot_keep_up_line);
    }
    ModelCostReading model;
    model.line = line.number;
    double number = 0.0;
    std::size_t limit = 0;
    if (LineScan(line.text)
            .Text("The AI model costs ")
            .Number(model.milliseconds)
            .Text(" ms per inference, and would run about ")
            .AnyNumber(number)
            .Text(" times a second (")
            .OneOf(limit, {"the model cannot go faster than that on this GPU", "capped by your frame rate",
                           "capped by the FPS limit"})
            .Text(").")
            .IsWhole()) {
        model.rate = number;
        model.limit = static_cast<RateLimit>(limit);
    } else if (LineScan(line.text)
                   .Text("The AI model costs ")
                   .Number(model.milliseconds)
                   .Text(" ms per inference - one map every ")
                   .Number(number)
                   .Text(" seconds. It cannot run even once a second on this GPU.")
                   .IsWhole()) {
        model.seconds_a_map = number;
    } else {
        return false;
    }
    reading.model = model;
    return true;
}

bool ReadRow(const SourceLine& line, VerdictReading& reading) {
    RefreshRowReading row;
    double ai = 0.0;
    LineScan scan(line.text);
    scan.Text("  ")
        .Whole(row.refresh_hz)
        .Text(" Hz ")
        .AnyNumber(row.warp_ms_a_second)
        .Text(" ms/s ")
        .Blanks();
    LineScan without_model(scan);
    if (without_model.Text("? ").AnyNumber(row.reshade_percent).Text("%").IsWhole()) {
        row.line = line.number;
        reading.rows.push_back(row);
        return true;
    }
    if (!scan.AnyNumber(ai).Text("% ").AnyNumber(row.reshade_percent).Text("%").IsWhole()) {
        return false;
    }
    row.ai_percent = ai;
    row.line = line.number;
    reading.rows.push_back(row);
    return true;
}

bool ReadTable(const SourceLine& line, VerdictReading& reading) {
    return ReadRow(line, reading) ||
           ReadFixedLine(line, "  REFRESH   warp          AI depth mode  ReShade mode", reading.table_line) ||
           IsLine(line.text,
                  "What that adds up to, as a share of this GPU's time. Read the row for your headset:") ||
           IsLine(line.text,
                  "Whatever is left over is what the game and the SteamVR compositor share. The warp is paid "
                  "in both "
                  "modes; the model only in AI mode.");
}

bool ReadMode(const SourceLine& line, VerdictReading& reading) {
    std::size_t mode = 0;
    if (!LineScan(line.text)
             .Text("Taking 90 Hz and the mode this machine is set to (")
             .OneOf(mode, {"ReShade depth", "AI depth"})
             .Text("):")
             .IsWhole()) {
        return false;
    }
    reading.reshade_mode = mode == 0;
    reading.mode_line = line.number;
    return true;
}

struct GradeLine {
    VerdictGrade grade;
    std::string_view before;
    std::string_view after;
};

constexpr std::array kGrades = {
    GradeLine{VerdictGrade::FoundIt, ">>> FOUND IT. Vistrel takes more than half the GPU on its own (",
              "%). The larger of the two costs above is the lever."},
    GradeLine{VerdictGrade::Significant, ">>> Vistrel takes a significant slice (",
              "%) but not a fatal one. Worth trimming, though something else is likely contributing too."},
    GradeLine{VerdictGrade::NotTheBottleneck,
              ">>> Vistrel's own rendering is NOT the bottleneck here - it uses ", "% of the GPU."},
};

bool ReadGrade(const SourceLine& line, VerdictReading& reading) {
    for (const GradeLine& known : kGrades) {
        double percent = 0.0;
        if (!reading.grade &&
            LineScan(line.text).Text(known.before).AnyNumber(percent).Text(known.after).IsWhole()) {
            reading.grade = known.grade;
            reading.percent = percent;
            reading.grade_line = line.number;
            return true;
        }
    }
    return IsLine(
        line.text,
        ">>> If games are still slow, look at the VRAM figures from part 2, the SteamVR render resolution, "
        "or the game simply needing the whole GPU by itself.");
}

bool ReadNotes(const SourceLine& line, VerdictReading& reading) {
    double percent = 0.0;
    if (!reading.reshade_note_percent &&
        LineScan(line.text)
            .Text(">>> Note: on the ReShade path Vistrel costs only ")
            .Number(percent)
            .Text(
                "% here. If games are just as slow in THAT mode, the cause is almost certainly not Vistrel's "
                "rendering at all.")
            .IsWhole()) {
        reading.reshade_note_percent = percent;
        reading.reshade_note_line = line.number;
        return true;
    }
    return ReadFixedLine(
               line,
               ">>> Part 2 was skipped, so nothing above accounts for VRAM pressure or a cross-GPU capture. "
               "Both can cause this on their own.",
               reading.part_two_skipped_line) ||
           ReadFixedLine(
               line,
               "The warp could not be measured, so no verdict. The sections above are still worth reading.",
               reading.no_verdict_line);
}

bool ReadNotMeasured(const SourceLine& line, VerdictReading& reading) {
    return ReadFixedLine(line, "NOT measured by this tool:", reading.not_measured_line) ||
           IsLine(line.text,
                  "  - the depth stage around the model: pre-process, upsample, edge restore. Only the "
                  "model's own Run "
                  "is timed.") ||
           IsLine(line.text, "  - the SteamVR compositor's own cost") ||
           IsLine(line.text, "  - the game's cost, and how much VRAM it wants") ||
           IsLine(line.text, "  - the ReShade add-on's two per-frame copies inside the game process");
}

}  // namespace

std::optional<VerdictReading> ReadVerdictSection(SourceLines lines, UnreadLines& unread) {
    VerdictReading reading;
    const bool any = ReadEachLine(lines, unread, [&reading](const SourceLine& line) {
        return ReadWarpCost(line, reading) || ReadModelCost(line, reading) || ReadTable(line, reading) ||
               ReadMode(line, reading) || ReadGrade(line, reading) || ReadNotes(line, reading) ||
               ReadNotMeasured(line, reading);
    });
    return any ? std::optional(std::move(reading)) : std::nullopt;
}
