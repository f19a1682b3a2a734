// The ways in which a driver, a runtime or a model crashes or blocks the program that calls it.
#pragma once

#include <algorithm>
#include <array>
#include <string_view>

namespace lab {

/// "crash" is an access violation, "crash_elsewhere" the same on a thread of its own while the caller waits,
/// "overflow" is one of the stack, "abort" the C runtime's of mingw, "ucrt_abort" that of Windows' own
/// runtime, "fail_fast" and "heap_corruption" are ends past every handler, "terminate" is TerminateProcess
/// with exit code 42, "cpp_exception" one of Microsoft's compiler, "overflow_of_integer" INT_MIN / -1.
inline constexpr std::array<std::string_view, 11> kFatalFailures = {
    "crash",     "crash_elsewhere", "overflow",  "abort",         "ucrt_abort",
    "fail_fast", "heap_corruption", "terminate", "cpp_exception", "overflow_of_integer",
    "hang"};

/// Names the event that a process that hangs on purpose sets, if another process waits for it.
inline constexpr const wchar_t* kHangVariable = L"VISTREL_LAB_HANG";

inline bool IsFatalFailure(std::string_view name) {
    return std::find(kFatalFailures.begin(), kFatalFailures.end(), name) != kFatalFailures.end();
}

/// Fails in this way immediately; does not return for any of kFatalFailures.
void FailFatally(std::string_view failure);

}  // namespace lab
