// Whether the OpenXR runtime can tell a bare hand from a hand that holds a controller: the report's section,
// and the record of each hand during the watch.
#pragma once

#include <array>
#include <cstdint>
#include <optional>

struct ID3D11Device;

/// Which of the extensions that matter the runtime has.
struct HandTrackingExtensions {
    bool hand_tracking = false;
    bool data_source = false;
};

/// Why the hands could not be watched.
enum class HandProbeStop {
    NoDevice,
    NoLoader,
    NoEntryPoints,
    NoHandTracking,
    NoInstance,
    MissingFunctions,
    NoHeadset,
    NoSession,
};

/// What the runtime says a hand's joints come from.
enum class HandSource { None, Unobstructed, Controller };

/// One reading of a hand's state.
struct HandReading {
    bool active = false;  ///< the joints were located and the hand is there
    HandSource source = HandSource::None;
};

/// The record of one hand over the whole watch.
struct HandRecord {
    const char* letter = "";
    bool tracked = false;  ///< active at least once
    bool saw_unobstructed = false;
    bool saw_controller = false;
    std::optional<HandSource> last_state;  ///< what the last line said; empty before the first line
};

using HandPair = std::array<HandRecord, 2>;  // Left, right.

/// The records of both hands before the watch.
HandPair NewHands();

/// The source in a runtime's answer: None without the extension or with an inactive answer. Every source
/// other than the bare hand counts as a controller. `source` is OpenXR's number.
HandSource ReportedHandSource(bool data_source_extension, bool answer_active, std::int32_t source);

/// Adds `reading` to the record, and reports the hand's state when it differs from the last line.
void NoteHandReading(HandRecord& hand, const HandReading& reading);

/// The watch time that is used: a value that is not finite counts as 0.
double WatchSeconds(double seconds);

void PrintHandTrackingExtensions(const HandTrackingExtensions& extensions);
void PrintHandProbeStop(HandProbeStop stop);
void PrintWatchInstructions(double seconds);
void PrintHandSummary(const HandPair& hands, bool data_source_extension);

/// Reports the whole section. Opens an OpenXR session on `device` (may be null) and watches both hands for
/// `seconds` while the user holds the controllers and then puts them down; blocks for that time, or less when
/// the runtime ends the session. Releases every OpenXR object and its reference to the loader.
void ProbeHandTracking(ID3D11Device* device, double seconds);
