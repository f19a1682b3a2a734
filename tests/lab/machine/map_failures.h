// Textures that cannot be mapped for a while.
#pragma once

#include <windows.h>
// windows.h first
#include <d3d11.h>

namespace lab {

/// Watches contexts of this one's class: on adapters whose scenario says so, Map fails.
void WatchMapping(ID3D11DeviceContext* context);

}  // namespace lab
