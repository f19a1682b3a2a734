#include "tools/vistrel_diag/report/console.h"

#include <algorithm>
#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <optional>
#include <string>
#include <utility>

#include "tools/vistrel_diag/report/progress.h"

namespace {

constexpr std::size_t kLongestAnswer = 63;

void WriteToStandardOutput(std::string_view text) {
    std::fwrite(text.data(), 1, text.size(), stdout);
}

struct Screen {
    ConsoleWriter writer = WriteToStandardOutput;
    bool at_line_start = true;
    std::string transient_line;
};

Screen& TheScreen() {
    static Screen screen;
    return screen;
}

/// The text that clears the transient line; the cursor is at its start.
std::string TakeTransientLine() {
    const std::size_t columns = std::exchange(TheScreen().transient_line, {}).size();
    return columns == 0 ? std::string() : std::string(columns, ' ') + "\r";
}

const ConsoleReader*& TheReader() {
    static const ConsoleReader* reader = nullptr;
    return reader;
}

void ForgetTypedAhead() {
    if (TheReader() != nullptr) {
        TheReader()->forget_typed_ahead();
    }
}

bool OutputIsConsole() {
    return TheScreen().writer != WriteToStandardOutput;
}

/// Reads one line of standard input without its end, cut after kLongestAnswer characters. The rest of the
/// line is read and discarded, so that it cannot answer a later prompt. Empty at the end of the input.
std::optional<std::string> ReadStandardInput() {
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
    TheScreen() = Screen();
    if (writer != nullptr) {
        TheScreen().writer = writer;
    }
}

void ConsolePrint(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    const std::string text = FormatTextV(format, arguments);
    va_end(arguments);
    if (text.empty()) {
        return;
    }
    TheScreen().at_line_start = text.back() == '\n' || text.back() == '\r';
    TheScreen().writer(TakeTransientLine() + text);
}

void ShowTransientLine(std::string_view text) {
    Screen& screen = TheScreen();
    if (!OutputIsConsole() || !screen.at_line_start || text == screen.transient_line) {
        return;
    }
    const std::size_t columns_before = screen.transient_line.size();
    screen.transient_line = text;
    std::string line(text);
    line.resize(std::max(text.size(), columns_before), ' ');
    screen.writer(line + "\r");
}

void FlushConsole() {
    std::fflush(stdout);
}

void SetConsoleReader(const ConsoleReader* reader) {
    TheReader() = reader;
}

bool AskContinue(const char* question) {
    Progress::Clear();
    ForgetTypedAhead();
    ConsolePrint("\n%s\n  [Enter] continue     [s] then Enter to skip\n> ", question);
    FlushConsole();
    const std::optional<std::string> line =
        TheReader() != nullptr ? TheReader()->read_line() : ReadStandardInput();
    TheScreen().at_line_start = true;
    const std::string answer = line.value_or("");
    return !answer.starts_with('s') && !answer.starts_with('S');
}

void WaitForEnter(const char* text) {
    Progress::Clear();
    ForgetTypedAhead();
    ConsolePrint("%s", text);
    FlushConsole();
    if (TheReader() != nullptr) {
        TheReader()->read_line();
    } else {
        std::getc(stdin);
    }
}

bool BeginToWatchForEnter() {
    ForgetTypedAhead();
    return TheReader() != nullptr && OutputIsConsole();
}

bool EnterWasPressed() {
    return TheReader() != nullptr && OutputIsConsole() && TheReader()->enter_was_pressed();
}
