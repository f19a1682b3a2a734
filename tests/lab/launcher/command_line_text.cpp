#include "tests/lab/launcher/command_line_text.h"

namespace lab {

std::wstring QuotedArgument(std::wstring_view argument) {
    std::wstring quoted = L"\"";
    std::size_t backslashes = 0;
    for (const wchar_t character : argument) {
        if (character == L'"') {
            // Backslashes before a quote count as escapes, so each is doubled; one more escapes the quote.
            quoted.append(backslashes + 1, L'\\');
        }
        backslashes = character == L'\\' ? backslashes + 1 : 0;
        quoted += character;
    }
    quoted.append(backslashes, L'\\');
    return quoted + L'"';
}

}  // namespace lab
