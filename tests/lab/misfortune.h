// The ways in which a driver, a runtime or a model brings down the program that calls it.
#pragma once

#include <algorithm>
#include <array>
#include <string_view>

namespace lab {

/// "crash" is an access violation, "crash_elsewhere" the same on a thread of its own while the caller waits,
/// "overflow" is one of the stack.
inline constexpr std::array<std::string_view, 5> kMisfortunes = {"crash", "crash_elsewhere", "overflow",
                                                                 "abort", "hang"};

inline bool IsMisfortune(std::string_view name) {
    return std::find(kMisfortunes.begin(), kMisfortunes.end(), name) != kMisfortunes.end();
}

/// Lets it happen here and now; does not return from any of kMisfortunes.
void Suffer(std::string_view misfortune);

}  // namespace lab
