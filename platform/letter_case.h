// Letter case of ASCII only, independent of any locale. Every other byte stays unchanged, including those of
// non-ASCII letters in UTF-8.
#pragma once

#include <string>
#include <string_view>

/// `text` with A to Z replaced by a to z.
std::string AsciiLowered(std::string_view text);

/// Whether both texts are equal except for the case of ASCII letters.
bool EqualsIgnoringAsciiCase(std::string_view left, std::string_view right);
