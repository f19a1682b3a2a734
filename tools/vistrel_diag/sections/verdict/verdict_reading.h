// Reads back the lines of VERDICT.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tools/vistrel_diag/report/line_reading.h"
#include "tools/vistrel_diag/sections/verdict/verdict_section.h"

/// A size that would be cheaper than the desktop's.
struct CheaperSizeReading {
    WarpCost cost;
    double times_cheaper = 0.0;
    std::uint32_t line = 0;
};

/// One row of the table of refresh rates.
struct RefreshRowReading {
    std::int32_t refresh_hz = 0;
    double warp_ms_a_second = 0.0;
    std::optional<double> ai_percent;  ///< empty when no model was timed
    double reshade_percent = 0.0;
    std::uint32_t line = 0;
};

/// What limits the model's rate.
enum class RateLimit { Model, FrameRate, Setting };

struct ModelCostReading {
    double milliseconds = 0.0;            ///< of one inference
    std::optional<double> rate;           ///< inferences per second, at least 1
    std::optional<double> seconds_a_map;  ///< instead of the rate when that is below 1
    std::optional<RateLimit> limit;       ///< printed only with the rate
    std::uint32_t line = 0;
    std::uint32_t cannot_keep_up_line = 0;
};

/// How much of the GPU the product takes, in the report's own three grades.
enum class VerdictGrade { FoundIt, Significant, NotTheBottleneck };

/// The numbers as printed; the values they were computed from (VerdictInput) cannot be read back.
struct VerdictReading {
    std::optional<WarpCost> desktop;  ///< what the warp costs at the desktop's size
    std::uint32_t desktop_line = 0;
    std::vector<CheaperSizeReading> cheaper_sizes;
    std::optional<ModelCostReading> model;
    std::vector<RefreshRowReading> rows;
    std::uint32_t table_line = 0;
    std::optional<bool> reshade_mode;  ///< the machine is set to depth from ReShade, or to AI depth
    std::uint32_t mode_line = 0;
    std::optional<VerdictGrade> grade;
    double percent = 0.0;  ///< of the GPU, at 90 Hz in that mode; printed with the grade
    std::uint32_t grade_line = 0;
    std::optional<double> reshade_note_percent;
    std::uint32_t reshade_note_line = 0;
    std::uint32_t part_two_skipped_line = 0;
    std::uint32_t no_verdict_line = 0;    ///< of "The warp could not be measured, so no verdict. ..."
    std::uint32_t not_measured_line = 0;  ///< of "NOT measured by this tool:"
};

/// Empty when no line was understood. Lines that were not understood are added to `unread`.
std::optional<VerdictReading> ReadVerdictSection(SourceLines lines, UnreadLines& unread);
