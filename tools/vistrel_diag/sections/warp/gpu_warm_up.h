// Work that brings a GPU out of its idle clocks before anything is timed on it.
#pragma once

#include <functional>
#include <optional>

/// How the work is done and how its time is measured. All times are in milliseconds.
struct WarmUpSteps {
    /// Draws this many frames, waits for them, and returns the GPU time of one frame, or a value of 0 or less
    /// when that is unknown. Empty when nothing could be drawn.
    std::function<std::optional<double>(int frames)> draw;
    std::function<double()> now;
};

/// Draws, one frame first and then batches of about 100 ms, until the GPU has worked for about 500 ms or 1 s
/// has passed, or nothing can be drawn.
void WarmUpGpu(const WarmUpSteps& steps);
