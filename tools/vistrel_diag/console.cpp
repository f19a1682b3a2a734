#include "tools/vistrel_diag/console.h"

#include <array>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <string>

namespace {

/// Reads on to the end of the current input line, so that what is left of it cannot answer a later prompt.
void DiscardRestOfLine() {
    int character = 0;
    do {
        character = std::getc(stdin);
    } while (character != EOF && character != '\n');
}

}  // namespace

void ConsolePrint(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    const std::string text = FormatTextV(format, arguments);
    va_end(arguments);
    std::fwrite(text.data(), 1, text.size(), stdout);
}

void FlushConsole() {
    std::fflush(stdout);
}

bool AskContinue(const char* question) {
    ConsolePrint("\n%s\n  [Enter] continue     [s] then Enter to skip\n> ", question);
    FlushConsole();
    std::array<char, 64> answer = {};
    if (std::fgets(answer.data(), static_cast<int>(answer.size()), stdin) == nullptr) {
        return true;
    }
    if (std::strlen(answer.data()) == answer.size() - 1 && answer[answer.size() - 2] != '\n') {
        DiscardRestOfLine();
    }
    return answer[0] != 's' && answer[0] != 'S';
}

void WaitForEnter() {
    FlushConsole();
    std::getc(stdin);
}
