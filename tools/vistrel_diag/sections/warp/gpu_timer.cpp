#include "tools/vistrel_diag/sections/warp/gpu_timer.h"

double MeanFrameMs(const GpuClock& clock, std::uint64_t start, std::uint64_t end, int frames) {
    if (clock.disjoint || clock.frequency == 0 || end <= start) {
        return -1.0;
    }
    return static_cast<double>(end - start) * 1000.0 / static_cast<double>(clock.frequency) / frames;
}
