// What the person at the console sees and answers, and the report never holds.
#pragma once

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

/// Asks `question` and waits for a line. False only for an answer that begins with 's' or 'S'; the end of the
/// input continues. Only the first 63 characters of an answer are kept; the rest of its line is thrown away.
bool AskContinue(const char* question);

/// Waits for one character, or for the end of the input.
void WaitForEnter();
