// Any bytes as the quoted settings file: the output is that of a simple reader.
#include <algorithm>
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <sstream>
#include <string>
#include <vector>

#include "tests/fuzz/long_runs.h"
#include "tools/vistrel_diag/report/report.h"
#include "tools/vistrel_diag/sections/settings/settings_section.h"

namespace {

std::vector<std::string>& Printed() {
    static std::vector<std::string> lines;
    return lines;
}

std::vector<std::string> PlainQuotes(const std::string& bytes) {
    std::istringstream file(AsTextMode(bytes));
    std::vector<std::string> quotes;
    for (std::string line; std::getline(file, line);) {
        if (line.find("vistrel") != std::string::npos) {
            const std::string whole = "  " + line.substr(line.find_first_not_of(" \t"));
            quotes.push_back(std::string(whole.c_str()).substr(0, Report::kLongestLine));
        }
    }
    return quotes;
}

}  // namespace

// Replaces the report, which would keep the lines of all inputs.
namespace Report {

void Line(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    Printed().push_back(FormatBoundedV(kLongestLine, format, arguments));
    va_end(arguments);
}

void Section(std::string_view) {}

}  // namespace Report

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes = WithLongRuns(data, size);
    std::istringstream file(bytes);
    Printed().clear();
    PrintSettingsVerbatim("settings.json", &file);

    constexpr std::size_t kOpeningLines = 3;
    std::vector<std::string> quoted(Printed().begin() + kOpeningLines, Printed().end());
    const std::vector<std::string> expected = PlainQuotes(bytes);
    const bool says_none = quoted.size() == 1 && quoted[0].starts_with("  (no vistrel_* keys");
    if (quoted != expected && !(expected.empty() && says_none)) {
        std::abort();
    }
    return 0;
}
