// The program's exit status.
#pragma once

namespace ExitStatus {
inline constexpr int kRead = 0;
inline constexpr int kNoReport = 1;  ///< an input was not a report, or could not be read
inline constexpr int kUsage = 2;     ///< the command line was wrong, or the page could not be written
}  // namespace ExitStatus
