#include "tools/vistrel_diag/sections/displays/display_reading.h"

#include <cstddef>
#include <string_view>
#include <utility>

namespace {

bool ReadDisplayLine(const SourceLine& line, ReadDisplay& read) {
    DisplayInfo& display = read.display;
    std::size_t mark = 0;
    if (!LineScan(line.text)
             .OneOf(mark, {"* ", "  "})
             .UpTo(display.name, " : ")
             .Whole(display.width)
             .Text("x")
             .Whole(display.height)
             .Text(" @ ")
             .Whole(display.refresh_hz)
             .Text(" Hz  -> driven by GPU ")
             .Whole(display.gpu)
             .Text(" (")
             .UpToLast(read.gpu_name, ")")
             .IsWhole()) {
        return false;
    }
    display.primary = mark == 0;
    while (display.name.ends_with(' ')) {
        display.name.pop_back();
    }
    read.line = line.number;
    return true;
}

}  // namespace

std::optional<DisplayReading> ReadDisplaySection(SourceLines lines, UnreadLines& unread) {
    DisplayReading reading;
    const bool any = ReadEachLine(lines, unread, [&reading](const SourceLine& line) {
        ReadDisplay display;
        if (ReadDisplayLine(line, display)) {
            reading.displays.push_back(std::move(display));
            return true;
        }
        return ReadFixedLine(
            line,
            "(* = primary. Vistrel captures the primary display unless told otherwise, and warps "
            "at exactly that pixel count.)",
            reading.primary_note_line);
    });
    return any ? std::optional(std::move(reading)) : std::nullopt;
}
