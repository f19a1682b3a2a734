#include "tools/vistrel_diag/sections/warp/gpu_warm_up.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

/// A GPU on which a frame takes `frame_ms`; each batch takes this much more wall-clock time.
struct Gpu {
    double frame_ms = 1.0;
    double rest_ms = 0.0;
    bool tells = true;
    bool draws = true;
    double now = 5000.0;
    double work = 0.0;
    std::vector<int> batches = {};

    void WarmUp() {
        WarmUpSteps steps;
        steps.draw = [this](int frames) -> std::optional<double> {
            if (!draws) {
                return std::nullopt;
            }
            batches.push_back(frames);
            work += frames * frame_ms;
            now += frames * frame_ms + rest_ms;
            return tells ? frame_ms : -1.0;
        };
        steps.now = [this] { return now; };
        WarmUpGpu(steps);
    }
};

TEST(WarmUpGpu, GivesTheGpuHalfASecondOfWork) {
    for (const double frame_ms : {0.05, 0.3, 1.0, 7.0, 30.0}) {
        Gpu gpu{.frame_ms = frame_ms};
        gpu.WarmUp();
        EXPECT_EQ(gpu.batches.front(), 1) << frame_ms;
        EXPECT_GT(gpu.work, 470.0) << frame_ms;
        EXPECT_LT(gpu.work, 560.0) << frame_ms;
    }
}

TEST(WarmUpGpu, DrawsOneFrameOnAGpuThatTakesLongerForIt) {
    Gpu gpu{.frame_ms = 3000.0};
    gpu.WarmUp();
    EXPECT_EQ(gpu.batches, std::vector<int>{1});
}

TEST(WarmUpGpu, EndsAfterASecondOfWallTime) {
    Gpu gpu{.frame_ms = 1.0, .rest_ms = 300.0};
    gpu.WarmUp();
    EXPECT_LT(gpu.work, 500.0);
    EXPECT_GE(gpu.now - 5000.0, 1000.0);
    EXPECT_LT(gpu.now - 5000.0, 1500.0);
}

TEST(WarmUpGpu, FallsBackToTheWallClock) {
    Gpu gpu{.frame_ms = 2.0, .tells = false};
    gpu.WarmUp();
    EXPECT_GE(gpu.now - 5000.0, 990.0);
    EXPECT_LT(gpu.now - 5000.0, 1200.0);
}

TEST(WarmUpGpu, EndsWhenNothingCanBeDrawn) {
    Gpu gpu{.draws = false};
    gpu.WarmUp();
    EXPECT_EQ(gpu.now, 5000.0);
}

TEST(WarmUpGpu, EndsEvenIfNoClockAdvances) {
    Gpu gpu{.frame_ms = 0.0};
    gpu.WarmUp();
    EXPECT_LT(gpu.batches.size(), 100U);
}

}  // namespace
