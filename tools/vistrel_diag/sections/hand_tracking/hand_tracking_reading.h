// Reads the lines of HAND TRACKING back into records.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

#include "tools/vistrel_diag/report/line_reading.h"
#include "tools/vistrel_diag/sections/hand_tracking/hand_tracking_section.h"

/// What the report said about a hand during the watch.
struct HandStateReading {
    char hand = 'L';  ///< or 'R'
    HandSource source = HandSource::None;
    std::uint32_t line = 0;
};

/// What the runtime was found to report.
enum class HandConclusion { NoDataSourceExtension, NeverReported, Reported };

/// Fractions of a second of the watch time are not in the lines.
struct HandTrackingReading {
    std::optional<HandTrackingExtensions> extensions;
    std::uint32_t extensions_line = 0;  ///< of the first of the two
    std::optional<HandProbeStop> stop;
    std::uint32_t stop_line = 0;
    std::optional<double> watch_seconds;
    std::vector<HandStateReading> states;  ///< in the order of the watch
    HandPair hands = NewHands();           ///< from the summary; the last state from the lines before it
    std::array<std::uint32_t, 2> hand_lines = {};
    std::uint32_t summary_line = 0;
    std::optional<HandConclusion> conclusion;
    std::uint32_t conclusion_line = 0;
};

/// Empty when no line was understood. Lines that were not understood are added to `unread`.
std::optional<HandTrackingReading> ReadHandTrackingSection(SourceLines lines, UnreadLines& unread);
