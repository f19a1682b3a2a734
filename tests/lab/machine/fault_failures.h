// How each function that the tool calls reports a failure.
#pragma once

#include <cstdint>
#include <string_view>

namespace lab {

struct Failure {
    std::uint64_t result = 0;
    std::uint32_t last_error = 0;  ///< 0: the function does not use GetLastError
};

/// DXGI_ERROR_DEVICE_REMOVED: the result of every DXGI and Direct3D method once the driver is gone.
inline constexpr Failure kMethodFailure = {0x887A0005};

/// Null for a function that cannot fail, or whose failure a caller cannot handle.
const Failure* FailureOf(std::string_view name);

}  // namespace lab
