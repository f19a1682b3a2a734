#include "tools/vistrel_diag/sections/warp/gpu_warm_up.h"

#include <algorithm>

namespace {

constexpr double kWorkMs = 500.0;
constexpr double kLongestMs = 1000.0;
// Long compared with the idle time between two batches, and short enough to end in time.
constexpr double kBatchMs = 100.0;
constexpr double kShortestFrameMs = 0.05;
constexpr int kMostBatches = 20;  // A bound in case the clock does not advance.

int FramesFor(double batch_ms, double frame_ms) {
    return std::max(1, static_cast<int>(batch_ms / std::max(frame_ms, kShortestFrameMs)));
}

}  // namespace

void WarmUpGpu(const WarmUpSteps& steps) {
    const double start = steps.now();
    double work_ms = 0.0;
    double elapsed_ms = 0.0;
    int frames = 1;
    for (int batch = 0; batch < kMostBatches && work_ms < kWorkMs && elapsed_ms < kLongestMs; ++batch) {
        const std::optional<double> frame_ms = steps.draw(frames);
        if (!frame_ms) {
            return;
        }
        const double before = elapsed_ms;
        elapsed_ms = steps.now() - start;
        const bool told = *frame_ms > 0.0;
        work_ms += told ? *frame_ms * frames : 0.0;
        const double left_ms = std::min(kWorkMs - work_ms, kLongestMs - elapsed_ms);
        frames = FramesFor(std::min(kBatchMs, left_ms), told ? *frame_ms : (elapsed_ms - before) / frames);
    }
}
