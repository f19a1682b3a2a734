// Correct output of the program's UTF-8 text on a console.
#pragma once

#include <string_view>

/// Whether standard output is a real console, and not a pipe or a file.
bool StandardOutputIsConsole();

/// Writes UTF-8 text to the console behind standard output. The C runtime writes to a console byte by byte,
/// which loses most characters; this writes whole characters. Ill-formed text becomes replacement characters,
/// a bare line feed becomes CR LF, and a control character other than tab, carriage return and line feed
/// becomes its visible symbol.
void WriteToConsole(std::string_view text);

/// Restores the code page of a real console that ConsoleUtf8Output found. Safe in a crashing process: takes
/// no lock and allocates nothing. A second call does nothing.
void PutConsoleCodePageBack();

/// While this object exists, a real console also reads the bytes of standard error as UTF-8. The destructor
/// restores the code page; so do Ctrl-C and closing the console. A program that crashes calls
/// PutConsoleCodePageBack. Does nothing for a pipe or a file. At most one object at a time.
class ConsoleUtf8Output {
  public:
    ConsoleUtf8Output();
    ~ConsoleUtf8Output();
    ConsoleUtf8Output(const ConsoleUtf8Output&) = delete;
    ConsoleUtf8Output& operator=(const ConsoleUtf8Output&) = delete;

  private:
    bool is_console_;
};
