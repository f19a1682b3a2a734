#include "tests/bundle/gtest_output.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

TEST(GtestOutput, ReadsEveryTestWithItsOutcome) {
    const auto results = ReadGtestOutput(
        "Running main() from gmock_main.cc\r\n"
        "[----------] 4 tests from Gpu\r\n"
        "[ RUN      ] Gpu.IsListed\r\n"
        "[       OK ] Gpu.IsListed (0 ms)\r\n"
        "[ RUN      ] Gpu.HasAName\r\n"
        "gpu_test.cpp:12: Failure\r\n"
        "[  FAILED  ] Gpu.HasAName (1 ms)\r\n"
        "[ RUN      ] Gpu.Draws\r\n"
        "gpu_test.cpp:20: Skipped\r\n"
        "there is no GPU\r\n"
        "\r\n"
        "[  SKIPPED ] Gpu.Draws (0 ms)\r\n"
        "[ RUN      ] All/Gpu.Sizes/1\r\n"
        "[  FAILED  ] All/Gpu.Sizes/1, where GetParam() = 2 (0 ms)\r\n"
        "[----------] 4 tests from Gpu (1 ms total)\r\n"
        "[  FAILED  ] 2 tests, listed below:\r\n"
        "[  FAILED  ] Gpu.HasAName\r\n");
    ASSERT_EQ(results.size(), 4U);
    EXPECT_EQ(results[0].name, "Gpu.IsListed");
    EXPECT_EQ(results[0].outcome, TestOutcome::Passed);
    EXPECT_EQ(results[1].outcome, TestOutcome::Failed);
    EXPECT_EQ(results[1].message, "gpu_test.cpp:12: Failure\n");
    EXPECT_EQ(results[2].outcome, TestOutcome::Skipped);
    EXPECT_EQ(results[2].message, "there is no GPU");
    EXPECT_EQ(results[3].name, "All/Gpu.Sizes/1");
    EXPECT_EQ(results[3].outcome, TestOutcome::Failed);
}

TEST(GtestOutput, NamesTheTestInWhichTheProgramCrashed) {
    const auto results = ReadGtestOutput("[ RUN      ] Gpu.Draws\nabout to draw");
    ASSERT_EQ(results.size(), 1U);
    EXPECT_EQ(results[0].outcome, TestOutcome::Failed);
    EXPECT_EQ(results[0].message, "about to draw\nThe program ended in this test.\n");
}

TEST(GtestOutput, MayFollowTextWithoutALineEnd) {
    const auto results = ReadGtestOutput("[ RUN      ] A.B\ndots...[       OK ] A.B (0 ms)\n");
    ASSERT_EQ(results.size(), 1U);
    EXPECT_EQ(results[0].outcome, TestOutcome::Passed);
}

TEST(GtestOutput, IsEmptyWithoutATest) {
    EXPECT_TRUE(ReadGtestOutput("").empty());
    EXPECT_TRUE(ReadGtestOutput("cannot start\n").empty());
}

}  // namespace
