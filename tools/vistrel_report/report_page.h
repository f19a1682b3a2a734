// Reports in full as one self-contained HTML page: no scripts, nothing loaded, drawings in SVG.
#pragma once

#include <cstddef>
#include <string>
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

/// The whole document with reports in full: each with its findings, charts and lines; several reports are
/// preceded by a list of them.
std::string DetailedPage(const std::vector<JudgedReport>& reports);
