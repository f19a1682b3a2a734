// A console that shows the program's UTF-8 text as it is meant.
#pragma once

/// While it lives, a real console takes standard output as UTF-8. The code page found is put back at the end,
/// also when the person ends the program with Ctrl-C or closes the console. Does nothing for a pipe or a
/// file. At most one at a time.
class ConsoleUtf8Output {
  public:
    ConsoleUtf8Output();
    ~ConsoleUtf8Output();
    ConsoleUtf8Output(const ConsoleUtf8Output&) = delete;
    ConsoleUtf8Output& operator=(const ConsoleUtf8Output&) = delete;
};
