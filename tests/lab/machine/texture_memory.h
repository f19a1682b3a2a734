// The video memory that a program's textures take on a simulated adapter, and that is free only some time
// after their release.
#pragma once

#include <windows.h>
// windows.h first
#include <d3d11.h>

#include <cstddef>
#include <cstdint>

namespace lab {

/// Watches devices and contexts of these ones' classes: on adapters whose memory falls late, every texture
/// made is counted. Making one takes scripted time, as filling it does.
void WatchTextureMemory(ID3D11Device* device, ID3D11DeviceContext* context);

/// The bytes that textures take now on the adapter at this position: those that live, those that were
/// released and that no flush followed, and those whose flush was not long enough ago.
std::uint64_t TextureMemory(std::size_t position);

}  // namespace lab
