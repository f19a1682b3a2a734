// Reports as data: one JSON object a line, or one row of CSV. docs/report-data.md names every field.
#pragma once

#include <string>
#include <string_view>

#include "tools/vistrel_report/facts.h"
#include "tools/vistrel_report/findings.h"

/// Changes whenever a field changes its name or meaning.
inline constexpr int kSchema = 1;

/// One line with its line feed. What may name a person is left out unless `with_personal_data`.
std::string JsonLine(const Facts& facts, const Findings& findings, bool with_personal_data);

/// The first row, and one for a report, each with its line end (CR LF, as RFC 4180 has it).
std::string CsvHead(bool with_personal_data);
std::string CsvRow(const Facts& facts, const Findings& findings, bool with_personal_data);

/// A text as a cell: what a spreadsheet would take for a formula begins with an apostrophe, and quotes where
/// they are needed.
std::string CsvCell(std::string_view text);
