// A console and the person in front of it, as a text file describes them. Touches no Windows header.
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
        kSees,    ///< waits until `text` has been written behind what was seen before
        kReads,   ///< waits until the program waits for a line
        kTypes,   ///< `text`, whether somebody reads or not
        kCtrlC,   ///< presses Ctrl-C
        kClicks,  ///< clicks into the window: with quick-edit on, the program's output stands still
        kCloses,  ///< closes the window
    };
    Kind kind = Kind::kSees;
    std::string text;
};

/// What the program finds, and who sits in front of it.
struct ConsoleScript {
    std::uint32_t input_mode = 0x1F7;  ///< what a new window of Windows has
    std::uint32_t output_mode = 0x3;
    std::uint32_t code_page = 850;
    int columns = 120;
    int processes = 1;  ///< attached to the console
    int handlers_after_milliseconds = 0;
    bool virtual_terminal = true;  ///< whether that output mode can be switched on
    bool clock_is_shown = false;   ///< whether the record says when something happened
    std::string title = "C:\\vistrel_diag.exe";
    std::vector<ConsoleStep> steps;
};

/// What is wrong with the text, and in which line.
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
