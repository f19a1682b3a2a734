// Whether the OpenXR runtime can tell a bare hand from a hand that holds a controller: what the report says
// about it, and what is remembered of each hand while it is watched.
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

/// One look at a hand.
struct HandReading {
    bool active = false;  ///< the joints were located and the hand is there
    HandSource source = HandSource::None;
};

/// A hand over the whole watch.
struct HandRecord {
    const char* letter = "";
    bool tracked = false;  ///< active at least once
    bool saw_unobstructed = false;
    bool saw_controller = false;
    std::optional<HandSource> last_state;  ///< what the last line said; none before the first
};

using HandPair = std::array<HandRecord, 2>;  // Left, right.

/// Both hands before the watch.
HandPair NewHands();

/// The source in a runtime's answer: none without the extension or with an inactive answer, and whatever is
/// not the bare hand counts as a controller. `source` is OpenXR's number.
HandSource ReportedHandSource(bool data_source_extension, bool answer_active, std::int32_t source);

/// Remembers `reading`, and reports the hand's state when it is not what the last line said.
void NoteHandReading(HandRecord& hand, const HandReading& reading);

/// The watch time that is really kept: one that is no finite number is none.
double WatchSeconds(double seconds);

void PrintHandTrackingExtensions(const HandTrackingExtensions& extensions);
void PrintHandProbeStop(HandProbeStop stop);
void PrintWatchInstructions(double seconds);
void PrintHandSummary(const HandPair& hands, bool data_source_extension);

/// The whole section. Opens an OpenXR session on `device` (may be null) and watches both hands for `seconds`
/// while the user holds the controllers and then puts them down; blocks for that time, or less when the
/// runtime ends the session. Leaves no OpenXR object and no reference to the loader behind.
void ProbeHandTracking(ID3D11Device* device, double seconds);
