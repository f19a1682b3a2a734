// vistrel_report: what is in the reports that vistrel_diag wrote.
#ifdef _WIN32
#include <fcntl.h>
#include <io.h>
#endif

#include <exception>
#include <iostream>
#include <string>
#include <vector>

#include "tools/vistrel_report/exit_status.h"
#include "tools/vistrel_report/report_options.h"
#include "tools/vistrel_report/report_program.h"

namespace {

/// Bytes as they are: no line ends are changed, and Ctrl-Z ends no input.
void UseBinaryStreams() {
#ifdef _WIN32
    _setmode(_fileno(stdin), _O_BINARY);
    _setmode(_fileno(stdout), _O_BINARY);
#endif
}

}  // namespace

// On Windows the manifest makes UTF-8 the code page of the arguments.
int main(int argument_count, char** arguments) {
    try {
        UseBinaryStreams();
        std::ios::sync_with_stdio(false);
        const ParsedOptions parsed =
            ParseReportOptions({arguments + (argument_count > 0 ? 1 : 0), arguments + argument_count});
        if (!parsed.options) {
            (parsed.exit_status == ExitStatus::kRead ? std::cout : std::cerr) << parsed.text;
            return parsed.exit_status;
        }
        return RunReportProgram(*parsed.options, std::cin, std::cout, std::cerr);
    } catch (const std::exception& error) {
        std::cerr << "vistrel_report: " << error.what() << "\n";
        return ExitStatus::kUsage;
    }
}
