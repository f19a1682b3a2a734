// Capture, and what the warp and the depth model cost.
#include <algorithm>
#include <array>
#include <iterator>

#include "platform/format.h"
#include "tools/vistrel_report/judgements.h"
#include "tools/vistrel_report/rule_conditions.h"

namespace RuleConditions {
namespace {

constexpr double kAssumedRefreshHz = 90.0;  // As the verdict takes it.
constexpr double kFatalShare = 50.0;        // Percent of the GPU, as the verdict judges.
constexpr double kSignificantShare = 25.0;
constexpr double kClearlyDearer = 1.10;   // Runs differ by a tenth.
constexpr double kDearerFloorMs = 0.025;  // What is printed has two decimals; a difference of 0.02 is noise.
constexpr double kUnevenRatio = 3.0;      // A longest run of so many medians.
constexpr double kUnevenFloorMs = 1.0;    // What is shorter than this is noise of the clock.
constexpr double kSlowGameShare = 0.5;    // Of what display and headset show.

constexpr std::string_view kTaken = "already being duplicated";
constexpr std::string_view kDenied = "Screen capture was denied";
constexpr std::string_view kUnsupported = "cannot be duplicated on";
constexpr std::string_view kNoFrame = "never produced a frame";
constexpr std::array<std::string_view, 2> kNoDisplay = {"No display is attached",
                                                        "is not attached to any GPU"};

bool Contains(std::string_view text, std::string_view part) {
    return text.find(part) != std::string_view::npos;
}

/// The failures of both parts that `wanted` takes; not judged when neither part captured.
template <typename Wanted>
Judgement CaptureFailure(const Facts& facts, const std::string& says, Wanted wanted) {
    if (!facts.Has(Part::Capture) && !facts.Has(Part::GameFrameRate)) {
        return NotJudged({Part::Capture});
    }
    std::vector<LineNumber> lines;
    for (const CaptureFacts* capture : {&facts.capture, &facts.game}) {
        if (capture->failure && wanted(capture->failure->text)) {
            lines.push_back(capture->failure->line);
        }
    }
    return lines.empty() ? NotFound() : Found(says, lines);
}

Judgement CaptureFailure(const Facts& facts, const std::string& says, std::string_view words) {
    return CaptureFailure(facts, says, [words](const std::string& text) { return Contains(text, words); });
}

bool IsKnownFailure(const std::string& text) {
    const std::array known = {kTaken, kDenied, kUnsupported, kNoFrame, kNoDisplay[0], kNoDisplay[1]};
    return std::any_of(known.begin(), known.end(),
                       [&text](std::string_view words) { return Contains(text, words); });
}

bool SaysTaken(const CaptureFacts& capture) {
    return capture.failure && Contains(capture.failure->text, kTaken);
}

std::string HolderOfCapture(const Facts& facts) {
    if (facts.software.product_running_line != 0 || facts.software_in_two.product_running_line != 0) {
        return " Vistrel itself was running.";
    }
    for (const SoftwareFacts* software : {&facts.software, &facts.software_in_two}) {
        for (const TextFact& program : software->programs) {
            if (Contains(program.text, "obs") || Contains(program.text, "OBS") ||
                Contains(program.text, "arsec")) {
                return " " + program.text + " was running.";
            }
        }
    }
    // Each part lists what ran in it.
    const bool one_unknown = SaysTaken(facts.capture) && !facts.Has(Part::RunningSoftware);
    const bool two_unknown = SaysTaken(facts.game) && !facts.Has(Part::RunningSoftwareTwo);
    if (one_unknown || two_unknown) {
        return " The report does not tell which programs were running.";
    }
    return " None of the programs that the tool knows was running, so it is another one.";
}

double ShareAtAssumedRate(double milliseconds) {
    return milliseconds * kAssumedRefreshHz / 10.0;
}

std::int64_t Pixels(const WarpRow& row) {
    return row.width * row.height;
}

std::string SizeText(const WarpRow& row) {
    return FormatText("%lldx%lld", static_cast<long long>(row.width), static_cast<long long>(row.height));
}

/// The largest smaller size that leaves half of the frame, or null.
const WarpRow* SizeThatFits(const WarpFacts& warp) {
    const WarpRow* fits = nullptr;
    for (const WarpRow& row : warp.rows) {
        const bool smaller = Pixels(row) < Pixels(warp.rows.front());
        const bool affordable = ShareAtAssumedRate(row.milliseconds) <= kFatalShare;
        if (smaller && affordable && (fits == nullptr || Pixels(row) > Pixels(*fits))) {
            fits = &row;
        }
    }
    return fits;
}

}  // namespace

Judgement CaptureTaken(const Facts& facts) {
    return CaptureFailure(
        facts, "Another program is already duplicating the display." + HolderOfCapture(facts), kTaken);
}

Judgement CaptureDenied(const Facts& facts) {
    return CaptureFailure(facts, "Windows denied the capture: a UAC prompt or the lock screen was in front.",
                          kDenied);
}

Judgement CaptureUnsupported(const Facts& facts) {
    return CaptureFailure(
        facts,
        "The display cannot be duplicated on its GPU. Capturing the game's window works, or "
        "switching the laptop to its discrete GPU.",
        kUnsupported);
}

Judgement CaptureWithoutFrame(const Facts& facts) {
    return CaptureFailure(
        facts, "The capture began and never delivered an image: the display was probably asleep.", kNoFrame);
}

Judgement CaptureWithoutDisplay(const Facts& facts) {
    return CaptureFailure(facts, "No display that could be captured is attached to a GPU.",
                          [](const std::string& text) {
                              return Contains(text, kNoDisplay[0]) || Contains(text, kNoDisplay[1]);
                          });
}

Judgement CaptureFailedOtherwise(const Facts& facts) {
    return CaptureFailure(facts, "The screen capture failed; the line told says how.",
                          [](const std::string& text) { return !IsKnownFailure(text); });
}

Judgement CaptureOfOtherDisplay(const Facts& facts) {
    const CaptureFacts& capture = facts.capture;
    const DisplayFacts* const display = PrimaryDisplay(facts);
    if (!capture.width || !capture.height || display == nullptr) {
        return DoesNotApply();
    }
    const bool same = *capture.width == display->width && *capture.height == display->height;
    const bool turned = *capture.width == display->height && *capture.height == display->width;
    if (same || turned) {
        return NotFound();  // A portrait display is delivered unrotated.
    }
    return Found(
        FormatText("The display that was captured has %lldx%lld pixels, the primary one %lldx%lld: they "
                   "are two displays.",
                   static_cast<long long>(*capture.width), static_cast<long long>(*capture.height),
                   static_cast<long long>(display->width), static_cast<long long>(display->height)),
        {capture.size_line, display->line});
}

Judgement FrameNotReadBack(const Facts& facts) {
    if (facts.capture.failure) {
        return DoesNotApply();
    }
    return FoundAt(facts.capture.not_read_back_line,
                   "No captured frame could be read back, so the warp was timed on a synthetic picture.");
}

Judgement GameSlow(const Facts& facts) {
    const DisplayFacts* const display = PrimaryDisplay(facts);
    if (!facts.game.fps || display == nullptr || display->refresh_hz < 2) {
        return DoesNotApply();  // Some drivers say 0 or 1 Hz for "default".
    }
    // A game need not be as fast as a fast monitor, for the headset shows fewer images.
    const double shown = std::min(static_cast<double>(display->refresh_hz), kAssumedRefreshHz);
    if (*facts.game.fps >= kSlowGameShare * shown) {
        return NotFound();
    }
    return Found(
        FormatText("With the game running %.1f images a second arrived, on a display of %lld Hz: the game "
                   "itself is slow, or it was not in front.",
                   *facts.game.fps, static_cast<long long>(display->refresh_hz)),
        {facts.game.fps_line, display->line});
}

Judgement WarpNotMeasured(const Facts& facts) {
    if (facts.benchmark.failure || facts.gpu_list_failure_line != 0) {
        return DoesNotApply();  // There was nothing to measure on, which another rule tells.
    }
    if (facts.verdict.not_measured_line == 0) {
        return NotFound();
    }
    std::vector<LineNumber> lines = {facts.verdict.not_measured_line, facts.warp.shader_failure_line};
    std::transform(facts.warp.failures.begin(), facts.warp.failures.end(), std::back_inserter(lines),
                   [](const TextFact& failure) { return failure.line; });
    return Found("The warp could not be measured, so there is no verdict.", lines);
}

Judgement WarpTooDear(const Facts& facts) {
    if (facts.warp.rows.empty()) {
        return DoesNotApply();
    }
    const WarpRow& desktop = facts.warp.rows.front();  // As the verdict takes it.
    const double share = ShareAtAssumedRate(desktop.milliseconds);
    if (share <= kFatalShare) {
        return NotFound();
    }
    const WarpRow* const fits = SizeThatFits(facts.warp);
    const std::string way_out = fits != nullptr ? FormatText(" %s would fit, with %.2f ms.",
                                                             SizeText(*fits).c_str(), fits->milliseconds)
                                                : std::string(" None of the sizes measured would fit.");
    return Found(FormatText("At %s the warp takes %.2f of the 11.1 ms that a frame lasts at 90 Hz (%.0f%%).",
                            SizeText(desktop).c_str(), desktop.milliseconds, share) +
                     way_out,
                 {desktop.line, fits != nullptr ? fits->line : 0});
}

Judgement WarpSizesInverted(const Facts& facts) {
    if (facts.warp.rows.size() < 2) {
        return DoesNotApply();  // Nothing to compare with.
    }
    for (const WarpRow& small : facts.warp.rows) {
        for (const WarpRow& large : facts.warp.rows) {
            const bool dearer = small.milliseconds > large.milliseconds * kClearlyDearer &&
                                small.milliseconds - large.milliseconds > kDearerFloorMs;
            if (Pixels(small) < Pixels(large) && dearer) {
                return Found(
                    FormatText("The warp at %s takes %.2f ms and at %s only %.2f ms. Something else used the "
                               "GPU meanwhile, or it saved power.",
                               SizeText(small).c_str(), small.milliseconds, SizeText(large).c_str(),
                               large.milliseconds),
                    {small.line, large.line});
            }
        }
    }
    return NotFound();
}

Judgement ShareFatal(const Facts& facts) {
    if (!facts.verdict.share) {
        return DoesNotApply();
    }
    if (*facts.verdict.share <= kFatalShare) {
        return NotFound();
    }
    return Found(FormatText("At 90 Hz Vistrel alone takes %.0f%% of the GPU's time.", *facts.verdict.share),
                 {facts.verdict.share_line});
}

Judgement ShareSignificant(const Facts& facts) {
    if (!facts.verdict.share) {
        return DoesNotApply();
    }
    if (*facts.verdict.share <= kSignificantShare || *facts.verdict.share > kFatalShare) {
        return NotFound();
    }
    return Found(
        FormatText("At 90 Hz Vistrel takes %.0f%% of the GPU's time: worth trimming, and hardly the only "
                   "cause.",
                   *facts.verdict.share),
        {facts.verdict.share_line});
}

Judgement ModelTooSlow(const Facts& facts) {
    if (DepthIsFromReShade(facts)) {
        return DoesNotApply();  // No model runs.
    }
    return FoundAt(facts.verdict.model_too_slow_line,
                   "The depth model is slower than the picture it is asked for, so depth lags behind.");
}

Judgement ModelNotTimed(const Facts& facts) {
    const ModelRow* const configured = ConfiguredModel(facts);
    if (configured == nullptr || DepthIsFromReShade(facts)) {
        return DoesNotApply();
    }
    if (configured->median_ms || Contains(configured->error, "model file not found")) {
        return NotFound();
    }
    return Found(
        "The configured depth model \"" + configured->name + "\" did not run; the line told says why.",
        {configured->line});
}

Judgement ModelUneven(const Facts& facts) {
    std::vector<LineNumber> lines;
    const ModelRow* worst = nullptr;
    for (const ModelRow& row : facts.models.rows) {
        const bool uneven = row.median_ms && *row.median_ms > 0.0 && row.max_ms > kUnevenFloorMs &&
                            row.max_ms > kUnevenRatio * *row.median_ms;
        if (uneven) {
            lines.push_back(row.line);
            worst = worst == nullptr || row.max_ms > worst->max_ms ? &row : worst;
        }
    }
    if (facts.models.rows.empty()) {
        return DoesNotApply();
    }
    if (worst == nullptr) {
        return NotFound();
    }
    return Found(
        FormatText("\"%s\" took up to %.2f ms, with a median of %.2f: something else used the GPU meanwhile, "
                   "or it saved power.",
                   worst->name.c_str(), worst->max_ms, *worst->median_ms),
        lines);
}

Judgement VideoMemoryFull(const Facts& facts) {
    for (const GpuFacts& gpu : facts.gpus) {
        if (gpu.memory_in_two && gpu.memory_in_two->out_of_headroom) {
            return Found(
                FormatText("With the game running, %.0f of %.0f MB that Windows grants on GPU %lld are used.",
                           gpu.memory_in_two->used_mb, gpu.memory_in_two->budget_mb,
                           static_cast<long long>(gpu.number)),
                {gpu.memory_in_two->line});
        }
    }
    return NotFound();
}

Judgement PartTwoMissing(const Facts& facts) {
    if (facts.Has(Part::PartTwo) && facts.part_two_skipped_line == 0) {
        return NotFound();
    }
    return Found("Part 2 was not run, so the video memory under load and the game's frame rate are unknown.",
                 {facts.part_two_skipped_line});
}

}  // namespace RuleConditions
