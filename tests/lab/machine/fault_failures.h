// How the functions that the tool calls say that they failed.
#pragma once

#include <cstdint>
#include <string_view>

namespace lab {

struct Failure {
    std::uint64_t result = 0;
    std::uint32_t last_error = 0;  ///< 0: the function does not tell by GetLastError
};

/// DXGI_ERROR_DEVICE_REMOVED: what every method of DXGI and Direct3D answers once the driver is gone.
inline constexpr Failure kMethodFailure = {0x887A0005};

/// Null for a function that cannot fail, or whose failure nobody can act upon.
const Failure* FailureOf(std::string_view name);

}  // namespace lab
