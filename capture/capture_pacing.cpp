#include "capture/capture_pacing.h"

bool RestoreClock::AllowAttempt(std::uint64_t now_ms) {
    if (now_ms < next_ms_) {
        return false;
    }
    next_ms_ = now_ms + kIntervalMs;
    return true;
}

std::uint32_t FirstFrameWaits::NextTimeoutMs(bool has_picture) {
    if (has_picture || waits_ >= kMost) {
        return 0;
    }
    ++waits_;
    return kWaitMs;
}

std::optional<float> FrameAgeMs(std::int64_t now_ticks, std::int64_t present_ticks, std::int64_t frequency) {
    if (now_ticks < present_ticks || frequency <= 0) {
        return std::nullopt;
    }
    // Unsigned, so that a large negative present time does not overflow.
    const std::uint64_t ticks =
        static_cast<std::uint64_t>(now_ticks) - static_cast<std::uint64_t>(present_ticks);
    const double age_ms = static_cast<double>(ticks) * 1000.0 / static_cast<double>(frequency);
    if (age_ms >= 1000.0) {
        return std::nullopt;
    }
    return static_cast<float>(age_ms);
}
