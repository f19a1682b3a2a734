// The textures that a captured frame passes through, derived from the one that desktop duplication delivers.
#pragma once

#include <d3d11.h>

/// The caller-side copy of the desktop: readable by shaders and, for the cursor, drawable by GDI. Typeless
/// formats become UNORM. A desktop format that GDI cannot draw on keeps the GDI flag nevertheless, so
/// Direct3D refuses to create the texture; only R8G8B8A8 typeless goes without the flag.
D3D11_TEXTURE2D_DESC FrameTextureDescription(const D3D11_TEXTURE2D_DESC& acquired);

/// A CPU-readable texture of the same size and format.
D3D11_TEXTURE2D_DESC CarryTextureDescription(const D3D11_TEXTURE2D_DESC& acquired);

/// A CPU-readable copy of `texture`. Its other flags are dropped: a staging texture cannot be GDI-compatible.
D3D11_TEXTURE2D_DESC ReadBackDescription(const D3D11_TEXTURE2D_DESC& texture);

/// Whether a texel of `format` is four channels of one byte each, the layout in which pictures are kept.
bool HasFourByteChannels(DXGI_FORMAT format);
