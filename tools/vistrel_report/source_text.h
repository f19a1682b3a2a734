// The text of a file as lines, with changes by mail programs, consoles and editors undone.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

#include "tools/vistrel_diag/report/line_reading.h"

/// The lines of `text`; they refer to its memory. Lines end with a line feed, with any carriage returns
/// before it; when there is no line feed at all, with a carriage return. The last line may lack its end.
std::vector<SourceLine> SplitLines(std::string_view text);

/// Splits the line at `position` of `lines` where lines of a report begin, for text whose line ends are lost.
/// Where that cannot be recognised, two lines stay one.
void SplitLostLineEnds(std::vector<SourceLine>& lines, std::size_t position);

/// Texts joined from several lines; their addresses do not change.
using JoinedTexts = std::deque<std::string>;

/// Removes `prefix` (such as "> ") from every line that begins with it, with or without its trailing blanks.
/// Returns how many nonblank lines did not begin with it.
std::size_t RemoveQuotePrefix(std::vector<SourceLine>& lines, std::string_view prefix);

/// Whether this line is shown by the console but not part of the report.
bool IsConsoleLine(std::string_view line);

/// Whether any of `lines` can only come from a copy of the console.
bool IsConsoleCopy(const std::vector<SourceLine>& lines);

/// Removes what the console shows in addition to the report: banner, prompts, answers, progress.
void RemoveConsoleLines(std::vector<SourceLine>& lines);

/// Whether the long lines of the report have been broken.
bool IsWrapped(const std::vector<SourceLine>& lines);

/// Joins lines that were broken. The joined texts are added to `joined`.
void JoinWrappedLines(std::vector<SourceLine>& lines, JoinedTexts& joined);

/// Whether `line` begins like a line of the report, so that it cannot continue the line before.
bool StartsReportLine(std::string_view line);
