// Text in the fixed-size arrays of Windows' structures.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string>

namespace lab {

/// Copies the text into an array of zeros. A text that fills the array is not terminated, as on Windows.
template <std::size_t Size>
void FillText(const std::u16string& text, wchar_t (&array)[Size]) {
    std::copy_n(text.begin(), std::min(text.size(), Size), array);
}

}  // namespace lab
