// The way back from the lines of HAND TRACKING to the records.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

#include "tools/vistrel_diag/report/line_reading.h"
#include "tools/vistrel_diag/sections/hand_tracking/hand_tracking_section.h"

/// What was said of a hand while it was watched.
struct HandStateReading {
    char hand = 'L';  ///< or 'R'
    HandSource source = HandSource::None;
    std::uint32_t line = 0;
};

/// What the runtime was found to be able to tell.
enum class HandConclusion { NoDataSourceExtension, NeverReported, Reported };

/// The print loses the watch time beyond whole seconds.
struct HandTrackingReading {
    std::optional<HandTrackingExtensions> extensions;
    std::uint32_t extensions_line = 0;  ///< of the first of the two
    std::optional<HandProbeStop> stop;
    std::uint32_t stop_line = 0;
    std::optional<double> watch_seconds;
    std::vector<HandStateReading> states;  ///< in the order of the watch
    HandPair hands = NewHands();           ///< as the summary says; the last state from the lines before it
    std::array<std::uint32_t, 2> hand_lines = {};
    std::uint32_t summary_line = 0;
    std::optional<HandConclusion> conclusion;
    std::uint32_t conclusion_line = 0;
};

/// Empty when no line was understood. Lines that were not are added to `unread`.
std::optional<HandTrackingReading> ReadHandTrackingSection(SourceLines lines, UnreadLines& unread);
