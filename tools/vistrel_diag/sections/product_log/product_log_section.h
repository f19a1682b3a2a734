// The report section WHAT VISTREL ITSELF LOGGED LAST RUN.
#pragma once

#include <istream>
#include <string>

/// Quotes from the product's log what decided, in its last run, whether depth happens.
void ReportProductLog();

/// The lines of ReportProductLog; `log` is null when there is no log at `path`.
void PrintProductLog(const std::string& path, std::istream* log);
