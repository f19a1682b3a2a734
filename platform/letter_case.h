// Letter case of ASCII only, independent of any locale. Every other byte, those of non-ASCII letters in UTF-8
// included, stays as it is.
#pragma once

#include <string>
#include <string_view>

/// `text` with A to Z as a to z.
std::string AsciiLowered(std::string_view text);

/// Whether both texts are the same but for the case of ASCII letters.
bool EqualsIgnoringAsciiCase(std::string_view left, std::string_view right);
