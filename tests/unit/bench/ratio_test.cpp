#include "bench/ratio.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <vector>

namespace {

/// A pair each time it is called, whose ratios are these in turn, again and again.
auto PairsOf(const std::vector<double>& ratios) {
    return [ratios, next = std::size_t{0}]() mutable { return ratios[next++ % ratios.size()]; };
}

TEST(MiddleOf, IsTheMiddleOneOfAnOddCount) {
    EXPECT_EQ(MiddleOf({3.0, 1.0, 2.0}, 0.1).ratio, 2.0);
}

TEST(MiddleOf, IsBetweenTheMiddleTwoOfAnEvenCount) {
    EXPECT_EQ(MiddleOf({4.0, 1.0, 2.0, 3.0}, 0.1).ratio, 2.5);
}

TEST(MiddleOf, ReportsHowAccurateItIs) {
    std::vector<double> ratios;
    for (int ratio = 1; ratio <= 101; ++ratio) {
        ratios.push_back(ratio);
    }
    // Of 101 ratios the 41st and the 61st hold the true middle, at 95 %.
    EXPECT_DOUBLE_EQ(MiddleOf(ratios, 0.2).give, 10.0 / 51.0);
    EXPECT_TRUE(MiddleOf(ratios, 0.2).steady);
    EXPECT_FALSE(MiddleOf(ratios, 0.19).steady);
}

TEST(TakePairs, StopsAtTheMinimumWhenTheyAgree) {
    const MiddleRatio middle = TakePairs({0.01, 9, 45}, PairsOf({1.5}));
    EXPECT_EQ(middle.pairs, 9U);
    EXPECT_EQ(middle.ratio, 1.5);
    EXPECT_TRUE(middle.steady);
}

TEST(TakePairs, TakesMoreWhenTheyVary) {
    const MiddleRatio middle = TakePairs({0.02, 6, 1000}, PairsOf({0.9, 1.0, 1.0, 1.0, 1.1}));
    EXPECT_GT(middle.pairs, 6U);
    EXPECT_LT(middle.pairs, 1000U);
    EXPECT_TRUE(middle.steady);
}

TEST(TakePairs, StopsAtTheMaximum) {
    const MiddleRatio middle = TakePairs({0.01, 9, 20}, PairsOf({0.5, 1.5}));
    EXPECT_EQ(middle.pairs, 20U);
    EXPECT_FALSE(middle.steady);
}

TEST(TurnAbout, RunsBothEquallyOften) {
    int subjects = 0;
    int baselines = 0;
    const Comparison times = TurnAbout(
        {0.0, 9, 12}, [&] { ++subjects; }, [&] { ++baselines; });
    EXPECT_EQ(subjects, baselines);
    EXPECT_EQ(times.middle.pairs, static_cast<std::size_t>(subjects));
    EXPECT_GE(subjects, 9);
    EXPECT_LE(subjects, 12);
}

}  // namespace
