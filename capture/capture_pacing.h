// When the capture waits, when it may try again, and how old a frame is: calculations with times that the
// caller reads.
#pragma once

#include <cstdint>
#include <optional>

/// Limits how often lost duplication may be recreated.
class RestoreClock {
  public:
    static constexpr std::uint64_t kIntervalMs = 500;

    /// Whether an attempt may be made at `now_ms`; after an allowed attempt the next one is allowed
    /// kIntervalMs later.
    bool AllowAttempt(std::uint64_t now_ms);

    /// Allows the next attempt at any time.
    void AllowAtOnce() { next_ms_ = 0; }

  private:
    std::uint64_t next_ms_ = 0;
};

/// A capture without a picture waits for one, but at most kMost times.
class FirstFrameWaits {
  public:
    static constexpr int kMost = 10;
    static constexpr std::uint32_t kWaitMs = 250;

    /// How long the next acquire may wait, in milliseconds.
    std::uint32_t NextTimeoutMs(bool has_picture);

    void Reset() { waits_ = 0; }

  private:
    int waits_ = 0;
};

/// Milliseconds from `present_ticks` to `now_ticks` at `frequency` ticks per second. Empty when that is
/// negative, or 1000 ms or more: such an age says nothing about the frame.
std::optional<float> FrameAgeMs(std::int64_t now_ticks, std::int64_t present_ticks, std::int64_t frequency);
