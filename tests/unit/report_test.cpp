#include "tools/vistrel_diag/report.h"

#include <gtest/gtest.h>

#include "tests/unit/report_capture.h"

namespace {

TEST(Report, SectionHeaderIsSixtySixColumnsWide) {
    const ReportCapture report;
    Report::Section(std::string(40, 'T'));
    EXPECT_EQ(report.FileText(), "\r\n== " + std::string(40, 'T') + " " + std::string(22, '=') + "\r\n");
}

}  // namespace
