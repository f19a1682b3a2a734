#include "tests/bundle/report_comparison.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::string Header(const std::string& title) {
    return "== " + title + " " + std::string(62 - title.size(), '=') + "\n";
}

const std::string kExpected = "Running from: <install>\n" + Header("MACHINE") + "CPU : <cpu>\n" +
                              Header("GPUs") + "GPU 0 : one\nGPU 1 : two\n";

TEST(ReportComparison, IgnoresLinesThatDescribeTheTestMachine) {
    const std::string actual = "Running from: C:\\t\\tool\r\n" + Header("MACHINE") +
                               "CPU : another\r\nRAM\r\n" + Header("GPUs") + "GPU 0 : one\r\nGPU 1 : two\r\n";
    EXPECT_THAT(ReportDifferences(kExpected, actual, "C:\\t\\tool"), IsEmpty());
}

TEST(ReportComparison, ListsTheLinesThatDiffer) {
    const std::string actual =
        "Running from: D:\\\r\n" + Header("MACHINE") + Header("GPUs") + "GPU 0 : one\r\n";
    EXPECT_THAT(ReportDifferences(kExpected, actual, "C:\\t"),
                ElementsAre("- Running from: <install>", "+ Running from: D:\\", "- GPU 1 : two"));
}

TEST(ReportComparison, ListsAMissingTitleOfTheMachineToo) {
    const std::string actual = "Running from: C:\\t\n" + Header("GPUs") + "GPU 0 : one\nGPU 1 : two\n";
    EXPECT_THAT(ReportDifferences(kExpected, actual, "C:\\t"), testing::Not(IsEmpty()));
}

std::string WholeReport() {
    std::string report = "Vistrel diagnostic report v1.0\n";
    for (const char* title :
         {"PART 1 - BASELINE, NOTHING ELSE RUNNING", "WHAT ELSE WAS RUNNING DURING THIS TEST", "MACHINE",
          "GPUs", "DISPLAYS  (this is what the warp resolution comes from)", "PER-APP GPU OVERRIDES",
          "INJECTED INTO VISTREL'S OWN FOLDER", "VISTREL SETTINGS IN EFFECT", "VISTREL SETTINGS, VERBATIM",
          "HEADSET / OPENXR", "BENCHMARK SETUP", "SCREEN CAPTURE", "DEPTH MODEL INFERENCE", "VERDICT"}) {
        report += "\n" + Header(title) + "line\n";
    }
    return report;
}

TEST(WholeReport, HasNothingMissing) {
    EXPECT_THAT(WhatIsMissing(WholeReport()), IsEmpty());
}

TEST(WholeReport, NamesAMissingSection) {
    std::string report = WholeReport();
    report.replace(report.find("== GPUs"), 7, "== XXXX");
    EXPECT_THAT(WhatIsMissing(report), ElementsAre("no section \"GPUs\" at its place"));
}

TEST(WholeReport, WasNotCutShort) {
    const std::string closing =
        "!! THIS RUN WAS CUT SHORT in the section \"GPUs\": the program aborted. Whatever would follow is "
        "missing.";
    EXPECT_THAT(WhatIsMissing(WholeReport() + closing + "\n"), ElementsAre(closing));
}

}  // namespace
