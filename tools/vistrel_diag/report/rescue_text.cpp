#include <algorithm>
#include <array>
#include <cstdio>

#include "platform/exception_name.h"
#include "tools/vistrel_diag/report/rescue.h"

namespace {

/// Describes what happened; uses `buffer` if the text contains a name or a number.
const char* Cause(RunEnd end, const CrashSite& site, std::array<char, 192>& buffer) {
    const char* const name = ExceptionName(site.exception_code);
    std::array<char, 32> place = {};
    if (site.offset != 0) {
        std::snprintf(place.data(), place.size(), " at +0x%zX", site.offset);
    }
    switch (end) {
        case RunEnd::Crash:
            std::snprintf(buffer.data(), buffer.size(), "the program crashed%s%s (%s%s0x%08X%s)",
                          site.module[0] != '\0' ? " in " : "", site.module,
                          name != nullptr ? name : "exception", name != nullptr ? ", " : " ",
                          site.exception_code, place.data());
            return buffer.data();
        case RunEnd::Abort:
            return "the program aborted";
        case RunEnd::ControlC:
            return "the user stopped it with Ctrl-C";
        case RunEnd::ConsoleClosed:
            return "the console window was closed";
        case RunEnd::SessionEnded:
            return "the user logged off or the system shut down";
        case RunEnd::ClosedByInstaller:
            return "an installer or an update closed the program";
    }
    return "unknown";
}

}  // namespace

std::size_t FormatCutShortLine(char* buffer, std::size_t size, RunEnd end, const CrashSite& site,
                               const char* section) {
    std::array<char, 192> cause = {};
    const bool in_section = section[0] != '\0';
    const int length =
        std::snprintf(buffer, size, "!! THIS RUN WAS CUT SHORT %s%s%s: %s. Whatever would follow is missing.",
                      in_section ? "in the section \"" : "before its first section", section,
                      in_section ? "\"" : "", Cause(end, site, cause));
    return length < 0 ? 0 : std::min(static_cast<std::size_t>(length), size - 1);
}
