#include "tools/vistrel_diag/sections/product_log/product_log_section.h"

#include <vector>

#include "tools/vistrel_diag/report/report.h"
#include "tools/vistrel_diag/sections/product_log/product_log_selection.h"

namespace {

void PrintHowToProduceALog(const std::string& path) {
    Report::Line("No log at %s", path.c_str());
    Report::Line("");
    Report::Line("This is the single most useful thing to send, and it is off by default. To produce one:");
    Report::Line("  1. In Vistrel, Debug tab -> turn on \"Show Vistrel debug log\".");
    Report::Line("  2. Press Start, let it reach the state you are reporting, press Stop.");
    Report::Line("  3. Run this tool again - the log will be quoted here.");
}

}  // namespace

void PrintProductLog(const std::string& path, std::istream* log) {
    if (log == nullptr) {
        PrintHowToProduceALog(path);
        return;
    }
    const std::vector<std::string> lines = SelectProductLogLines(*log);
    if (lines.empty() && !log->bad()) {
        Report::Line(
            "The log exists but carries none of the lines that decide whether depth happens - it is probably "
            "from a run that never pressed Start.");
        return;
    }
    Report::Line("%s", path.c_str());
    Report::Line("");
    for (const std::string& line : lines) {
        Report::Line("  %s", line.c_str());
    }
    if (log->bad()) {
        Report::Line("  !! The file could not be read to its end.");
    }
}
