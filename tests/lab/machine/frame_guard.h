// Sees to it that a duplicated frame is copied only while the program holds it.
#pragma once

#include <windows.h>
// windows.h first
#include <d3d11.h>

namespace lab {

/// Marks a texture as a duplicated frame that the program holds now, or has given back.
void MarkFrame(ID3D11Texture2D* texture, bool held);

/// Watches the copies made on contexts of this one's class. A copy from a frame that was given back, or to
/// another device's texture, is counted, and so is one between textures of two sizes, which copies nothing.
void GuardFrames(ID3D11DeviceContext* context);

}  // namespace lab
