#include "tools/vistrel_diag/sections/warp/settled_reading.h"

#include <gtest/gtest.h>

namespace {

/// A figure that changes with the time, which passes by sleeping.
struct Figure {
    std::function<std::uint64_t(double ms)> at;
    double now = 0.0;
    int readings = 0;

    std::uint64_t Settle() {
        ReadingSteps steps;
        steps.read = [this] {
            ++readings;
            return at(now);
        };
        steps.sleep = [this](int milliseconds) { now += milliseconds; };
        steps.elapsed_ms = [this] { return now; };
        return ReadSettled(steps);
    }
};

TEST(ReadSettled, TakesTwoReadingsOfAStableValue) {
    Figure figure{[](double) { return 7; }};
    EXPECT_EQ(figure.Settle(), 7U);
    EXPECT_EQ(figure.readings, 2);
    EXPECT_EQ(figure.now, kReadingIntervalMs);
}

TEST(ReadSettled, ContinuesWhileTheValueFalls) {
    Figure figure{[](double ms) { return ms < 30 ? static_cast<std::uint64_t>(100 - ms) : 70; }};
    EXPECT_EQ(figure.Settle(), 70U);
    EXPECT_LT(figure.now, 60);
}

TEST(ReadSettled, EndsAtTheLimit) {
    Figure figure{[](double ms) { return static_cast<std::uint64_t>(ms); }};
    const std::uint64_t last = figure.Settle();
    EXPECT_EQ(last, static_cast<std::uint64_t>(figure.now));
    EXPECT_LE(figure.now, kLongestSettlingMs);
    EXPECT_GT(figure.now, kLongestSettlingMs - 2 * kReadingIntervalMs);
}

TEST(ReadSettled, ReadsOnceWhenTheTimeIsUp) {
    Figure figure{[](double) { return 5; }, kLongestSettlingMs};
    EXPECT_EQ(figure.Settle(), 5U);
    EXPECT_EQ(figure.readings, 1);
}

}  // namespace
