// Work that brings a GPU out of its idle clocks before anything is timed on it.
#pragma once

#include <functional>
#include <optional>

/// How the work is done and what tells how long it takes. All times are milliseconds.
struct WarmUpSteps {
    /// Draws so many frames, waits for them, and returns what one took of the GPU's own time, or a value not
    /// above 0 when that cannot be told. Empty when nothing could be drawn.
    std::function<std::optional<double>(int frames)> draw;
    std::function<double()> now;
};

/// Draws, one frame first and then batches of about 100 ms, until the GPU has worked for about 500 ms or 1 s
/// has passed, or nothing can be drawn.
void WarmUpGpu(const WarmUpSteps& steps);
