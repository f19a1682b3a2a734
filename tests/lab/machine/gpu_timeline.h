// When a scripted GPU is done with what it was told, and how fast its clock runs meanwhile. Touches no
// Windows header.
#pragma once

#include <cstdint>
#include <optional>

#include "tests/lab/machine/scenario.h"

namespace lab {

/// A GPU whose work takes the machine's time: it begins when it is told, or when it is done with what came
/// before. Times are nanoseconds of the machine's clock. With a ramp its speed rises in a straight line while
/// it works and falls as fast while it rests.
class GpuTimeline {
  public:
    /// Adds work that takes `nanoseconds` at full speed, told at the time `now`.
    void Work(double nanoseconds, std::int64_t now, const std::optional<ClockRamp>& ramp);

    /// When everything told by `now` is done.
    std::int64_t DoneAt(std::int64_t now) const { return now > done_ ? now : done_; }

  private:
    std::int64_t done_ = 0;
    double level_ = 0;  ///< 0 the lowest speed, 1 the full one
};

}  // namespace lab
