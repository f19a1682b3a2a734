#include "platform/letter_case.h"

#include <algorithm>

namespace {

char Lowered(char character) {
    return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a') : character;
}

}  // namespace

std::string AsciiLowered(std::string_view text) {
    std::string lowered(text);
    std::transform(lowered.begin(), lowered.end(), lowered.begin(), Lowered);
    return lowered;
}

bool EqualsIgnoringAsciiCase(std::string_view left, std::string_view right) {
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](char a, char b) { return Lowered(a) == Lowered(b); });
}
