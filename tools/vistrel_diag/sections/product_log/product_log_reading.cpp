#include "tools/vistrel_diag/sections/product_log/product_log_reading.h"

#include <cstddef>
#include <string_view>
#include <utility>

namespace {

bool IsHowToProduceALog(std::string_view line) {
    return IsLine(
               line,
               "This is the single most useful thing to send, and it is off by default. To produce one:") ||
           IsLine(line, "  1. In Vistrel, Debug tab -> turn on \"Show Vistrel debug log\".") ||
           IsLine(line, "  2. Press Start, let it reach the state you are reporting, press Stop.") ||
           IsLine(line, "  3. Run this tool again - the log will be quoted here.");
}

/// The log always has this name; a line that ends otherwise is none that names it.
bool NamesLog(std::string_view line) {
    const std::size_t end = line.find_last_not_of(" \t");
    return end != std::string_view::npos && line.substr(0, end + 1).ends_with("vistrel_init_log.txt");
}

bool ReadWithoutLog(const SourceLine& line, ProductLogReading& reading) {
    if (reading.no_log_line == 0 && NamesLog(line.text) &&
        LineScan(line.text).Text("No log at ").Rest(reading.path).Matches()) {
        reading.no_log_line = line.number;
        return true;
    }
    return (reading.no_log_line != 0 && IsHowToProduceALog(line.text)) ||
           ReadFixedLine(
               line,
               "The log exists but carries none of the lines that decide whether depth happens - it "
               "is probably from a run that never pressed Start.",
               reading.nothing_relevant_line);
}

}  // namespace

std::optional<ProductLogReading> ReadProductLogSection(SourceLines lines, UnreadLines& unread) {
    ProductLogReading reading;
    bool first = true;
    const bool any = ReadEachLine(lines, unread, [&](const SourceLine& line) {
        if (std::exchange(first, false)) {
            if (ReadWithoutLog(line, reading)) {
                return true;
            }
            if (NamesLog(line.text)) {
                reading.path.assign(line.text);
                reading.path_line = line.number;
                return true;
            }
        }
        if (reading.path_line == 0) {
            return ReadWithoutLog(line, reading);
        }
        if (ReadFixedLine(line, "  !! The file could not be read to its end.", reading.broke_off_line)) {
            return true;
        }
        ReadText quoted{{}, line.number};
        if (!line.text.starts_with("  ")) {
            return false;
        }
        quoted.text.assign(line.text.substr(2));
        reading.quoted.push_back(std::move(quoted));
        return true;
    });
    return any ? std::optional(std::move(reading)) : std::nullopt;
}
