#include "capture/capture_pacing.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <vector>

namespace {

TEST(RestoreClock, AllowsARestoreEvery500Milliseconds) {
    RestoreClock clock;
    EXPECT_TRUE(clock.AllowAttempt(10'000));
    EXPECT_FALSE(clock.AllowAttempt(10'000));
    EXPECT_FALSE(clock.AllowAttempt(10'499));
    EXPECT_TRUE(clock.AllowAttempt(10'500));
    EXPECT_FALSE(clock.AllowAttempt(10'999));
    EXPECT_TRUE(clock.AllowAttempt(20'000));
    EXPECT_FALSE(clock.AllowAttempt(20'499)) << "counted from the attempt, not from when it was due";
}

TEST(RestoreClock, AllowsARestoreRightAfterTheMachineStarts) {
    RestoreClock clock;
    EXPECT_TRUE(clock.AllowAttempt(0));
    EXPECT_FALSE(clock.AllowAttempt(499));
}

TEST(RestoreClock, AllowsAnImmediateRestoreOnRequest) {
    RestoreClock clock;
    EXPECT_TRUE(clock.AllowAttempt(10'000));
    clock.AllowAtOnce();
    EXPECT_TRUE(clock.AllowAttempt(10'001));
    EXPECT_FALSE(clock.AllowAttempt(10'500));
    EXPECT_TRUE(clock.AllowAttempt(10'501));
}

TEST(FirstFrameWaits, AllowsTenWaits) {
    FirstFrameWaits waits;
    std::vector<std::uint32_t> timeouts;
    for (int call = 0; call < 12; ++call) {
        timeouts.push_back(waits.NextTimeoutMs(false));
    }
    EXPECT_EQ(timeouts, (std::vector<std::uint32_t>{250, 250, 250, 250, 250, 250, 250, 250, 250, 250, 0, 0}));
    waits.Reset();
    EXPECT_EQ(waits.NextTimeoutMs(false), 250U);
}

TEST(FirstFrameWaits, AllowsNoneOnceThereIsAPicture) {
    FirstFrameWaits waits;
    EXPECT_EQ(waits.NextTimeoutMs(true), 0U);
    for (int call = 0; call < 10; ++call) {
        EXPECT_EQ(waits.NextTimeoutMs(false), 250U) << "a call with a picture spends no wait";
    }
    EXPECT_EQ(waits.NextTimeoutMs(false), 0U);
}

constexpr std::int64_t kMegahertz10 = 10'000'000;

TEST(FrameAgeMs, ConvertsTicksToMilliseconds) {
    EXPECT_EQ(FrameAgeMs(1'000'000, 1'000'000, kMegahertz10), 0.0F);
    EXPECT_EQ(FrameAgeMs(1'125'000, 1'000'000, kMegahertz10), 12.5F);
    EXPECT_EQ(FrameAgeMs(50, 43, 1000), 7.0F);
}

TEST(FrameAgeMs, AcceptsOnlyAgesFrom0ToBelow1000) {
    EXPECT_EQ(FrameAgeMs(999'999, 1'000'000, kMegahertz10), std::nullopt) << "presented in the future";
    EXPECT_EQ(FrameAgeMs(10'999'990, 1'000'000, kMegahertz10), 999.999F);
    EXPECT_EQ(FrameAgeMs(11'000'000, 1'000'000, kMegahertz10), std::nullopt);
}

TEST(FrameAgeMs, NoCounterValueOverflows) {
    constexpr auto kMost = std::numeric_limits<std::int64_t>::max();
    constexpr auto kLeast = std::numeric_limits<std::int64_t>::min();
    EXPECT_EQ(FrameAgeMs(kMost, kLeast, kMegahertz10), std::nullopt);
    EXPECT_EQ(FrameAgeMs(kLeast, kMost, kMegahertz10), std::nullopt);
    EXPECT_EQ(FrameAgeMs(kMost, kMost - kMegahertz10 / 2, kMegahertz10), 500.0F);
    EXPECT_EQ(FrameAgeMs(5, 1, 0), std::nullopt);
}

}  // namespace
