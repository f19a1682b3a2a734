#include "tools/vistrel_diag/report/console.h"

#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <optional>
#include <string>

namespace {

constexpr std::size_t kLongestAnswer = 63;

void WriteToStandardOutput(std::string_view text) {
    std::fwrite(text.data(), 1, text.size(), stdout);
}

ConsoleWriter console_writer = WriteToStandardOutput;

/// One line of the input without its end, cut after kLongestAnswer characters: what goes beyond is taken from
/// the input as well, so that it cannot answer a later prompt. Empty at the end of the input.
std::optional<std::string> ReadAnswer() {
    std::string answer;
    int character = std::getc(stdin);
    if (character == EOF) {
        return std::nullopt;
    }
    for (; character != EOF && character != '\n'; character = std::getc(stdin)) {
        if (answer.size() < kLongestAnswer) {
            answer += static_cast<char>(character);
        }
    }
    return answer;
}

}  // namespace

void SetConsoleWriter(ConsoleWriter writer) {
    console_writer = writer != nullptr ? writer : WriteToStandardOutput;
}

void ConsolePrint(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    const std::string text = FormatTextV(format, arguments);
    va_end(arguments);
    console_writer(text);
}

void FlushConsole() {
    std::fflush(stdout);
}

bool AskContinue(const char* question) {
    ConsolePrint("\n%s\n  [Enter] continue     [s] then Enter to skip\n> ", question);
    FlushConsole();
    const std::string answer = ReadAnswer().value_or("");
    return !answer.starts_with('s') && !answer.starts_with('S');
}

void WaitForEnter() {
    FlushConsole();
    std::getc(stdin);
}
