// Text in the fixed-size arrays of Windows' structures.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string>

namespace lab {

/// Puts the text into an array full of zeros. One that fills the array is not terminated: Windows does not
/// promise it.
template <std::size_t Size>
void FillText(const std::u16string& text, wchar_t (&array)[Size]) {
    std::copy_n(text.begin(), std::min(text.size(), Size), array);
}

}  // namespace lab
