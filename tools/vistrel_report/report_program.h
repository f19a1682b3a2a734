// The program after its command line has been parsed.
#pragma once

#include <istream>
#include <ostream>

#include "tools/vistrel_report/report_options.h"

/// Does what the options say. Returns the exit status (exit_status.h). `in` is standard input, errors about
/// unreadable inputs go to `errors`.
int RunReportProgram(const ReportOptions& options, std::istream& in, std::ostream& out, std::ostream& errors);
