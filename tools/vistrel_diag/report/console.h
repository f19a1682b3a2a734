// Output to the console and answers from the user. Nothing of it goes into the report.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/format.h"

/// From now on text goes to this function (the console itself, where there is one) instead of standard
/// output. Null restores standard output.
using ConsoleWriter = void (*)(std::string_view text);
void SetConsoleWriter(ConsoleWriter writer);

/// Prints, printf-style, to standard output. The text is not kept for the report, and no line end is added.
void ConsolePrint(const char* format, ...) VISTREL_PRINTF(1, 2);

/// Shows `text` (UTF-8, shorter than the console is wide) until something else is printed, which then takes
/// its place; an empty text removes what is shown. This is for consoles only: it does nothing unless a writer
/// is set and the cursor is at the start of a line.
void ShowTransientLine(std::string_view text);

/// Flushes everything printed so far to the console.
void FlushConsole();

/// The source of answers to prompts instead of standard input: a user at a console.
struct ConsoleReader {
    void (*forget_typed_ahead)();               ///< discards typed input that has not been read
    std::optional<std::string> (*read_line)();  ///< UTF-8, without line end; empty at the end of the input
    bool (*enter_was_pressed)();                ///< does not wait; consumes what has been typed
};

/// From now on `reader` answers prompts; null restores standard input. The caller owns it and keeps it alive
/// until another one is set.
void SetConsoleReader(const ConsoleReader* reader);

/// Asks `question` and waits for a line. Returns false only for an answer that begins with 's' or 'S'; the
/// end of the input counts as an answer to continue. Only the first 63 characters of an answer are kept; the
/// rest of the line is discarded. Input typed before the question does not answer it.
bool AskContinue(const char* question);

/// Prints `text` and waits for one character (at a console: for Enter) or for the end of the input.
void WaitForEnter(const char* text);

/// Whether the user can end something with Enter: input and output are both a console. Discards what has been
/// typed so far.
bool BeginToWatchForEnter();

/// Whether Enter has been pressed since; does not wait. Always false unless BeginToWatchForEnter returned
/// true.
bool EnterWasPressed();
