#include "tests/lab/console/console_host.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <utility>

namespace lab {
namespace {

// Modes by the numbers that Windows gives them.
constexpr std::uint32_t kProcessedInput = 0x1;
constexpr std::uint32_t kLineInput = 0x2;
constexpr std::uint32_t kEchoInput = 0x4;
constexpr std::uint32_t kQuickEdit = 0x40;
constexpr std::uint32_t kExtendedFlags = 0x80;
constexpr std::uint32_t kPrivateFlags = 0x20 | kQuickEdit | kExtendedFlags | 0x100;
constexpr std::uint32_t kKnownInputModes = 0x3FF;
constexpr std::uint32_t kVirtualTerminal = 0x4;
constexpr std::uint32_t kKnownOutputModes = 0x1F;

std::string Escaped(std::string_view text) {
    std::string result;
    for (const char character : text) {
        if (character == '\r' || character == '\n') {
            result += character == '\r' ? "\\r" : "\\n";
        } else if (character == '"' || character == '\\') {
            result += std::string("\\") + character;
        } else if (static_cast<unsigned char>(character) < ' ') {
            std::array<char, 8> code = {};
            std::snprintf(code.data(), code.size(), "\\x%02X", static_cast<unsigned>(character));
            result += code.data();
        } else {
            result += character;
        }
    }
    return result;
}

std::string Hexadecimal(std::uint32_t number) {
    std::array<char, 16> text = {};
    std::snprintf(text.data(), text.size(), "0x%X", number);
    return text.data();
}

}  // namespace

ConsoleHost::ConsoleHost(ConsoleScript script, ConsoleSurroundings surroundings)
    : script_(std::move(script)),
      surroundings_(std::move(surroundings)),
      input_mode_(script_.input_mode),
      quick_edit_((script_.input_mode & kQuickEdit) != 0),
      output_mode_(script_.output_mode),
      code_page_(script_.code_page),
      title_(script_.title) {}

void ConsoleHost::Record(const std::string& line) {
    if (!script_.clock_is_shown) {
        surroundings_.record(line);
        return;
    }
    std::array<char, 32> time = {};
    std::snprintf(time.data(), time.size(), "at %.6f s ",
                  static_cast<double>(surroundings_.microseconds()) * 1e-6);
    surroundings_.record(time.data() + line);
}

void ConsoleHost::RecordText(const char* what, std::string_view text) {
    Record(std::string(what) + " \"" + Escaped(text) + "\"");
}

bool ConsoleHost::SetInputMode(std::uint32_t mode) {
    const std::scoped_lock lock(mutex_);
    const bool echo_without_lines = (mode & kEchoInput) != 0 && (mode & kLineInput) == 0;
    if ((mode & ~kKnownInputModes) != 0 || echo_without_lines) {
        return false;
    }
    // A mode without any extended flag does not change quick-edit, and from then on GetConsoleMode does not
    // report it.
    const bool extended = (mode & kPrivateFlags) != 0;
    quick_edit_ = extended ? (mode & kQuickEdit) != 0 : quick_edit_;
    input_mode_ = extended ? mode | kExtendedFlags : mode;
    Record("input mode " + Hexadecimal(input_mode_));
    return true;
}

bool ConsoleHost::SetOutputMode(std::uint32_t mode) {
    const std::scoped_lock lock(mutex_);
    const bool refused = (mode & kVirtualTerminal) != 0 && !script_.virtual_terminal;
    if ((mode & ~kKnownOutputModes) != 0 || refused) {
        return false;
    }
    output_mode_ = mode;
    Record("output mode " + Hexadecimal(mode));
    return true;
}

void ConsoleHost::SetCodePage(std::uint32_t code_page) {
    const std::scoped_lock lock(mutex_);
    code_page_ = code_page;
    Record("code page " + std::to_string(code_page));
}

void ConsoleHost::SetTitle(const std::string& title) {
    const std::scoped_lock lock(mutex_);
    title_ = title;
    RecordText("title", title);
}

void ConsoleHost::Write(std::string_view text) {
    const std::scoped_lock lock(mutex_);
    RecordText("write", text);
    written_ += text;
    GoOnWithScript();
}

bool ConsoleHost::TakeTypedLine() {
    const bool in_lines = (input_mode_ & kLineInput) != 0;
    const std::size_t enter = keys_.find('\r');
    if (keys_.empty() || (in_lines && enter == std::string::npos)) {
        return false;
    }
    line_ = in_lines ? keys_.substr(0, enter) + "\r\n" : keys_;
    keys_.erase(0, in_lines ? enter + 1 : keys_.size());
    if ((input_mode_ & kEchoInput) != 0) {
        RecordText("echo", line_);
        written_ += line_;
    }
    return true;
}

ConsoleRead ConsoleHost::Read(std::size_t size) {
    const std::scoped_lock lock(mutex_);
    interrupted_ = false;
    reading_ = true;
    GoOnWithScript();
    const bool has_line = !line_.empty() || (!interrupted_ && TakeTypedLine());
    reading_ = false;
    if (interrupted_) {
        Record("read interrupted");
        return {ConsoleRead::End::kInterrupted, {}};
    }
    if (!has_line) {
        Record("read after the script");
        return {ConsoleRead::End::kScriptEnded, {}};
    }
    ConsoleRead read;
    read.text = line_.substr(0, size);
    line_.erase(0, size);
    RecordText("read", read.text);
    return read;
}

std::string ConsoleHost::Keys() {
    const std::scoped_lock lock(mutex_);
    GoOnWithScript();
    return keys_;
}

void ConsoleHost::TakeKeys(std::size_t count) {
    const std::scoped_lock lock(mutex_);
    keys_.erase(0, count);
}

void ConsoleHost::FlushKeys() {
    const std::scoped_lock lock(mutex_);
    Record("flush " + std::to_string(keys_.size()));
    keys_.clear();
}

void ConsoleHost::GoOnWithScript() {
    while (next_step_ < script_.steps.size() && Do(script_.steps[next_step_])) {
        ++next_step_;
    }
}

/// False while the step has to wait.
bool ConsoleHost::Do(const ConsoleStep& step) {
    switch (step.kind) {
        case ConsoleStep::Kind::kSees: {
            const std::size_t found = written_.find(step.text, seen_);
            seen_ = found == std::string::npos ? seen_ : found + step.text.size();
            return found != std::string::npos;
        }
        case ConsoleStep::Kind::kReads:
            // The read already has input, so the person waits for another one.
            return reading_ && line_.empty() && keys_.find('\r') == std::string::npos;
        case ConsoleStep::Kind::kTypes:
            keys_ += step.text;
            return true;
        case ConsoleStep::Kind::kCtrlC:
            PressCtrlC();
            return true;
        case ConsoleStep::Kind::kClicks:
            if (quick_edit_) {
                Record("frozen");
            }
            return true;
        case ConsoleStep::Kind::kCloses:
            Record("close");
            surroundings_.raise(ControlEvent::kClose);
            return true;
    }
    return true;
}

void ConsoleHost::PressCtrlC() {
    if ((input_mode_ & kProcessedInput) == 0) {
        keys_ += '\x03';
        return;
    }
    Record("Ctrl-C");
    interrupted_ = reading_;
    surroundings_.raise(ControlEvent::kCtrlC);
}

}  // namespace lab
