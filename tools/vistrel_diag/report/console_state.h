// The state of the real console, where standard input or standard output is one.
#pragma once

#include "platform/console_utf8.h"

/// While this object exists, the console is set up for the run:
///
/// - A click into the window does not stop the output (quick-edit is off), and input comes in whole lines.
/// - UTF-8 text is shown correctly, its lines end in CR LF, and progress is shown.
/// - Input typed before a prompt does not answer it, and Ctrl-C at a prompt ends the process.
///
/// The destructor restores what was changed; so do Ctrl-C and closing the window. A process that crashes
/// calls PutConsoleBack. A pipe or a file is left unchanged. At most one object at a time.
class ConsoleState {
  public:
    ConsoleState();
    ~ConsoleState();
    ConsoleState(const ConsoleState&) = delete;
    ConsoleState& operator=(const ConsoleState&) = delete;

  private:
    ConsoleUtf8Output utf8_output_;
};

/// Restores what ConsoleState has changed: modes, code page, title, and the taskbar's progress. Safe in a
/// crashing process: takes no lock and allocates nothing. A second call does nothing.
void PutConsoleBack();

/// Whether input and output are both a console that no other process used when the run began. That is the
/// case when the tool was double-clicked: the window then closes when the tool ends. False before a
/// ConsoleState exists. Takes no lock.
bool HasConsoleOfItsOwn();
