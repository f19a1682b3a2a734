// The simulated DXGI outputs.
#pragma once

#include <windows.h>
// windows.h first
#include <dxgi1_2.h>

#include <cstddef>

namespace lab {

/// A new object for the output at this position of the scenario.
IDXGIOutput* NewOutput(std::size_t position);

}  // namespace lab
