// The report section WHAT VISTREL ITSELF LOGGED LAST RUN.
#pragma once

#include <istream>
#include <string>

/// Quotes the lines of the product's log that show what decided, in its last run, whether it produced depth.
void ReportProductLog();

/// Prints the lines of ReportProductLog; `log` is null when there is no log at `path`.
void PrintProductLog(const std::string& path, std::istream* log);
