#include <windows.h>

#include <cstring>

#include "tests/lab/machine/desktop_picture.h"

namespace lab {

std::vector<std::uint8_t> RealDesktopPicture(int left, int top, Size size) {
    const auto width = static_cast<LONG>(size.width);
    const auto height = static_cast<LONG>(size.height);
    std::vector<std::uint8_t> picture(static_cast<std::size_t>(size.width) * size.height * 4);
    BITMAPINFO info = {};
    info.bmiHeader.biSize = sizeof(info.bmiHeader);
    info.bmiHeader.biWidth = width;
    info.bmiHeader.biHeight = -height;  // Rows from the top down.
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    info.bmiHeader.biCompression = BI_RGB;
    void* bits = nullptr;
    HDC screen = GetDC(nullptr);
    HDC memory = CreateCompatibleDC(screen);
    HBITMAP bitmap = CreateDIBSection(screen, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
    if (bitmap != nullptr) {
        HGDIOBJ previous = SelectObject(memory, bitmap);
        BitBlt(memory, 0, 0, width, height, screen, left, top, SRCCOPY);
        GdiFlush();
        std::memcpy(picture.data(), bits, picture.size());
        SelectObject(memory, previous);
        DeleteObject(bitmap);
    }
    DeleteDC(memory);
    ReleaseDC(nullptr, screen);
    return picture;
}

}  // namespace lab
