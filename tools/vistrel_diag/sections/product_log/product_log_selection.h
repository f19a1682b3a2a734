// Which lines of the product's log show whether it produced depth.
#pragma once

#include <cstddef>
#include <istream>
#include <string>
#include <vector>

/// The most lines of the log that are quoted.
inline constexpr std::size_t kMostQuotedLogLines = 60;

/// The relevant lines of the last run in `log` (a stream in binary mode), in file order: from the line that
/// started the run, but at most the last kMostQuotedLogLines. Empty when no line is relevant. Each line is
/// cut to what fits into a report line. Uses the same small amount of memory for a log of any size.
std::vector<std::string> SelectProductLogLines(std::istream& log);
