// Reports as one HTML page that needs nothing else: no script, nothing loaded, drawings in SVG.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "tools/vistrel_report/facts.h"
#include "tools/vistrel_report/findings.h"

/// A report with what the rules make of it.
struct JudgedReport {
    Facts facts;
    Findings findings;
};

/// Up to so many reports are shown in full on one page.
inline constexpr std::size_t kMostDetailedReports = 50;

/// What is left of a report where there are too many to show: enough for a table and for distributions.
struct ReportSummary {
    std::string name;
    std::string link;  ///< to a page of its own, relative; empty: none
    std::string machine_key;
    std::string gpu;  ///< that was measured; empty when unknown
    std::string sentence;
    std::vector<const Rule*> found;
    std::vector<WarpRow> warp;
};
ReportSummary SummaryOf(const JudgedReport& report);

/// The whole document of reports in full: for one report its findings, charts and lines; for several a list
/// of them first.
std::string DetailedPage(const std::vector<JudgedReport>& reports);

/// The whole document of a table of reports and of how findings and costs spread.
std::string OverviewPage(const std::vector<ReportSummary>& reports);
