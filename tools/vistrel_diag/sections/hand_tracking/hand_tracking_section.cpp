#include "tools/vistrel_diag/sections/hand_tracking/hand_tracking_section.h"

#include <algorithm>
#include <cmath>

#include "tools/vistrel_diag/report/report.h"

namespace {

constexpr std::int32_t kUnobstructedSource = 1;  // OpenXR's number for the bare hand.

const char* Presence(bool present) {
    return present ? "present" : "ABSENT";
}

const char* StateText(HandSource state) {
    switch (state) {
        case HandSource::Unobstructed:
            return "UNOBSTRUCTED (bare hand)";
        case HandSource::Controller:
            return "CONTROLLER (held)";
        case HandSource::None:
            break;
    }
    return "none (not tracked)";
}

const char* StopText(HandProbeStop stop) {
    switch (stop) {
        case HandProbeStop::NoDevice:
            return "No D3D11 device - cannot open a session, hand probe skipped.";
        case HandProbeStop::NoLoader:
            return "openxr_loader.dll not found - hand probe skipped.";
        case HandProbeStop::NoEntryPoints:
            return "openxr_loader.dll missing entry points - hand probe skipped.";
        case HandProbeStop::NoHandTracking:
            return "Without hand tracking this runtime cannot report hands at all - nothing to probe. (Bare "
                   "WMR/G2 lands here.)";
        case HandProbeStop::NoInstance:
            return "No runtime accepted an instance (SteamVR not running?) - skipped.";
        case HandProbeStop::MissingFunctions:
            return "Runtime is missing functions this probe needs - skipped.";
        case HandProbeStop::NoHeadset:
            return "Runtime reports no headset right now - put it on and re-run.";
        case HandProbeStop::NoSession:
            break;
    }
    return "Could not create a session (another VR app holding the scene?) - skipped.";
}

const char* Conclusion(const HandPair& hands, bool data_source_extension) {
    if (!data_source_extension) {
        return "No data-source extension: 'tracked' is all this runtime reveals, so a hand cannot be told "
               "from a held controller here.";
    }
    const bool source_seen = std::any_of(hands.begin(), hands.end(), [](const HandRecord& hand) {
        return hand.saw_unobstructed || hand.saw_controller;
    });
    if (!source_seen) {
        return "The data-source extension is present but never reported either source - the runtime "
               "advertises it without filling it in.";
    }
    return "The data-source IS reported here, so Vistrel can trust it to tell a bare hand from a held "
           "controller.";
}

}  // namespace

HandPair NewHands() {
    HandPair hands;
    hands[0].letter = "L";
    hands[1].letter = "R";
    return hands;
}

HandSource ReportedHandSource(bool data_source_extension, bool answer_active, std::int32_t source) {
    if (!data_source_extension || !answer_active) {
        return HandSource::None;
    }
    return source == kUnobstructedSource ? HandSource::Unobstructed : HandSource::Controller;
}

void NoteHandReading(HandRecord& hand, const HandReading& reading) {
    // A hand that is tracked without a source still reads "none": the line is about the source.
    const HandSource state = reading.active ? reading.source : HandSource::None;
    hand.tracked = hand.tracked || reading.active;
    hand.saw_unobstructed = hand.saw_unobstructed || state == HandSource::Unobstructed;
    hand.saw_controller = hand.saw_controller || state == HandSource::Controller;
    if (hand.last_state != state) {
        hand.last_state = state;
        Report::Line("  hand %s : %s", hand.letter, StateText(state));
    }
}

double WatchSeconds(double seconds) {
    return std::isfinite(seconds) ? seconds : 0.0;
}

void PrintHandTrackingExtensions(const HandTrackingExtensions& extensions) {
    Report::Line("XR_EXT_hand_tracking             : %s", Presence(extensions.hand_tracking));
    Report::Line("XR_EXT_hand_tracking_data_source : %s", Presence(extensions.data_source));
}

void PrintHandProbeStop(HandProbeStop stop) {
    Report::Line("%s", StopText(stop));
}

void PrintWatchInstructions(double seconds) {
    Report::Line("");
    Report::Line("Watching for %.0f seconds. HOLD your controllers, then SET THEM DOWN and", seconds);
    Report::Line("raise your bare hands - the source below should flip.");
    Report::Line("");
}

void PrintHandSummary(const HandPair& hands, bool data_source_extension) {
    Report::Line("");
    Report::Line("Summary:");
    for (const HandRecord& hand : hands) {
        Report::Line("  hand %s: tracked=%s%s%s", hand.letter, hand.tracked ? "yes" : "no",
                     hand.saw_unobstructed ? ", saw UNOBSTRUCTED" : "",
                     hand.saw_controller ? ", saw CONTROLLER" : "");
    }
    Report::Line("%s", Conclusion(hands, data_source_extension));
}
