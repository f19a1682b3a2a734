// The simulated DXGI factory and adapters.
#pragma once

#include <windows.h>
// windows.h first
#include <dxgi1_4.h>

#include <cstddef>
#include <optional>

namespace lab {

/// Replaces the function of this name.
HRESULT WINAPI SimulatedCreateDXGIFactory1(REFIID wanted, void** factory);

/// A new adapter object for the adapter at this position of the scenario.
IDXGIAdapter1* NewAdapter(std::size_t position);

/// The position of a simulated adapter in the scenario; empty for every other object.
std::optional<std::size_t> AdapterPosition(IUnknown* adapter);

}  // namespace lab
