// The video memory that a program's textures use on a simulated adapter. It is freed only some time after
// their release.
#pragma once

#include <windows.h>
// windows.h first
#include <d3d11.h>

#include <cstddef>
#include <cstdint>

namespace lab {

/// Watches devices and contexts of these classes: every texture is counted on adapters that free memory late.
/// Creating one takes scripted time, as filling it does.
void WatchTextureMemory(ID3D11Device* device, ID3D11DeviceContext* context);

/// The bytes that textures use on the adapter at this position: those that exist, those released without a
/// flush since, and those whose flush was not long enough ago.
std::uint64_t TextureMemory(std::size_t position);

}  // namespace lab
