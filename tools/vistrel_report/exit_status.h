// The program's exit status.
#pragma once

namespace ExitStatus {
inline constexpr int kRead = 0;
inline constexpr int kNoReport = 1;  ///< an input was no report, or could not be read
inline constexpr int kUsage = 2;     ///< the options were wrong, or an output was not written
}  // namespace ExitStatus
