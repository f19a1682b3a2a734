// The program behind its command line.
#pragma once

#include <istream>
#include <ostream>

#include "tools/vistrel_report/report_options.h"

/// Does what the options say. Returns the exit status (exit_status.h). `in` is standard input, what cannot be
/// read is told on `errors`.
int RunReportProgram(const ReportOptions& options, std::istream& in, std::ostream& out, std::ostream& errors);
