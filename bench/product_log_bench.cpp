// How long the selection from the product's log takes. A log of the worst kind, all lines relevant, comes
// from
//
//     yes '21:22:47.655 [INFO ] DirectML provider attached, something failed' | head -c 1G > big.log
//
// and what a plain search of it takes from `time LC_ALL=C grep -cFf MARKERS big.log`.
//
//     product_log_bench LOG
#include <cstdio>
#include <fstream>

#include "platform/open_file.h"
#include "platform/stopwatch.h"
#include "tools/vistrel_diag/product_log_selection.h"

int main(int count, char** arguments) {
    if (count != 2) {
        std::fputs("product_log_bench LOG\n", stderr);
        return 2;
    }
    std::ifstream log = OpenFileForReading(arguments[1]);
    if (!log.is_open()) {
        std::fprintf(stderr, "product_log_bench: %s does not open\n", arguments[1]);
        return 1;
    }
    const Stopwatch watch;
    const std::size_t lines = SelectProductLogLines(log).size();
    std::printf("%.2f s, %d lines selected\n", watch.Seconds(), static_cast<int>(lines));
    return 0;
}
