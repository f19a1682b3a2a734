// The picture on the simulated desktop.
#pragma once

#include <cstdint>
#include <vector>

#include "tests/lab/machine/scenario.h"

namespace lab {

/// Bytes of one texel: 8 for 16-bit float, else 4.
std::uint32_t BytesPerTexel(PixelFormat format);

/// The test picture, rows without padding. At column x and row y it is, for the even pictures, red = x, green
/// = y and blue = x + y, each kept to 8 bits, alpha 255; the odd ones have blue inverted. In 16-bit float
/// each colour is that value divided by 255.
std::vector<std::uint8_t> TestPicture(Size size, PixelFormat format, bool odd);

#ifdef _WIN32
/// The real desktop's pixels from (left, top) on, as BGRA rows without padding; black outside the desktop.
std::vector<std::uint8_t> RealDesktopPicture(int left, int top, Size size);
#endif

}  // namespace lab
