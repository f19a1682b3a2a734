// A console that shows the program's UTF-8 text as it is meant.
#pragma once

#include <string_view>

/// Whether standard output is a real console, and not a pipe or a file.
bool StandardOutputIsConsole();

/// Puts UTF-8 text on the console that standard output is. The C runtime hands a console byte for byte, in
/// which most characters are lost; this hands it characters. What is not well formed shows as replacement
/// characters, a bare line feed as CR LF, and a control character other than tab, carriage return and line
/// feed as its picture.
void WriteToConsole(std::string_view text);

/// Gives a real console the code page back that ConsoleUtf8Output found. For a process that dies: takes no
/// lock and allocates nothing. Does nothing the second time.
void PutConsoleCodePageBack();

/// While it lives, a real console also takes the bytes of standard error as UTF-8. The code page found is put
/// back at the end, also when the person ends the program with Ctrl-C or closes the console; a program that
/// crashes calls PutConsoleCodePageBack. Does nothing for a pipe or a file. At most one at a time.
class ConsoleUtf8Output {
  public:
    ConsoleUtf8Output();
    ~ConsoleUtf8Output();
    ConsoleUtf8Output(const ConsoleUtf8Output&) = delete;
    ConsoleUtf8Output& operator=(const ConsoleUtf8Output&) = delete;

  private:
    bool is_console_;
};
