#include "tools/vistrel_diag/sections/verdict/verdict_section.h"

#include <algorithm>
#include <string>

#include "settings/diag_settings.h"
#include "tools/vistrel_diag/report/report.h"

namespace {

constexpr double kAssumedRefreshHz = 90.0;
constexpr double kMillisecondsPerSecond = 1000.0;
constexpr double kCheaperRatio = 1.05;
constexpr double kFatalShare = 50.0;
constexpr double kSignificantShare = 25.0;
constexpr double kReShadeNoteShare = 15.0;

/// Of one second, in percent.
double ShareOfSecond(double milliseconds) {
    return milliseconds / 10.0;
}

/// How often the depth model would run, and what limits that.
struct ModelLoad {
    double rate = 0.0;                   ///< inferences a second
    double milliseconds_a_second = 0.0;  ///< GPU time that it takes in every second
    bool cannot_keep_up = false;         ///< the model itself limits the rate
    const char* reason = "";
};

ModelLoad LoadOfModel(const VerdictInput& input, double model_ms) {
    const double fps = input.game_fps > 1.0 ? input.game_fps : input.desktop_fps;
    const double wanted = fps > 1.0 ? fps : kAssumedRefreshHz;
    const double limit = input.ai_fps_limit;
    const double capped = limit < wanted ? limit : wanted;  // A NaN caps nothing.

    ModelLoad load;
    load.rate = capped;
    if (model_ms > 0.0) {
        const double possible = kMillisecondsPerSecond / model_ms;
        load.rate = std::min(possible, capped);
        load.cannot_keep_up = capped > possible;
    }
    load.milliseconds_a_second = load.rate * model_ms;
    if (load.cannot_keep_up) {
        load.reason = "the model cannot go faster than that on this GPU";
    } else if (limit > wanted) {
        load.reason = "capped by your frame rate";
    } else {
        load.reason = "capped by the FPS limit";
    }
    return load;
}

void PrintWarpCost(const std::vector<WarpCost>& costs) {
    const WarpCost& headline = costs.front();
    Report::Line("At %dx%d the warp costs %.2f ms per headset frame, for both eyes.", headline.width,
                 headline.height, headline.milliseconds);
    for (auto cost = costs.begin() + 1; cost != costs.end(); ++cost) {
        const double ratio = headline.milliseconds / cost->milliseconds;
        if (cost->milliseconds > 0.0 && ratio > kCheaperRatio) {
            Report::Line("  Dropping the desktop to %dx%d would make it %.1fx cheaper (%.2f ms).",
                         cost->width, cost->height, ratio, cost->milliseconds);
        }
    }
}

void PrintModelCost(double model_ms, const ModelLoad& load) {
    if (load.rate < 1.0) {
        Report::Line(
            "The AI model costs %.2f ms per inference - one map every %.1f seconds. It cannot run even once "
            "a second on this GPU.",
            model_ms, model_ms / kMillisecondsPerSecond);
    } else {
        Report::Line(
            "The AI model costs %.2f ms per inference, and would run about %.0f times a second (%s).",
            model_ms, load.rate, load.reason);
    }
    if (load.cannot_keep_up) {
        Report::Line(
            ">>> The depth map cannot keep up with the picture here. Every figure below assumes it runs as "
            "often as it can, which is far less often than you asked for.");
    }
}

std::vector<std::int32_t> RefreshRates(std::int32_t asked_for) {
    std::vector<std::int32_t> rates = {72, 90, 120, 144};
    if (asked_for >= 1 && std::find(rates.begin(), rates.end(), asked_for) == rates.end()) {
        rates.push_back(asked_for);
        std::sort(rates.begin(), rates.end());
    }
    return rates;
}

void PrintRefreshTable(const VerdictInput& input, double warp_ms, double model_ms_a_second) {
    constexpr const char* kRow = "  %-9s %-13s %-14s %-14s";
    Report::Line("");
    Report::Line("What that adds up to, as a share of this GPU's time. Read the row for your headset:");
    Report::Line("");
    Report::Line(kRow, "REFRESH", "warp", "AI depth mode", "ReShade mode");
    for (const std::int32_t rate : RefreshRates(input.refresh_hz)) {
        const double warp_ms_a_second = rate * warp_ms;
        const std::string ai_share =
            input.model_milliseconds
                ? FormatText("%.0f%%", ShareOfSecond(model_ms_a_second + warp_ms_a_second))
                : "?";
        Report::Line(kRow, FormatText("%d Hz", rate).c_str(),
                     FormatText("%.0f ms/s", warp_ms_a_second).c_str(), ai_share.c_str(),
                     FormatText("%.0f%%", ShareOfSecond(warp_ms_a_second)).c_str());
    }
    Report::Line("");
    Report::Line(
        "Whatever is left over is what the game and the SteamVR compositor share. The warp is paid in both "
        "modes; the model only in AI mode.");
}

void PrintJudgement(double share) {
    if (share > kFatalShare) {
        Report::Line(
            ">>> FOUND IT. Vistrel takes more than half the GPU on its own (%.0f%%). The larger of the two "
            "costs above is the lever.",
            share);
    } else if (share > kSignificantShare) {
        Report::Line(
            ">>> Vistrel takes a significant slice (%.0f%%) but not a fatal one. Worth trimming, though "
            "something else is likely contributing too.",
            share);
    } else {
        Report::Line(">>> Vistrel's own rendering is NOT the bottleneck here - it uses %.0f%% of the GPU.",
                     share);
        Report::Line(
            ">>> If games are still slow, look at the VRAM figures from part 2, the SteamVR render "
            "resolution, or the game simply needing the whole GPU by itself.");
    }
}

void PrintConclusion(const VerdictInput& input, double warp_ms, double model_ms_a_second) {
    const double warp_ms_a_second = warp_ms * kAssumedRefreshHz;
    const bool reshade = input.depth_mode == DiagSettings::kReShadeDepthMode;
    Report::Line("");
    Report::Line("Taking 90 Hz and the mode this machine is set to (%s):",
                 reshade ? "ReShade depth" : "AI depth");
    PrintJudgement(ShareOfSecond(reshade ? warp_ms_a_second : model_ms_a_second + warp_ms_a_second));

    const double reshade_share = ShareOfSecond(warp_ms_a_second);
    if (input.model_milliseconds && reshade_share < kReShadeNoteShare) {
        Report::Line(
            ">>> Note: on the ReShade path Vistrel costs only %.0f%% here. If games are just as slow in THAT "
            "mode, the cause is almost certainly not Vistrel's rendering at all.",
            reshade_share);
    }
    if (!input.part_two_run) {
        Report::Line(
            ">>> Part 2 was skipped, so nothing above accounts for VRAM pressure or a cross-GPU capture. "
            "Both can cause this on their own.");
    }
}

void PrintMeasuredCosts(const VerdictInput& input) {
    PrintWarpCost(input.warp_costs);
    Report::Line("");
    ModelLoad load;
    if (input.model_milliseconds) {
        load = LoadOfModel(input, *input.model_milliseconds);
        PrintModelCost(*input.model_milliseconds, load);
    }
    const double warp_ms = input.warp_costs.front().milliseconds;
    PrintRefreshTable(input, warp_ms, load.milliseconds_a_second);
    PrintConclusion(input, warp_ms, load.milliseconds_a_second);
}

void PrintNotMeasured() {
    Report::Line("");
    Report::Line("NOT measured by this tool:");
    Report::Line(
        "  - the depth stage around the model: pre-process, upsample, edge restore. Only the model's own Run "
        "is timed.");
    Report::Line("  - the SteamVR compositor's own cost");
    Report::Line("  - the game's cost, and how much VRAM it wants");
    Report::Line("  - the ReShade add-on's two per-frame copies inside the game process");
}

}  // namespace

void ReportVerdict(const VerdictInput& input) {
    Report::Section("VERDICT");
    if (input.warp_costs.empty()) {
        Report::Line(
            "The warp could not be measured, so no verdict. The sections above are still worth reading.");
    } else {
        PrintMeasuredCosts(input);
    }
    PrintNotMeasured();
}
