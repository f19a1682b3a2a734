// Checks that a duplicated frame is copied only while the program holds it.
#pragma once

#include <windows.h>
// windows.h first
#include <d3d11.h>

namespace lab {

/// Marks a texture as a duplicated frame that the program holds, or has released.
void MarkFrame(ID3D11Texture2D* texture, bool held);

/// Watches the copies on all contexts of this one's class. Counts copies from a released frame or to another
/// device's texture, and copies between textures of different sizes, which copy nothing.
void GuardFrames(ID3D11DeviceContext* context);

}  // namespace lab
