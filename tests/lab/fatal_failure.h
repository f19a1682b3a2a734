// The ways in which a driver, a runtime or a model brings down or stops the program that calls it.
#pragma once

#include <algorithm>
#include <array>
#include <string_view>

namespace lab {

/// "crash" is an access violation, "crash_elsewhere" the same on a thread of its own while the caller waits,
/// "overflow" is one of the stack.
inline constexpr std::array<std::string_view, 5> kFatalFailures = {"crash", "crash_elsewhere", "overflow",
                                                                   "abort", "hang"};

inline bool IsFatalFailure(std::string_view name) {
    return std::find(kFatalFailures.begin(), kFatalFailures.end(), name) != kFatalFailures.end();
}

/// Fails in this way here and now; does not return from any of kFatalFailures.
void FailFatally(std::string_view failure);

}  // namespace lab
