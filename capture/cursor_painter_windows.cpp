#include "capture/cursor_painter.h"

#include <dxgi.h>
#include <wrl/client.h>

using Microsoft::WRL::ComPtr;

void DrawCursorOn(ID3D11Texture2D* texture, int left, int top) {
    ComPtr<IDXGISurface1> surface;
    HDC device_context = nullptr;
    if (FAILED(texture->QueryInterface(IID_PPV_ARGS(&surface))) ||
        FAILED(surface->GetDC(FALSE, &device_context))) {
        return;
    }
    CURSORINFO cursor = {};
    cursor.cbSize = sizeof(cursor);
    // A visible pointer may have no shape: touch input suppresses it that way.
    if (GetCursorInfo(&cursor) && (cursor.flags & CURSOR_SHOWING) != 0 && cursor.hCursor != nullptr) {
        DrawIconEx(device_context, cursor.ptScreenPos.x - left, cursor.ptScreenPos.y - top, cursor.hCursor, 0,
                   0, 0, nullptr, DI_NORMAL | DI_COMPAT);
    }
    surface->ReleaseDC(nullptr);
}
