// Replacements for Windows' console functions on a scripted console.
#pragma once

#include <windows.h>

#include <string>
#include <string_view>

#include "tests/lab/console/console_script.h"

namespace lab {

/// From now on the process's standard handles refer to such a console. `record_path`: the file that receives
/// the record (ConsoleHost), complete at every moment.
void SetUpConsole(const ConsoleScript& script, const std::wstring& record_path);

/// The console's function of this name; null if it has none, or if there is no console.
FARPROC ConsoleFunction(std::string_view name);

/// Records the final state of the console and a normal end of the process.
void TellConsoleOfEnd();

}  // namespace lab
