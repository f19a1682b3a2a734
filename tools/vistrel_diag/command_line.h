// The command line: what it asks for, as plain values.
#pragma once

#include <cstdint>
#include <span>
#include <string>

/// How the run is to go.
struct RunOptions {
    bool quick = false;            ///< part 1 alone, without prompts
    bool run_models = true;        ///< time every depth model, not only the configured one
    std::int32_t refresh_hz = 0;   ///< a headset refresh rate the verdict is to show as well; below 1: none
    double capture_seconds = 3.0;  ///< how long each capture measurement lasts; 0 or less: no time at all
};

struct CommandLine {
    RunOptions options;
    bool help = false;  ///< only the usage was asked for
};

/// The longest capture measurement that can be asked for, in seconds: an hour. A larger number means this.
inline constexpr double kLongestCaptureSeconds = 3600.0;

/// Reads the arguments that follow the program's name. What is not understood is passed over. Numbers are
/// read forgivingly, as far as they go: none at all is 0, and one too large for its field is the field's
/// limit. Words such as "nan" and "inf" are no numbers, nor is a number that no double holds.
CommandLine ParseCommandLine(std::span<const std::string> arguments);

/// Tells the person at the console how the program is called.
void PrintUsage();
