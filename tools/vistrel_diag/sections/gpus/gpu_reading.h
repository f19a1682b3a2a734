// Reads the lines about GPUs and their memory back into records.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tools/vistrel_diag/report/line_reading.h"
#include "tools/vistrel_diag/sections/gpus/gpu_section.h"

/// The numbers of the lines with one GPU's values; 0 when a line is missing.
struct GpuLines {
    std::uint32_t name = 0;
    std::uint32_t memory = 0;
    std::uint32_t luid = 0;
    std::uint32_t displays = 0;
    std::uint32_t memory_in_use = 0;
    std::uint32_t memory_reserved = 0;
};

/// The GPUs section.
///
/// Not in the lines: memory to less than a megabyte (the bytes read back print the same lines, percentage
/// included); a vendor without a name in the report (read as 0); where a display's name ends, when it
/// contains ", ".
struct GpuReading {
    GpuInventory inventory;
    std::vector<GpuLines> lines;            ///< one for each of inventory.gpus
    std::uint32_t factory_failed_line = 0;  ///< of "!! CreateDXGIFactory1 failed - ..."
    std::uint32_t several_gpus_line = 0;    ///< of "NOTE: more than one hardware GPU is present. ..."
};

/// Video memory at one moment: only the number, name and memory of each GPU.
///
/// Not in the lines, besides what GpuReading lacks: software adapters, adapters whose memory Windows does not
/// report, and blanks at the end of a short name.
struct GameVideoMemoryReading {
    std::string moment;  ///< such as "while the game is running"
    std::vector<ProbedGpu> gpus;
    std::uint32_t heading_line = 0;
    std::vector<std::uint32_t> lines;  ///< one for each of gpus

    /// Whether the GPU at that position has used up more than kHeadroomPercent of its budget.
    bool OutOfHeadroom(std::size_t position) const;
};

/// Empty when no line was understood. Lines that were not understood are added to `unread`.
std::optional<GpuReading> ReadGpuSection(SourceLines lines, UnreadLines& unread);
std::optional<GameVideoMemoryReading> ReadVramLines(SourceLines lines, UnreadLines& unread);
