// What the person at the console sees and answers, and the report never holds.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/format.h"

/// What takes the text instead of standard output from now on: the console itself, where there is one. Null:
/// standard output again.
using ConsoleWriter = void (*)(std::string_view text);
void SetConsoleWriter(ConsoleWriter writer);

/// Printf-style to standard output; nothing is kept and no line end is added.
void ConsolePrint(const char* format, ...) VISTREL_PRINTF(1, 2);

/// Shows `text` (UTF-8, shorter than the console is wide) until something else is printed, which then takes
/// its place; empty: takes away what is shown. For a console alone, so it does nothing unless a writer is
/// set, and only where a line begins.
void ShowTransientLine(std::string_view text);

/// Puts everything printed so far in front of the person.
void FlushConsole();

/// What answers the prompts instead of standard input: a person at a console.
struct ConsoleReader {
    void (*forget_typed_ahead)();               ///< throws away what has been typed and not been read
    std::optional<std::string> (*read_line)();  ///< UTF-8, without its end; empty at the end of the input
    bool (*enter_was_pressed)();                ///< does not wait; takes what has been typed
};

/// From now on `reader` answers; null: standard input again. It is the caller's and lives until another one
/// is set.
void SetConsoleReader(const ConsoleReader* reader);

/// Asks `question` and waits for a line. False only for an answer that begins with 's' or 'S'; the end of the
/// input continues. Only the first 63 characters of an answer are kept; the rest of its line is thrown away.
/// What a person typed before the question does not answer it.
bool AskContinue(const char* question);

/// Prints `text` and waits for one character, at a console for Enter, or for the end of the input.
void WaitForEnter(const char* text);

/// Whether a person can end something by Enter: both input and output are a console. Forgets what has been
/// typed so far.
bool BeginToWatchForEnter();

/// Whether Enter has been pressed since; does not wait. False unless BeginToWatchForEnter said true.
bool EnterWasPressed();
