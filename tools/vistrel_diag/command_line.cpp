#include "tools/vistrel_diag/command_line.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <limits>

#include "tools/vistrel_diag/report/console.h"

namespace {

std::int32_t ReadWholeNumber(const std::string& text) {
    using Limits = std::numeric_limits<std::int32_t>;
    const long long number = std::strtoll(text.c_str(), nullptr, 10);  // Its limits when out of range.
    return static_cast<std::int32_t>(std::clamp<long long>(number, Limits::min(), Limits::max()));
}

double ReadSeconds(const std::string& text) {
    // strtod alone would also accept "nan", "inf" and hexadecimal.
    const std::string decimal = text.substr(0, text.find_first_not_of(" \t+-.0123456789eE"));
    const double seconds = std::strtod(decimal.c_str(), nullptr);
    if (std::isinf(seconds)) {
        return 0.0;  // The same as for "inf".
    }
    return std::clamp(seconds, -kLongestCaptureSeconds, kLongestCaptureSeconds);
}

}  // namespace

CommandLine ParseCommandLine(std::span<const std::string> arguments) {
    CommandLine command_line;
    RunOptions& options = command_line.options;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string& argument = arguments[i];
        const bool has_value = i + 1 < arguments.size();
        if (argument == "--refresh" && has_value) {
            options.refresh_hz = ReadWholeNumber(arguments[++i]);
        } else if (argument == "--capture-seconds" && has_value) {
            options.capture_seconds = ReadSeconds(arguments[++i]);
        } else if (argument == "--no-models") {
            options.run_models = false;
        } else if (argument == "--quick") {
            options.quick = true;
        } else if (argument == "--help") {
            command_line.help = true;
            break;
        }
    }
    return command_line;
}

void PrintUsage() {
    ConsolePrint(
        "vistrel_diag [--quick] [--no-models] [--refresh HZ] [--capture-seconds N]\n"
        "  No arguments: full guided run. That is the intended use.\n");
}
