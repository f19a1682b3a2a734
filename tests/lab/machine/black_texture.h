// Whether what a shader is about to read is black.
#pragma once

#include <windows.h>
// windows.h first
#include <d3d11.h>

namespace lab {

/// Whether the pixel shader's first texture is black but for a hundredth of it at most, such as a pointer.
/// False for one that is not of four byte channels. What was found of a texture is kept: its contents must
/// not change afterwards.
bool ReadsBlackTexture(ID3D11DeviceContext* context);

}  // namespace lab
