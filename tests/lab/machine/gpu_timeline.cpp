#include "tests/lab/machine/gpu_timeline.h"

#include <algorithm>
#include <cmath>

namespace lab {

void GpuTimeline::Work(double nanoseconds, std::int64_t now, const std::optional<ClockRamp>& ramp) {
    const std::int64_t begin = DoneAt(now);
    if (!ramp) {
        done_ = begin + static_cast<std::int64_t>(nanoseconds);
        return;
    }
    constexpr double kNanosecondsPerMillisecond = 1'000'000;
    const double ramp_time = ramp->milliseconds * kNanosecondsPerMillisecond;
    const double lowest = ramp->from_percent / 100.0;
    level_ = std::max(0.0, level_ - static_cast<double>(begin - done_) / ramp_time);
    const double speed = lowest + (1 - lowest) * level_;
    const double gain = (1 - lowest) / ramp_time;  // of speed, in a nanosecond of work
    const double time_to_full = (1 - level_) * ramp_time;
    const double work_to_full = (speed + 1) / 2 * time_to_full;
    double taken = 0;
    if (nanoseconds >= work_to_full || gain <= 0) {
        taken = time_to_full + (nanoseconds - work_to_full);
    } else {
        // The time after which the integral of the rising speed equals the work.
        taken = (std::sqrt(speed * speed + 2 * gain * nanoseconds) - speed) / gain;
    }
    level_ = std::min(1.0, level_ + taken / ramp_time);
    done_ = begin + static_cast<std::int64_t>(taken);
}

}  // namespace lab
