// Direct3D devices on simulated adapters: devices of the real adapter that know which simulated one they
// belong to.
#pragma once

#include <windows.h>
// windows.h first
#include <d3d11.h>

#include <cstddef>
#include <optional>

namespace lab {

/// Replaces the function of this name.
HRESULT WINAPI SimulatedD3D11CreateDevice(IDXGIAdapter* adapter, D3D_DRIVER_TYPE driver_type,
                                          HMODULE software, UINT flags, const D3D_FEATURE_LEVEL* levels,
                                          UINT level_count, UINT sdk_version, ID3D11Device** device,
                                          D3D_FEATURE_LEVEL* level, ID3D11DeviceContext** context);

/// The position of the adapter that a device was created on; empty for a device that the machine did not
/// create.
std::optional<std::size_t> DeviceAdapterPosition(IUnknown* device);

}  // namespace lab
