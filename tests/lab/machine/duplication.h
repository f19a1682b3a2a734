// Desktop duplication as a scenario plays it.
#pragma once

#include <windows.h>
// windows.h first
#include <dxgi1_2.h>

#include <cstddef>

namespace lab {

/// IDXGIOutput1::DuplicateOutput for the output at this position of the scenario. As on Windows, the device
/// must be on the adapter that drives the output and a process may duplicate an output once at a time
/// (E_INVALIDARG otherwise).
HRESULT DuplicateDesktop(std::size_t output, IUnknown* device, IDXGIOutputDuplication** duplication);

}  // namespace lab
