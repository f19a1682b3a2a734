// The video memory in use when nothing of what was released before is still counted.
#pragma once

#include <cstdint>

struct ID3D11Device;
struct ID3D11DeviceContext;
struct IDXGIAdapter1;

/// Bytes of the memory local to `adapter` that this process uses; 0 when that cannot be told. Direct3D 11
/// frees what was released some time after the next flush: unbinds everything from `context`, the immediate
/// one of `device`, waits for the GPU to come to the end of its work and for the figure to stand still. All
/// of it takes 100 ms at most.
std::uint64_t SettledVideoMemory(ID3D11Device& device, ID3D11DeviceContext& context, IDXGIAdapter1* adapter);
