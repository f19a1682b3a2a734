// The way back from the lines about GPUs and their memory to the records.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tools/vistrel_diag/report/line_reading.h"
#include "tools/vistrel_diag/sections/gpus/gpu_section.h"

/// The lines that one GPU's values stand on; 0 when a line is missing.
struct GpuLines {
    std::uint32_t name = 0;
    std::uint32_t memory = 0;
    std::uint32_t luid = 0;
    std::uint32_t displays = 0;
    std::uint32_t memory_in_use = 0;
    std::uint32_t memory_reserved = 0;
};

/// What GPUs says.
///
/// The print loses: memory beyond a megabyte (the bytes read print the same, percentage included); every
/// vendor that it has no name for (read as 0); where one display's name ends, when it holds ", ".
struct GpuReading {
    GpuInventory inventory;
    std::vector<GpuLines> lines;            ///< one for each of inventory.gpus
    std::uint32_t factory_failed_line = 0;  ///< of "!! CreateDXGIFactory1 failed - ..."
    std::uint32_t several_gpus_line = 0;    ///< of "NOTE: more than one hardware GPU is present. ..."
};

/// Video memory at one moment: number, name and memory of each GPU, nothing else of it.
///
/// The print loses, beside what GpuReading does not have either: software adapters, those whose memory
/// Windows does not tell, and blanks at the end of a short name.
struct GameVideoMemoryReading {
    std::string moment;  ///< such as "while the game is running"
    std::vector<ProbedGpu> gpus;
    std::uint32_t heading_line = 0;
    std::vector<std::uint32_t> lines;  ///< one for each of gpus

    /// Whether the GPU at that position has used up more than 90 % of its budget.
    bool OutOfHeadroom(std::size_t position) const;
};

/// Empty when no line was understood. Lines that were not are added to `unread`.
std::optional<GpuReading> ReadGpuSection(SourceLines lines, UnreadLines& unread);
std::optional<GameVideoMemoryReading> ReadVramLines(SourceLines lines, UnreadLines& unread);
