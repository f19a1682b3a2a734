// Reading a figure that others still change.
#pragma once

#include <cstdint>
#include <functional>

/// How far apart two readings are, and when the last one begins, in milliseconds.
inline constexpr int kReadingIntervalMs = 8;
inline constexpr int kLongestSettlingMs = 100;

/// What a figure is asked by, and the time. All milliseconds.
struct ReadingSteps {
    std::function<std::uint64_t()> read;
    std::function<void(int milliseconds)> sleep;
    std::function<double()> elapsed_ms;  ///< since the settling began
};

/// The figure as soon as two readings, kReadingIntervalMs apart, agree; the last reading before
/// kLongestSettlingMs when none do.
std::uint64_t ReadSettled(const ReadingSteps& steps);
