// Reads the lines of MACHINE back into the record.
#pragma once

#include <cstdint>
#include <optional>

#include "tools/vistrel_diag/report/line_reading.h"
#include "tools/vistrel_diag/sections/machine/machine_section.h"

/// The record with the line number of each value, 0 when that line is missing.
///
/// Not in the lines: memory to less than a tenth of a gigabyte; whether an empty text was unknown (read as
/// unknown); whether memory was unknown, which prints as none (read as unknown when both values are 0.0);
/// every scheduling mode but 1 and 2 (read as 0).
struct MachineReading {
    MachineInfo machine;
    std::uint32_t windows_line = 0;
    std::uint32_t processor_line = 0;
    std::uint32_t memory_line = 0;
    std::uint32_t gpu_scheduling_line = 0;
};

/// Empty when no line was understood. Lines that were not understood are added to `unread`.
std::optional<MachineReading> ReadMachineSection(SourceLines lines, UnreadLines& unread);
