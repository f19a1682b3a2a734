// The report sink: every line goes to the console at once and is kept for the report file.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "platform/format.h"
#include "tools/vistrel_diag/report/kept_text.h"

namespace Report {

/// The longest line, in bytes; what goes beyond is cut without notice.
inline constexpr std::size_t kLongestLine = 4095;

inline constexpr const char* kFileName = "vistrel_diag_report.txt";

/// One report line, printf-style, given without its line end. Line breaks inside it stay line breaks: a line
/// feed on the console, CR LF in the file.
void Line(const char* format, ...) VISTREL_PRINTF(1, 2);

/// An empty line and a header of 66 columns. `title` is shorter than 62 characters.
void Section(std::string_view title);

/// The run is in the section of that title, whose header has yet to come: for what must be done first to know
/// what stands below it.
void EnterSection(std::string_view title);

/// From now on `listener` is called whenever a section is entered, on the thread that enters it; null:
/// nobody.
void SetSectionListener(void (*listener)());

/// Everything kept so far, with the line ends of the file (CR LF). Another thread may read it while lines are
/// added.
const KeptText& Text();

/// Whether a section has said anything below its header. Another thread may ask.
bool HasFindings();

/// The title of the section that was entered last; empty before the first. Never null, valid for the whole
/// run.
const char* CurrentSection();

/// Where the report file of a tool in `tool_folder` (UTF-8; the current directory when empty) lies, in UTF-8.
std::string FilePath(std::string_view tool_folder);

/// What became of the report file.
struct WrittenFile {
    bool opened = false;
    bool whole = false;  ///< all of the text is in it
    std::string path;    ///< UTF-8; where the file was to be written, also when it could not be opened
};

/// Writes everything kept so far to FilePath(tool_folder), replacing an older file, and tells the person at
/// the console where it is, that it could not be opened, or that it could not be written whole.
WrittenFile WriteFile(std::string_view tool_folder);

}  // namespace Report
