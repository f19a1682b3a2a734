// Reads the lines of INJECTED INTO VISTREL'S OWN FOLDER back into the record.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "tools/vistrel_diag/report/line_reading.h"
#include "tools/vistrel_diag/sections/injection/injection_section.h"

/// The lines hold the complete record.
struct InjectionReading {
    std::optional<InjectedFiles> found;  ///< empty when the folder was not known
    std::vector<std::uint32_t> proxy_dll_lines;
    std::vector<std::uint32_t> reshade_file_lines;
    std::uint32_t cannot_tell_line = 0;
    std::uint32_t nothing_found_line = 0;
    std::uint32_t warning_line = 0;  ///< the first of ">>> Something is injecting itself into Vistrel. ..."
};

/// Empty when no line was understood. Lines that were not understood are added to `unread`. Lines with names
/// that the section does not look for are not understood.
std::optional<InjectionReading> ReadInjectionSection(SourceLines lines, UnreadLines& unread);
