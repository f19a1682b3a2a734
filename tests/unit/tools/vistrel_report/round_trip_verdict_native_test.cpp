// Part 2 and the verdict: see round_trip_machine_native_test.cpp.
#include <array>
#include <limits>
#include <string_view>

#include "platform/format.h"
#include "tests/unit/tools/vistrel_report/round_trip.h"

// ---- Part 2 and the verdict

RC_GTEST_PROP(RoundTrip, HandTracking, ()) {
    const HandTrackingExtensions extensions = {true, *rc::gen::arbitrary<bool>()};
    const double seconds = *Between(0.0, 30.0);
    const auto looks = *rc::gen::container<std::vector<std::pair<bool, HandSource>>>(
        rc::gen::pair(rc::gen::arbitrary<bool>(),
                      rc::gen::element(HandSource::None, HandSource::Unobstructed, HandSource::Controller)));
    const std::string text = Printed([&] {
        PrintHandTrackingExtensions(extensions);
        PrintWatchInstructions(seconds);
        HandPair hands = NewHands();
        for (const auto& [right, source] : looks) {
            NoteHandReading(hands.at(right ? 1 : 0), {true, source});
        }
        PrintHandSummary(hands, extensions.data_source);
    });
    const HandTrackingReading reading = ReadBack(text, ReadHandTrackingSection);
    const std::string again = Printed([&reading] {
        PrintHandTrackingExtensions(reading.extensions.value());
        PrintWatchInstructions(reading.watch_seconds.value());
        HandPair hands = NewHands();
        for (const HandStateReading& state : reading.states) {
            NoteHandReading(hands.at(state.hand == 'L' ? 0 : 1), {true, state.source});
        }
        PrintHandSummary(reading.hands, reading.extensions->data_source);
    });
    RC_ASSERT(again == text);
}

RC_GTEST_PROP(RoundTrip, AHandProbeThatStops, ()) {
    const auto stop = static_cast<HandProbeStop>(*rc::gen::inRange(0, 8));
    const HandTrackingReading reading =
        ReadBack(Printed([stop] { PrintHandProbeStop(stop); }), ReadHandTrackingSection);
    RC_ASSERT(reading.stop == stop);
}

