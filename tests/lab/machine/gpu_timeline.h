// When a scripted GPU finishes its work, and how fast its clock runs meanwhile. Includes no Windows header.
#pragma once

#include <cstdint>
#include <optional>

#include "tests/lab/machine/scenario.h"

namespace lab {

/// A GPU whose work takes time on the machine's clock: it starts when it is submitted, or when the earlier
/// work is done. Times are nanoseconds of the machine's clock. With a ramp its speed rises linearly while it
/// works and falls as fast while it is idle.
class GpuTimeline {
  public:
    /// Adds work that takes `nanoseconds` at full speed, submitted at the time `now`.
    void Work(double nanoseconds, std::int64_t now, const std::optional<ClockRamp>& ramp);

    /// When everything submitted until `now` is done.
    std::int64_t DoneAt(std::int64_t now) const { return now > done_ ? now : done_; }

  private:
    std::int64_t done_ = 0;
    double level_ = 0;  ///< 0 the lowest speed, 1 the full one
};

}  // namespace lab
