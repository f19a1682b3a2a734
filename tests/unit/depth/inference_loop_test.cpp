#include "depth/inference_loop.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>
#include <string>

namespace {

using ::testing::DoubleEq;
using ::testing::ElementsAre;

/// A clock that returns `readings` one after the other, and steps that record the order of calls.
class ScriptedRuns {
  public:
    ScriptedRuns(std::vector<std::int64_t> readings, std::int64_t frequency)
        : readings_(std::move(readings)), frequency_(frequency) {}

    TickClock Clock() {
        return {[this] {
                    trace_ += 'c';
                    return readings_.at(next_reading_++);
                },
                frequency_};
    }

    InferenceSteps Steps() {
        return {[this] { trace_ += 'w'; },
                [this] {
                    trace_ += 'r';
                    if (++runs_ == failing_run_) {
                        throw std::runtime_error("the run failed");
                    }
                },
                [this] { trace_ += 'f'; }};
    }

    void FailInRun(int number) { failing_run_ = number; }
    const std::string& Trace() const { return trace_; }

  private:
    std::vector<std::int64_t> readings_;
    std::int64_t frequency_;
    std::size_t next_reading_ = 0;
    int runs_ = 0;
    int failing_run_ = 0;
    std::string trace_;
};

TEST(TimeIterations, RecordsMillisecondsOfTheRunsAfterThreeWarmUps) {
    // Three slow warm-ups, then runs of 10, 25 and 5 ticks at 10,000 a second.
    ScriptedRuns script({0, 5000, 5000, 9000, 9000, 9900, 10000, 10010, 10100, 10125, 20000, 20005}, 10000);
    EXPECT_THAT(TimeIterations(3, script.Clock(), script.Steps()),
                ElementsAre(DoubleEq(1.0), DoubleEq(2.5), DoubleEq(0.5)));
}

TEST(TimeIterations, ReadsTheClockOnlyAroundTheRun) {
    ScriptedRuns script({0, 1, 2, 3, 4, 5, 6, 7}, 1000);
    TimeIterations(1, script.Clock(), script.Steps());
    EXPECT_EQ(script.Trace(), "wcrcfwcrcfwcrcfwcrcf");
}

TEST(TimeIterations, RunsOnlyWarmUpsWhenNoRunIsAskedFor) {
    ScriptedRuns script({0, 1, 2, 3, 4, 5}, 1000);
    EXPECT_TRUE(TimeIterations(0, script.Clock(), script.Steps()).empty());
    EXPECT_EQ(script.Trace(), "wcrcfwcrcfwcrcf");
}

TEST(TimeIterations, RunsNothingForANegativeCountBeyondTheWarmUps) {
    ScriptedRuns script({}, 1000);
    EXPECT_TRUE(TimeIterations(-5, script.Clock(), script.Steps()).empty());
    EXPECT_EQ(script.Trace(), "");
}

TEST(TimeIterations, PropagatesExceptionsOfARun) {
    ScriptedRuns script({0, 1, 2, 3}, 1000);
    script.FailInRun(2);
    EXPECT_THROW(TimeIterations(15, script.Clock(), script.Steps()), std::runtime_error);
    EXPECT_EQ(script.Trace(), "wcrcfwcr");
}

TEST(TimeIterations, IsExactOnACounterThatHasRunForYears) {
    const std::int64_t start = std::int64_t{1} << 60;
    std::vector<std::int64_t> readings(6, 0);
    readings.insert(readings.end(), {start, start + 123});
    ScriptedRuns script(readings, 10'000'000);
    EXPECT_THAT(TimeIterations(1, script.Clock(), script.Steps()), ElementsAre(DoubleEq(0.0123)));
}

TEST(FiguresOf, TakesTheMiddleOneOfAnOddCount) {
    const auto figures = FiguresOf({5.0, 1.0, 3.0});
    ASSERT_TRUE(figures);
    EXPECT_EQ(figures->median, 3.0);
    EXPECT_EQ(figures->min, 1.0);
    EXPECT_EQ(figures->max, 5.0);
}

TEST(FiguresOf, TakesTheUpperMiddleOneOfAnEvenCount) {
    const auto figures = FiguresOf({4.0, 1.0, 3.0, 2.0});
    ASSERT_TRUE(figures);
    EXPECT_EQ(figures->median, 3.0);
}

TEST(FiguresOf, RepeatsASingleValue) {
    const auto figures = FiguresOf({7.5});
    ASSERT_TRUE(figures);
    EXPECT_EQ(figures->median, 7.5);
    EXPECT_EQ(figures->min, 7.5);
    EXPECT_EQ(figures->max, 7.5);
}

TEST(FiguresOf, IsEmptyWithoutValues) {
    EXPECT_FALSE(FiguresOf({}));
}

TEST(MakeInputPattern, FollowsTheMultiplicationModulo1000) {
    const std::vector<float> pattern = MakeInputPattern(5);
    // 2654435761 * i mod 1000, in thousandths.
    EXPECT_THAT(pattern, ElementsAre(0.0F, 0.761F, 0.522F, 0.283F, 0.044F));
}

TEST(MakeInputPattern, DoesNotWrapAtThirtyTwoBits) {
    const std::vector<float> pattern = MakeInputPattern(3 * 518 * 924);
    // (1'435'895 * 2654435761) mod 1000 = (895 * 761) mod 1000 = 95.
    EXPECT_EQ(pattern.at(1'435'895), 0.095F);
    for (const float value : pattern) {
        ASSERT_GE(value, 0.0F);
        ASSERT_LE(value, 0.999F);
    }
}

TEST(IsHalfPrecisionModel, IsTrueForFp16AnywhereInThePath) {
    EXPECT_TRUE(IsHalfPrecisionModel(L"vistrel/virtual_monitor/vda_s_ring_518x294_fp16_R15.onnx"));
    EXPECT_TRUE(IsHalfPrecisionModel(L"fp16/model.onnx"));
    EXPECT_TRUE(IsHalfPrecisionModel(L"xfp16x"));
    EXPECT_FALSE(IsHalfPrecisionModel(L"model_FP16.onnx"));
    EXPECT_FALSE(IsHalfPrecisionModel(L"model_fp32.onnx"));
    EXPECT_FALSE(IsHalfPrecisionModel(L""));
}

TEST(IsUsableInputSize, IsTrueForEveryPictureUpToTheLimit) {
    EXPECT_TRUE(IsUsableInputSize(1, 1));
    EXPECT_TRUE(IsUsableInputSize(924, 518));
    EXPECT_TRUE(IsUsableInputSize(8192, 8192));
    EXPECT_TRUE(IsUsableInputSize(kMostInputPixels, 1));
    EXPECT_FALSE(IsUsableInputSize(8192, 8193));
    EXPECT_FALSE(IsUsableInputSize(kMostInputPixels + 1, 1));
    EXPECT_FALSE(IsUsableInputSize(1, kMostInputPixels + 1));
}

TEST(IsUsableInputSize, IsFalseWhenTheProductOverflows) {
    EXPECT_FALSE(IsUsableInputSize(std::int64_t{1} << 32, std::int64_t{1} << 32));
    EXPECT_FALSE(IsUsableInputSize(std::int64_t{1} << 62, 8));
    EXPECT_FALSE(IsUsableInputSize(8, std::int64_t{1} << 62));
    EXPECT_FALSE(IsUsableInputSize(std::numeric_limits<std::int64_t>::max(),
                                   std::numeric_limits<std::int64_t>::max()));
}

TEST(IsUsableInputSize, IsFalseWithoutPixels) {
    EXPECT_FALSE(IsUsableInputSize(0, 518));
    EXPECT_FALSE(IsUsableInputSize(518, 0));
    EXPECT_FALSE(IsUsableInputSize(-518, -518));
}

}  // namespace
