#include "tests/bundle/summary.h"

#include <gtest/gtest.h>

namespace {

TEST(BundleSummary, ListsFailuresAndWhyTheRestWasSkipped) {
    Summary summary;
    summary.Add({"gpu_test",
                 {{"Gpu.IsListed", TestOutcome::Passed, ""},
                  {"Gpu.HasAName", TestOutcome::Failed, "gpu_test.cpp:12: Failure\nempty\n"},
                  {"Gpu.Draws", TestOutcome::Skipped, "there is no GPU"}}});
    summary.Add({"warp_test", {{"Warp.Draws", TestOutcome::Skipped, "there is no GPU"}}});
    EXPECT_EQ(summary.Text("Windows 10.0.19045", {"whole runs in a terminal, which need Linux"}),
              "vistrel_diag test bundle\n"
              "Machine: Windows 10.0.19045\n"
              "\n"
              "Passed:  1\n"
              "Failed:  1\n"
              "Skipped: 2\n"
              "\n"
              "FAILED: gpu_test: Gpu.HasAName\n"
              "    gpu_test.cpp:12: Failure\n"
              "    empty\n"
              "\n"
              "Skipped, because there is no GPU:\n"
              "    gpu_test: Gpu.Draws\n"
              "    warp_test: Warp.Draws\n"
              "\n"
              "Not in this bundle:\n"
              "    whole runs in a terminal, which need Linux\n");
    EXPECT_FALSE(summary.AllPassed());
}

TEST(BundleSummary, FailsWithoutTests) {
    EXPECT_FALSE(Summary().AllPassed());
}

TEST(BundleSummary, PassesWithPassedAndSkippedTests) {
    Summary summary;
    summary.Add({"gpu_test", {{"A.B", TestOutcome::Passed, ""}, {"A.C", TestOutcome::Skipped, "no GPU"}}});
    EXPECT_TRUE(summary.AllPassed());
}

}  // namespace
