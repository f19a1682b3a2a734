// The performance counter, in its own ticks and in seconds.
#pragma once

#include <cstdint>

/// Ticks of the performance counter since some fixed moment.
std::int64_t PerformanceTicks();

/// Ticks per second; constant while the system runs, never 0.
std::int64_t PerformanceFrequency();

/// Measures time from its construction.
class Stopwatch {
  public:
    Stopwatch();

    /// Seconds since construction.
    double Seconds() const;

  private:
    std::int64_t frequency_;
    std::int64_t start_;
};
