#include "platform/stopwatch.h"

#include <windows.h>

std::int64_t PerformanceTicks() {
    LARGE_INTEGER ticks = {};
    QueryPerformanceCounter(&ticks);  // Cannot fail on Windows XP or later.
    return ticks.QuadPart;
}

std::int64_t PerformanceFrequency() {
    LARGE_INTEGER frequency = {};
    QueryPerformanceFrequency(&frequency);
    return frequency.QuadPart;
}

Stopwatch::Stopwatch() : frequency_(PerformanceFrequency()), start_(PerformanceTicks()) {}

double Stopwatch::Seconds() const {
    return static_cast<double>(PerformanceTicks() - start_) / static_cast<double>(frequency_);
}
