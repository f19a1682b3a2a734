// The headings of a report: which of the lines that look like one are the report's own.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "tools/vistrel_report/report_document.h"

enum class HeadingKind : std::uint8_t { Section, PartOne, PartTwo };

/// A heading at its place in the report.
struct Place {
    std::string_view title;
    HeadingKind kind = HeadingKind::Section;
    SectionId id = SectionId::RunningSoftware;
    ReportPart part = ReportPart::Whole;
};

/// A heading and the place that it is taken for.
struct PlacedHeading {
    std::size_t line = 0;  ///< position among the report's lines
    std::size_t place = 0;
};

struct Headings {
    std::vector<PlacedHeading> own;    ///< in ascending order of both
    std::vector<std::size_t> foreign;  ///< positions of the others
};

/// Finds the report's own headings. What a report quotes can look like one.
Headings FindHeadings(const std::vector<SourceLine>& lines);

const Place& PlaceOf(const PlacedHeading& heading);

/// Whether a report has a heading of that title.
bool IsReportTitle(std::string_view title);

/// The title of a heading line: "== TITLE ====". Empty when the line is none.
std::string_view HeadingTitle(std::string_view line);
