// The closing judgement: the total of the measured costs, and where to look next.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

/// The cost of one headset frame of the warp, both eyes, at one eye size.
struct WarpCost {
    std::int32_t width = 0;
    std::int32_t height = 0;
    double milliseconds = 0.0;
};

/// The numbers that the verdict is computed from.
struct VerdictInput {
    std::vector<WarpCost> warp_costs;  ///< sizes that could be timed, in measuring order, headline first
    std::optional<double> model_milliseconds;  ///< of one inference; empty when no model was timed
    double game_fps = 0.0;                     ///< what reached the capture in part 2; 0 when unknown
    double desktop_fps = 0.0;                  ///< what reached the capture in part 1; 0 when unknown
    std::int32_t refresh_hz = 0;               ///< a refresh rate to show as well; below 1 means none
    bool part_two_run = false;
    float ai_fps_limit = 30.0F;   ///< maximum inferences per second; any value from a settings file
    std::int32_t depth_mode = 0;  ///< as DiagSettings::depth_mode
};

/// Reports the VERDICT section and the list of what is not measured. Stops after one line, without the
/// judgement, when there is no warp cost.
void ReportVerdict(const VerdictInput& input);
