#include "tools/vistrel_diag/sections/product_log/product_log_section.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "tests/unit/support/breaking_stream.h"
#include "tests/unit/support/report_capture.h"

namespace {

std::string Printed(const std::string& bytes) {
    std::istringstream log(bytes);
    const ReportCapture report;
    PrintProductLog("C:\\Users\\Jürgen\\AppData\\Local\\Vistrel\\vistrel_init_log.txt", &log);
    return report.Text();
}

TEST(ProductLogSection, ExplainsHowToProduceAMissingLog) {
    const ReportCapture report;
    PrintProductLog("C:\\Data\\vistrel_init_log.txt", nullptr);
    EXPECT_EQ(report.Text(), R"(No log at C:\Data\vistrel_init_log.txt

This is the single most useful thing to send, and it is off by default. To produce one:
  1. In Vistrel, Debug tab -> turn on "Show Vistrel debug log".
  2. Press Start, let it reach the state you are reporting, press Stop.
  3. Run this tool again - the log will be quoted here.
)");
}

TEST(ProductLogSection, ALogWithoutRelevantLinesSaysSo) {
    const std::string expected =
        "The log exists but carries none of the lines that decide whether depth happens - it is probably "
        "from "
        "a run that never pressed Start.\n";
    EXPECT_EQ(Printed(""), expected);
    EXPECT_EQ(Printed("10:00:00 [INFO ] Initializing D3D11\nFAILED\n"), expected);
}

TEST(ProductLogSection, RelevantLinesAreQuotedUnchangedAfterThePath) {
    EXPECT_EQ(Printed("10:00:00 [INFO ] window opened\r\n"
                      "\t10:00:01 [INFO ] Initializing D3D11: Match found 100%s \r\n"
                      "\r\n"
                      "10:00:02 [WARNING] DirectML is slow"),
              "C:\\Users\\Jürgen\\AppData\\Local\\Vistrel\\vistrel_init_log.txt\n"
              "\n"
              "  \t10:00:01 [INFO ] Initializing D3D11: Match found 100%s \n"
              "  10:00:02 [WARNING] DirectML is slow\n");
}

TEST(ProductLogSection, AReadErrorIsNotReportedAsNoRelevantLines) {
    BreakingStream log;
    const ReportCapture report;
    PrintProductLog("C:\\Data\\vistrel_init_log.txt", &log);
    EXPECT_EQ(report.Text(),
              "C:\\Data\\vistrel_init_log.txt\n\n  !! The file could not be read to its end.\n");
}

TEST(ProductLogSection, ALineTooLongForTheReportIsCut) {
    const std::string line = "ERROR " + std::string(6000, 'e');
    EXPECT_EQ(Printed(line).substr(Printed(line).find("  ERROR")), "  " + line.substr(0, 4093) + "\n");
}

TEST(ProductLogSection, BinaryDataDoesNoHarm) {
    const std::string quoted = Printed(std::string("\xFF\x01 failed\0 unseen\n\0\0DirectML\nERROR\n", 35));
    EXPECT_EQ(quoted.substr(quoted.find("\n\n") + 2), "  \xFF\x01 failed\n  \n  ERROR\n");
}

}  // namespace
