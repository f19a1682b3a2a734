// Reads a figure that may still be changing.
#pragma once

#include <cstdint>
#include <functional>

/// The time between two readings, and the latest start of the last one, in milliseconds.
inline constexpr int kReadingIntervalMs = 8;
inline constexpr int kLongestSettlingMs = 100;

/// How the figure is read, and the clock. All times are in milliseconds.
struct ReadingSteps {
    std::function<std::uint64_t()> read;
    std::function<void(int milliseconds)> sleep;
    std::function<double()> elapsed_ms;  ///< since the settling began
};

/// Returns the figure as soon as two readings, kReadingIntervalMs apart, agree. When none do, returns the
/// last reading before kLongestSettlingMs.
std::uint64_t ReadSettled(const ReadingSteps& steps);
