#include "tools/vistrel_diag/sections/hand_tracking/hand_tracking_reading.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

namespace {

struct StopLine {
    HandProbeStop stop;
    std::string_view text;
};

constexpr std::array kStops = {
    StopLine{HandProbeStop::NoDevice, "No D3D11 device - cannot open a session, hand probe skipped."},
    StopLine{HandProbeStop::NoLoader, "openxr_loader.dll not found - hand probe skipped."},
    StopLine{HandProbeStop::NoEntryPoints, "openxr_loader.dll missing entry points - hand probe skipped."},
    StopLine{HandProbeStop::NoHandTracking,
             "Without hand tracking this runtime cannot report hands at all - nothing to probe. (Bare WMR/G2 "
             "lands "
             "here.)"},
    StopLine{HandProbeStop::NoInstance, "No runtime accepted an instance (SteamVR not running?) - skipped."},
    StopLine{HandProbeStop::MissingFunctions, "Runtime is missing functions this probe needs - skipped."},
    StopLine{HandProbeStop::NoHeadset, "Runtime reports no headset right now - put it on and re-run."},
    StopLine{HandProbeStop::NoSession,
             "Could not create a session (another VR app holding the scene?) - skipped."},
};

struct ConclusionLine {
    HandConclusion conclusion;
    std::string_view text;
};

constexpr std::array kConclusions = {
    ConclusionLine{
        HandConclusion::NoDataSourceExtension,
        "No data-source extension: 'tracked' is all this runtime reveals, so a hand cannot be told from a "
        "held controller here."},
    ConclusionLine{
        HandConclusion::NeverReported,
        "The data-source extension is present but never reported either source - the runtime advertises "
        "it without filling it in."},
    ConclusionLine{
        HandConclusion::Reported,
        "The data-source IS reported here, so Vistrel can trust it to tell a bare hand from a held "
        "controller."},
};

bool ReadExtension(const SourceLine& line, HandTrackingReading& reading) {
    std::size_t name = 0;
    std::size_t presence = 0;
    if (!LineScan(line.text)
             .Text("XR_EXT_hand_tracking")
             .OneOf(name, {"_data_source : ", "             : "})
             .OneOf(presence, {"ABSENT", "present"})
             .IsWhole()) {
        return false;
    }
    if (!reading.extensions) {
        reading.extensions.emplace();
        reading.extensions_line = line.number;
    }
    (name == 0 ? reading.extensions->data_source : reading.extensions->hand_tracking) = presence == 1;
    return true;
}

bool ReadStop(const SourceLine& line, HandTrackingReading& reading) {
    for (const StopLine& known : kStops) {
        if (!reading.stop && IsLine(line.text, known.text)) {
            reading.stop = known.stop;
            reading.stop_line = line.number;
            return true;
        }
    }
    for (const ConclusionLine& known : kConclusions) {
        if (!reading.conclusion && IsLine(line.text, known.text)) {
            reading.conclusion = known.conclusion;
            reading.conclusion_line = line.number;
            return true;
        }
    }
    return false;
}

bool ReadInstructions(const SourceLine& line, HandTrackingReading& reading) {
    double seconds = 0.0;
    if (!reading.watch_seconds && LineScan(line.text)
                                      .Text("Watching for ")
                                      .Number(seconds)
                                      .Text(" seconds. HOLD your controllers, then SET THEM DOWN and")
                                      .IsWhole()) {
        reading.watch_seconds = seconds;
        return true;
    }
    return IsLine(line.text, "raise your bare hands - the source below should flip.");
}

bool ReadState(const SourceLine& line, HandTrackingReading& reading) {
    std::size_t hand = 0;
    std::size_t source = 0;
    if (reading.summary_line != 0 ||
        !LineScan(line.text)
             .Text("  hand ")
             .OneOf(hand, {"L", "R"})
             .Text(" : ")
             .OneOf(source, {"none (not tracked)", "UNOBSTRUCTED (bare hand)", "CONTROLLER (held)"})
             .IsWhole()) {
        return false;
    }
    HandStateReading state;
    state.hand = hand == 0 ? 'L' : 'R';
    constexpr std::array kSources = {HandSource::None, HandSource::Unobstructed, HandSource::Controller};
    state.source = kSources.at(source);
    state.line = line.number;
    reading.hands.at(hand).last_state = state.source;
    reading.states.push_back(state);
    return true;
}

bool ReadSummary(const SourceLine& line, HandTrackingReading& reading) {
    if (ReadFixedLine(line, "Summary:", reading.summary_line)) {
        return true;
    }
    std::size_t hand = 0;
    std::size_t tracked = 0;
    std::size_t saw = 0;
    if (!LineScan(line.text)
             .Text("  hand ")
             .OneOf(hand, {"L", "R"})
             .Text(": tracked=")
             .OneOf(tracked, {"no", "yes"})
             .OneOf(saw, {", saw UNOBSTRUCTED, saw CONTROLLER", ", saw UNOBSTRUCTED", ", saw CONTROLLER", ""})
             .IsWhole() ||
        reading.hand_lines.at(hand) != 0) {
        return false;
    }
    HandRecord& record = reading.hands.at(hand);
    record.tracked = tracked == 1;
    record.saw_unobstructed = saw == 0 || saw == 1;
    record.saw_controller = saw == 0 || saw == 2;
    reading.hand_lines.at(hand) = line.number;
    return true;
}

}  // namespace

std::optional<HandTrackingReading> ReadHandTrackingSection(SourceLines lines, UnreadLines& unread) {
    HandTrackingReading reading;
    const bool any = ReadEachLine(lines, unread, [&reading](const SourceLine& line) {
        return ReadExtension(line, reading) || ReadState(line, reading) || ReadSummary(line, reading) ||
               ReadInstructions(line, reading) || ReadStop(line, reading);
    });
    return any ? std::optional(std::move(reading)) : std::nullopt;
}
