// A console and the person who uses it, as described in a text file. Includes no Windows header.
#pragma once

#include <cstdint>
#include <istream>
#include <stdexcept>
#include <string>
#include <vector>

namespace lab {

/// What the person does, in order. A step waits until the one before is done.
struct ConsoleStep {
    enum class Kind {
        kSees,    ///< waits until `text` has been written after the text seen before
        kReads,   ///< waits until the program waits for a line
        kTypes,   ///< types `text`, whether the program reads or not
        kCtrlC,   ///< presses Ctrl-C
        kClicks,  ///< clicks into the window: with quick-edit on, the program's output is suspended
        kCloses,  ///< closes the window
    };
    Kind kind = Kind::kSees;
    std::string text;
};

/// The initial state of the console, and what the person does.
struct ConsoleScript {
    std::uint32_t input_mode = 0x1F7;  ///< the mode of a new window on Windows
    std::uint32_t output_mode = 0x3;
    std::uint32_t code_page = 850;
    int columns = 120;
    int processes = 1;  ///< attached to the console
    int handlers_after_milliseconds = 0;
    bool virtual_terminal = true;  ///< whether that output mode can be switched on
    bool clock_is_shown = false;   ///< whether the record contains times
    std::string title = "C:\\vistrel_diag.exe";
    std::vector<ConsoleStep> steps;
};

/// The error in the text, and its line.
class ConsoleScriptError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// One statement a line; "#" at a line's start begins a comment. Throws ConsoleScriptError.
///
///     input mode 0x1F7 | output mode 0x3 | code page 850 | columns 120 | title TEXT | processes 2
///     handlers after 300 ms | without virtual terminal | with times
///     sees TEXT | reads | types TEXT | presses Ctrl-C | clicks | closes
///
/// In a text, \r is the Enter key, \xHH any byte, and \\ a backslash.
ConsoleScript ReadConsoleScript(std::istream& file);

}  // namespace lab
