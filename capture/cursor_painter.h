// The mouse pointer, which desktop duplication does not include in its images.
#pragma once

#include <d3d11.h>

/// Draws the pointer, if it is shown now, on `texture`, whose top-left corner is at (`left`, `top`) of the
/// desktop. Does nothing on a texture that GDI cannot draw on.
void DrawCursorOn(ID3D11Texture2D* texture, int left, int top);
