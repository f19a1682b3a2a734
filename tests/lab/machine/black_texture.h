// Checks whether the texture that a shader will read is black.
#pragma once

#include <windows.h>
// windows.h first
#include <d3d11.h>

namespace lab {

/// Whether the pixel shader's first texture is black, except for at most a hundredth of it, such as a
/// pointer. False for textures without four byte channels. The result is cached for each texture: its
/// contents must not change afterwards.
bool ReadsBlackTexture(ID3D11DeviceContext* context);

}  // namespace lab
