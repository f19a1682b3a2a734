// Any bytes as the product's log: the selected lines are those of a simple selection that holds everything in
// memory.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <sstream>
#include <string>
#include <vector>

#include "tests/fuzz/long_runs.h"
#include "tools/vistrel_diag/report/report.h"
#include "tools/vistrel_diag/sections/product_log/product_log_selection.h"

namespace {

bool IsRelevant(const std::string& line) {
    static const std::vector<std::string> markers = {"DepthEstimator",
                                                     "DirectML",
                                                     "D3D12 device",
                                                     "D3D11CreateDevice",
                                                     "Required Graphics Adapter",
                                                     "Found DXGI Adapter",
                                                     "Match found",
                                                     "ERROR",
                                                     "WARNING",
                                                     "failed",
                                                     "Failed",
                                                     "monitor is driven by",
                                                     "Initialized DXGI",
                                                     "Initialized WGC",
                                                     "ReShade mode"};
    return std::any_of(markers.begin(), markers.end(),
                       [&line](const std::string& marker) { return line.find(marker) != std::string::npos; });
}

std::vector<std::string> SelectPlainly(const std::string& bytes) {
    std::istringstream log(AsTextMode(bytes));
    std::vector<std::string> kept;
    std::size_t anchor = 0;
    for (std::string line; std::getline(log, line);) {
        if (!IsRelevant(line)) {
            continue;
        }
        if (line.find("Initializing D3D11") != std::string::npos) {
            anchor = kept.size();
        }
        kept.push_back(line.substr(0, Report::kLongestLine));
    }
    const std::size_t first = kept.size() - anchor <= 60 ? anchor : kept.size() - 60;
    return {kept.begin() + static_cast<std::ptrdiff_t>(first), kept.end()};
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes = WithLongRuns(data, size);
    std::istringstream log(bytes);
    if (SelectProductLogLines(log) != SelectPlainly(bytes)) {
        std::abort();
    }
    return 0;
}
