// Textures that cannot be mapped for a while.
#pragma once

#include <windows.h>
// windows.h first
#include <d3d11.h>

namespace lab {

/// Watches all contexts of this one's class: Map fails on adapters whose scenario requests it.
void WatchMapping(ID3D11DeviceContext* context);

}  // namespace lab
