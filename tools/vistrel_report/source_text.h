// The text of a file as lines, with what its way through mail, consoles and editors did to it taken back.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

#include "tools/vistrel_diag/report/line_reading.h"

/// What was found out about a file while its text was made.
struct TextEncoding {
    bool utf16 = false;
    bool ill_formed = false;  ///< not all of it is UTF-8, or UTF-16 when it is that
};

/// The bytes of a file as UTF-8, without a byte order mark. UTF-16 is recognised with and without one; an
/// unpaired surrogate becomes U+FFFD. Ill-formed UTF-8 is left as it is.
std::string DecodedText(std::string bytes, TextEncoding& encoding);

/// The lines of `text`, which they refer to. Lines end with a line feed, with any carriage returns before it;
/// where there is no line feed at all, with a carriage return. The last line may lack its end.
std::vector<SourceLine> SplitLines(std::string_view text);

/// Cuts the line at `position` of `lines` where lines of a report begin, for text whose line ends are gone.
/// Where it cannot be told, two lines stay one.
void SplitLostLineEnds(std::vector<SourceLine>& lines, std::size_t position);

/// Texts that are put together from several lines, at addresses that stay.
using JoinedTexts = std::deque<std::string>;

/// Takes `prefix` (such as "> ") off every line that begins with it, or with it less its last blanks.
/// Returns how many nonblank lines did not.
std::size_t RemoveQuotePrefix(std::vector<SourceLine>& lines, std::string_view prefix);

/// Whether the console shows this line beside the report.
bool IsConsoleLine(std::string_view line);

/// Whether any of `lines` can only come from a copy of the console.
bool IsConsoleCopy(const std::vector<SourceLine>& lines);

/// Removes what the console shows beside the report: banner, prompts, answers, progress.
void RemoveConsoleLines(std::vector<SourceLine>& lines);

/// Whether the long lines of the report have been broken.
bool IsWrapped(const std::vector<SourceLine>& lines);

/// Joins what was broken. The joined texts are added to `joined`.
void JoinWrappedLines(std::vector<SourceLine>& lines, JoinedTexts& joined);

/// Whether `line` begins as a line of the report begins, so that it cannot go on with the one before.
bool StartsReportLine(std::string_view line);
