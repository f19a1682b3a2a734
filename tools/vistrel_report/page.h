// Reports as one self-contained HTML page: no scripts, nothing loaded, drawings in SVG.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tools/vistrel_report/facts.h"
#include "tools/vistrel_report/findings.h"

/// A report with its findings.
struct JudgedReport {
    Facts facts;
    Findings findings;
};

/// How many reports at most are shown in full on one page.
inline constexpr std::size_t kMostDetailedReports = 50;

/// What is kept of a report when there are too many to show in full: enough for a table and for
/// distributions.
struct ReportSummary {
    std::string name;
    std::string link;  ///< relative link to the report's own page; empty when there is none
    std::string machine_key;
    std::string gpu;  ///< the GPU that was measured; empty when unknown
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

/// The whole document with reports in full: each with its findings, charts and lines; several reports are
/// preceded by a list of them.
std::string DetailedPage(const std::vector<JudgedReport>& reports);

/// The whole document with a table of the reports and the distributions of findings and costs.
std::string OverviewPage(const std::vector<ReportSummary>& reports);
