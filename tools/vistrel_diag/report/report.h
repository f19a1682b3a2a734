// The report sink: every line goes to the console at once and is kept for the report file.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "platform/format.h"
#include "tools/vistrel_diag/report/kept_text.h"

namespace Report {

/// The longest line, in bytes; a longer line is cut without notice.
inline constexpr std::size_t kLongestLine = 4095;

inline constexpr const char* kFileName = "vistrel_diag_report.txt";

/// Adds one report line, printf-style. The format has no line end. Line breaks inside the line are kept: a
/// line feed on the console, CR LF in the file.
void Line(const char* format, ...) VISTREL_PRINTF(1, 2);

/// Adds an empty line and a header of 66 columns. `title` is shorter than 62 characters.
void Section(std::string_view title);

/// Marks the section of that title as the current one before its header is printed: for work that must be
/// done first to know what the section says.
void EnterSection(std::string_view title);

/// From now on `listener` is called whenever a section is entered, on the thread that enters it; null removes
/// the listener.
void SetSectionListener(void (*listener)());

/// The report's text so far, with the line ends of the file (CR LF). Another thread may read it while lines
/// are added.
const KeptText& Text();

/// Whether any section has a line below its header. May be called from another thread.
bool HasFindings();

/// The title of the section that was entered last; empty before the first. Never null, valid for the whole
/// run.
const char* CurrentSection();

/// The path (UTF-8) of the report file of a tool in `tool_folder` (UTF-8; the current directory when empty).
std::string FilePath(std::string_view tool_folder);

/// What became of the report file.
struct WrittenFile {
    bool opened = false;
    bool whole = false;  ///< all of the text is in it
    std::string path;    ///< UTF-8; where the file was to be written, also when it could not be opened
};

/// Writes the report so far to FilePath(tool_folder), replacing an older file. Prints to the console where
/// the file is, that it could not be opened, or that it could not be written completely.
WrittenFile WriteFile(std::string_view tool_folder);

}  // namespace Report
