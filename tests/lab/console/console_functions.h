// What a program on a scripted console calls in place of Windows' console functions.
#pragma once

#include <windows.h>

#include <string>
#include <string_view>

#include "tests/lab/console/console_script.h"

namespace lab {

/// From now on the standard handles of the process are such a console. `record_path`: the file that receives
/// the record (ConsoleHost), complete at every moment.
void SetUpConsole(const ConsoleScript& script, const std::wstring& record_path);

/// The console's own function of this name; null when it has none, or when there is no console.
FARPROC ConsoleFunction(std::string_view name);

/// Records how the console was left, and that the process has ended in order.
void TellConsoleOfEnd();

}  // namespace lab
