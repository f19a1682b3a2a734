// How long the selection from the product's log takes, and by how many megabytes it raises the peak of the
// memory in use.
//
//     product_log_bench LOG
#include <windows.h>
// Behind windows.h, which it needs.
#include <psapi.h>

#include <cstdio>
#include <fstream>

#include "platform/open_file.h"
#include "tools/vistrel_diag/sections/product_log/product_log_selection.h"

namespace {

double PeakMegabytes() {
    PROCESS_MEMORY_COUNTERS counters = {};
    GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof(counters));
    return static_cast<double>(counters.PeakWorkingSetSize) / (1024.0 * 1024.0);
}

double ProcessorSeconds() {
    FILETIME created = {};
    FILETIME ended = {};
    FILETIME kernel = {};
    FILETIME user = {};
    GetProcessTimes(GetCurrentProcess(), &created, &ended, &kernel, &user);
    const auto seconds = [](const FILETIME& time) {
        constexpr double kUnitsPerSecond = 1e7;
        return (time.dwHighDateTime * 4294967296.0 + time.dwLowDateTime) / kUnitsPerSecond;
    };
    return seconds(kernel) + seconds(user);
}

}  // namespace

int main(int count, char** arguments) {
    if (count != 2) {
        std::fputs("product_log_bench LOG\n", stderr);
        return 2;
    }
    const double before = PeakMegabytes();
    std::ifstream log = OpenFileForReading(arguments[1]);
    if (!log.is_open()) {
        std::fprintf(stderr, "product_log_bench: %s does not open\n", arguments[1]);
        return 1;
    }
    const double started = ProcessorSeconds();
    const std::size_t lines = SelectProductLogLines(log).size();
    const double seconds = ProcessorSeconds() - started;
    std::printf("%.3f s, %.1f MB, %d lines selected\n", seconds, PeakMegabytes() - before,
                static_cast<int>(lines));
    return 0;
}
