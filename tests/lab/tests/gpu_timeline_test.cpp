#include "tests/lab/machine/gpu_timeline.h"

#include <gmock/gmock.h>

namespace lab {
namespace {

constexpr std::int64_t kMillisecond = 1'000'000;  // Nanoseconds.
constexpr ClockRamp kRamp = {50, 200};

TEST(GpuTimeline, WorkWithoutARampRunsInSequence) {
    GpuTimeline timeline;
    EXPECT_EQ(timeline.DoneAt(7), 7);
    timeline.Work(100, 50, {});
    EXPECT_EQ(timeline.DoneAt(50), 150);
    timeline.Work(100, 60, {});
    EXPECT_EQ(timeline.DoneAt(60), 250);
    EXPECT_EQ(timeline.DoneAt(300), 300);
}

TEST(GpuTimeline, AnIdleClockIsSlowerUntilItHasRampedUp) {
    GpuTimeline timeline;
    const std::int64_t start = 10'000 * kMillisecond;
    // 200 ms from half to full speed carry out 150 ms of work; whatever follows takes its own time.
    timeline.Work(150.0 * kMillisecond, start, kRamp);
    EXPECT_NEAR(static_cast<double>(timeline.DoneAt(start) - start), 200.0 * kMillisecond, 10);
    const std::int64_t up = timeline.DoneAt(start);
    timeline.Work(30.0 * kMillisecond, up, kRamp);
    EXPECT_NEAR(static_cast<double>(timeline.DoneAt(up) - up), 30.0 * kMillisecond, 10);
}

TEST(GpuTimeline, ManySmallJobsTakeAsLongAsOneLargeJob) {
    GpuTimeline one;
    GpuTimeline many;
    one.Work(90.0 * kMillisecond, kMillisecond, kRamp);
    for (int i = 0; i < 90; ++i) {
        many.Work(1.0 * kMillisecond, kMillisecond, kRamp);
    }
    EXPECT_NEAR(static_cast<double>(one.DoneAt(0)), static_cast<double>(many.DoneAt(0)), 200);
}

TEST(GpuTimeline, TheClockDropsWhileIdle) {
    GpuTimeline timeline;
    timeline.Work(1000.0 * kMillisecond, kMillisecond, kRamp);
    const std::int64_t half_rested = timeline.DoneAt(0) + 100 * kMillisecond;
    timeline.Work(1000, half_rested, kRamp);
    EXPECT_NEAR(static_cast<double>(timeline.DoneAt(0) - half_rested), 1000 / 0.75, 2);
    const std::int64_t rested = timeline.DoneAt(0) + 1000 * kMillisecond;
    timeline.Work(1000, rested, kRamp);
    EXPECT_NEAR(static_cast<double>(timeline.DoneAt(0) - rested), 2000, 2);
}

}  // namespace
}  // namespace lab
