#include <string>
#include <vector>

#include "platform/library.h"
#include "platform/system_graphics.h"
#include "platform/utf8.h"
#include "tools/vistrel_diag/command_line.h"
#include "tools/vistrel_diag/guided_run.h"
#include "tools/vistrel_diag/report/console_state.h"

/// Always ends with 0: what fails is in the report.
int wmain(int argument_count, wchar_t** argument_values) {
    NeverLoadFromCurrentDirectory();
    LoadSystemGraphics();
    std::vector<std::string> arguments;
    for (int i = 1; i < argument_count; ++i) {
        arguments.push_back(Utf8FromWide(argument_values[i]));
    }
    const CommandLine command_line = ParseCommandLine(arguments);
    if (command_line.help) {
        PrintUsage();
    } else {
        const ConsoleState console;
        CarryOutRun(command_line.options);
    }
    return 0;
}
