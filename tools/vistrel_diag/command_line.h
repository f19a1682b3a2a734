// The command line, parsed into plain values.
#pragma once

#include <cstdint>
#include <span>
#include <string>

/// How the run is to go.
struct RunOptions {
    bool quick = false;            ///< part 1 alone, without prompts
    bool run_models = true;        ///< time every depth model, not only the configured one
    std::int32_t refresh_hz = 0;   ///< a refresh rate for the verdict to show as well; below 1: none
    double capture_seconds = 3.0;  ///< how long each capture measurement lasts; 0 or less measures nothing
};

struct CommandLine {
    RunOptions options;
    bool help = false;  ///< only the usage was asked for
};

/// The longest capture measurement that can be asked for, in seconds: an hour. A larger number is reduced to
/// this.
inline constexpr double kLongestCaptureSeconds = 3600.0;

/// Reads the arguments that follow the program's name. Unknown arguments are ignored. A number is read up to
/// the first character that does not belong to it: no digits at all is 0, and a number too large for its
/// field becomes the field's limit. Words such as "nan" and "inf" are not numbers, and neither is a number
/// beyond the range of a double.
CommandLine ParseCommandLine(std::span<const std::string> arguments);

/// Prints to the console how to call the program.
void PrintUsage();
