// The bytes of a file as UTF-8.
#pragma once

#include <string>

/// What was found about a file while its text was decoded.
struct TextEncoding {
    bool utf16 = false;
    bool ill_formed = false;  ///< not all of it is valid UTF-8, or valid UTF-16 for a UTF-16 file
};

/// The bytes of a file as UTF-8, without a byte order mark. UTF-16 is recognised with and without one; an
/// unpaired surrogate becomes U+FFFD. Ill-formed UTF-8 is left unchanged.
std::string DecodedText(std::string bytes, TextEncoding& encoding);
