#include "tools/vistrel_diag/sections/warp/frame_sampling.h"

#include <algorithm>
#include <cstddef>
#include <vector>

int FramesPerBatch(double frame_ms) {
    constexpr double kBatchMs = 200.0;
    constexpr double kShortestFrameMs = 0.01;
    constexpr double kMostFrames = 40.0;  // Limited before the conversion, so that the value fits.
    const double frames = std::min(kBatchMs / std::max(frame_ms, kShortestFrameMs), kMostFrames);
    return std::max(static_cast<int>(frames), 1);
}

std::optional<double> SampleFrameTime(const std::function<double(int)>& time_frames) {
    constexpr int kBatches = 3;
    const double calibration_ms = time_frames(1);
    if (!(calibration_ms > 0.0)) {
        return std::nullopt;
    }
    const int frames = FramesPerBatch(calibration_ms);
    std::vector<double> samples;
    for (int batch = 0; batch < kBatches; ++batch) {
        const double frame_ms = time_frames(frames);
        if (frame_ms > 0.0) {
            samples.push_back(frame_ms);
        }
    }
    if (samples.empty()) {
        return calibration_ms;
    }
    std::sort(samples.begin(), samples.end());
    return samples[samples.size() / 2];
}