namespace {

/// The verdict's lines made from what was read of them, less those without a
/// value.
std::string Rebuilt(const VerdictReading& verdict) {
    std::string text;
    if (verdict.desktop) {
        text += FormatText("At %dx%d the warp costs %.2f ms per headset frame, for both eyes.\n",
                           verdict.desktop->width, verdict.desktop->height, verdict.desktop->milliseconds);
    }
    for (const CheaperSizeReading& size : verdict.cheaper_sizes) {
        text += FormatText(
            "  Dropping the desktop to %dx%d would make it %.1fx "
            "cheaper (%.2f ms).\n",
            size.cost.width, size.cost.height, size.times_cheaper, size.cost.milliseconds);
    }
    if (verdict.model && verdict.model->rate) {
        const std::array reasons = {"the model cannot go faster than that on this GPU",
                                    "capped by your frame rate", "capped by the FPS limit"};
        text += FormatText(
            "The AI model costs %.2f ms per inference, and would run about %.0f "
            "times a second (%s).\n",
            verdict.model->milliseconds, *verdict.model->rate,
            reasons.at(static_cast<std::size_t>(verdict.model->limit.value())));
    } else if (verdict.model) {
        text += FormatText(
            "The AI model costs %.2f ms per inference - one map every %.1f "
            "seconds. It cannot run even once a second on "
            "this GPU.\n",
            verdict.model->milliseconds, verdict.model->seconds_a_map.value());
    }
    for (const RefreshRowReading& row : verdict.rows) {
        const std::string ai = row.ai_percent ? FormatText("%.0f%%", *row.ai_percent) : "?";
        text += FormatText("  %-9s %-13s %-14s %-14s\n", FormatText("%d Hz", row.refresh_hz).c_str(),
                           FormatText("%.0f ms/s", row.warp_ms_a_second).c_str(), ai.c_str(),
                           FormatText("%.0f%%", row.reshade_percent).c_str());
    }
    if (verdict.reshade_mode) {
        text += FormatText("Taking 90 Hz and the mode this machine is set to (%s):\n",
                           *verdict.reshade_mode ? "ReShade depth" : "AI depth");
    }
    if (verdict.grade) {
        text += FormatText("%d: %.0f%%\n", static_cast<int>(*verdict.grade), verdict.percent);
    }
    if (verdict.reshade_note_percent) {
        text += FormatText("note: %.0f%%\n", *verdict.reshade_note_percent);
    }
    return text;
}

/// The same lines of the verdict itself, the graded ones shortened.
std::string LinesWithValues(const std::string& text) {
    std::string kept;
    const std::array<std::pair<std::string_view, int>, 3> grades = {
        std::pair(">>> FOUND IT. Vistrel takes more than half the GPU on its own (", 0),
        std::pair(">>> Vistrel takes a significant slice (", 1),
        std::pair(">>> Vistrel's own rendering is NOT the bottleneck here - it uses ", 2)};
    constexpr std::string_view kNote = ">>> Note: on the ReShade path Vistrel costs only ";
    for (const SourceLine& line : SplitLines(text)) {
        const std::string_view whole = line.text;
        if (whole.starts_with("At ") || whole.starts_with("  Dropping") ||
            whole.starts_with("The AI model costs") || whole.starts_with("Taking ") ||
            (whole.starts_with("  ") && whole.find(" ms/s") != std::string_view::npos)) {
            kept += std::string(whole) + "\n";
        }
        for (const auto& [begin, number] : grades) {
            if (whole.starts_with(begin)) {
                const std::string_view rest = whole.substr(begin.size());
                kept += FormatText("%d: ", number) + std::string(rest.substr(0, rest.find('%') + 1)) + "\n";
            }
        }
        if (whole.starts_with(kNote)) {
            const std::string_view rest = whole.substr(kNote.size());
            kept += "note: " + std::string(rest.substr(0, rest.find('%') + 1)) + "\n";
        }
    }
    return kept;
}

}  // namespace

RC_GTEST_PROP(RoundTrip, Verdict, ()) {
    VerdictInput input;
    input.warp_costs = *rc::gen::container<std::vector<WarpCost>>(rc::gen::exec([] {
        return WarpCost{*rc::gen::inRange(1, 9000), *rc::gen::inRange(1, 9000), *Milliseconds()};
    }));
    input.model_milliseconds = Maybe(Milliseconds());
    input.game_fps = *rc::gen::oneOf(rc::gen::just(0.0), Between(0.0, 300.0));
    input.desktop_fps = *rc::gen::oneOf(rc::gen::just(0.0), Between(0.0, 300.0));
    input.refresh_hz = *rc::gen::inRange(-1, 300);
    input.part_two_run = *rc::gen::arbitrary<bool>();
    input.ai_fps_limit =
        *rc::gen::oneOf(Float(0.0, 200.0), rc::gen::just(std::numeric_limits<float>::infinity()));
    input.depth_mode = *rc::gen::inRange(0, 2);
    std::string text = Printed([&input] { ReportVerdict(input); });
    text.erase(0, text.find("=\n") + 2);  // The heading.
    const VerdictReading reading = ReadBack(text, ReadVerdictSection);
    RC_ASSERT(Rebuilt(reading) == LinesWithValues(text));
    RC_ASSERT(reading.desktop.has_value() == !input.warp_costs.empty());
    RC_ASSERT(reading.model.has_value() == (input.model_milliseconds && !input.warp_costs.empty()));
    RC_ASSERT((reading.part_two_skipped_line == 0) == (input.part_two_run || input.warp_costs.empty()));
    RC_ASSERT((reading.no_verdict_line != 0) == input.warp_costs.empty());
    RC_ASSERT(reading.not_measured_line != 0U);
}
