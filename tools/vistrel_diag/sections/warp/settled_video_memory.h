// The video memory in use, once memory released earlier is no longer counted.
#pragma once

#include <cstdint>

struct ID3D11Device;
struct ID3D11DeviceContext;
struct IDXGIAdapter1;

/// Bytes of the memory local to `adapter` that this process uses; 0 when that is unknown. Direct3D 11 frees
/// released resources some time after the next flush. So this unbinds everything from `context`, the
/// immediate context of `device`, waits until the GPU has finished its work, and waits until the figure is
/// stable. All of it takes 100 ms at most.
std::uint64_t SettledVideoMemory(ID3D11Device& device, ID3D11DeviceContext& context, IDXGIAdapter1* adapter);
