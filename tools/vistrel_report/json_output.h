// Reports as data: one JSON object per line, or one row of CSV. docs/report-data.md lists every field.
#pragma once

#include <string>
#include <string_view>

#include "tools/vistrel_report/facts.h"
#include "tools/vistrel_report/findings.h"

/// Changes whenever the name or the meaning of a field changes.
inline constexpr int kSchema = 1;

/// One line with its line feed. Data that may identify a person is left out unless `with_personal_data`.
std::string JsonLine(const Facts& facts, const Findings& findings, bool with_personal_data);

/// The header row, and the row of one report, each with its line end (CR LF, by RFC 4180).
std::string CsvHead(bool with_personal_data);
std::string CsvRow(const Facts& facts, const Findings& findings, bool with_personal_data);

/// A text as a cell. A text that a spreadsheet would treat as a formula gets an apostrophe in front; quotes
/// are added where they are needed.
std::string CsvCell(std::string_view text);
