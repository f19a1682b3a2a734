// Many reports as one self-contained HTML page: how findings, costs and rates spread, and a table of the
// reports.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tools/vistrel_report/report_page.h"

/// What is kept of a report when there are too many to show in full: enough for a table and for
/// distributions.
struct ReportSummary {
    std::string name;
    std::string link;         ///< relative link to the report's own page; empty when there is none
    std::string machine_key;  ///< empty when the report does not tell the machine
    std::string gpu;          ///< the GPU that was measured; empty when unknown
    std::string sentence;
    std::vector<const Rule*> found;
    bool trusted = true;  ///< nothing says that its figures are not to be trusted
    /// Figures with what they are of: at most kMostFiguresOfReport of each kind.
    std::vector<std::pair<std::string, double>> warp_ms;   ///< of a size
    std::vector<std::pair<std::string, double>> model_ms;  ///< medians, of a model
    std::optional<double> desktop_fps;
    std::optional<double> game_fps;
};
inline constexpr std::size_t kMostFiguresOfReport = 32;

ReportSummary SummaryOf(const JudgedReport& report);

/// The whole document with a table of the reports and the distributions of findings and costs.
std::string OverviewPage(const std::vector<ReportSummary>& reports);
