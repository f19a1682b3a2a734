// Any bytes as the arguments, separated by zeros: the run stays bounded for all values.
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "tools/vistrel_diag/command_line.h"

namespace {

std::vector<std::string> ArgumentsFrom(const std::string& bytes) {
    std::vector<std::string> arguments(1);
    for (const char byte : bytes) {
        if (byte == '\0') {
            arguments.emplace_back();
        } else {
            arguments.back() += byte;
        }
    }
    return arguments;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::vector<std::string> arguments = ArgumentsFrom({data, data + size});
    const CommandLine command_line = ParseCommandLine(arguments);
    // False for a NaN, too.
    if (!(std::fabs(command_line.options.capture_seconds) <= kLongestCaptureSeconds)) {
        std::abort();
    }
    bool names_help = false;
    for (const std::string& argument : arguments) {
        names_help = names_help || argument == "--help";
    }
    if (command_line.help && !names_help) {
        std::abort();
    }
    return 0;
}
