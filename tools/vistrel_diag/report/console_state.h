// The real console that the run works on, where standard input or standard output is one.
#pragma once

#include "platform/console_utf8.h"

/// While it lives, the console is as the run needs it:
///
/// - A click into the window does not stop the output (quick-edit is off), and input comes in whole lines.
/// - Text is shown in its own letters, its lines end in CR LF, and progress is shown.
/// - What has been typed before a prompt does not answer it, and Ctrl-C at a prompt ends the process.
///
/// What it changes is put back at the end, also by Ctrl-C and when the window is closed; a process that
/// crashes calls PutConsoleBack. For a pipe or a file it changes nothing. At most one at a time.
class ConsoleState {
  public:
    ConsoleState();
    ~ConsoleState();
    ConsoleState(const ConsoleState&) = delete;
    ConsoleState& operator=(const ConsoleState&) = delete;

  private:
    ConsoleUtf8Output utf8_output_;
};

/// Puts back what ConsoleState has changed: modes, code page, title, and the taskbar's progress. For a
/// process that dies: takes no lock and allocates nothing. Does nothing the second time.
void PutConsoleBack();

/// Whether input and output are both a console that nobody else used when the run began. That is so when the
/// tool was double-clicked: its window closes with it. False before there is a ConsoleState. Takes no lock.
bool HasConsoleOfItsOwn();
