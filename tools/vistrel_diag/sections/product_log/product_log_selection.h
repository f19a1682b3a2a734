// Which lines of the product's log decide whether depth happens.
#pragma once

#include <cstddef>
#include <istream>
#include <string>
#include <vector>

/// The most lines of the log that are quoted.
inline constexpr std::size_t kMostQuotedLogLines = 60;

/// The relevant lines of the last run in `log` (a stream in binary mode), in file order: from the line that
/// started the run, but at most the last kMostQuotedLogLines. Empty when no line is relevant. Each line is
/// kept as far as a report line can bear it. Takes the same small memory for a log of any size.
std::vector<std::string> SelectProductLogLines(std::istream& log);
