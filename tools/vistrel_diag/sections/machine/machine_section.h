// The report's section about Windows, the processor, the memory and how the GPU is scheduled.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

/// Physical memory in bytes.
struct PhysicalMemory {
    std::uint64_t total = 0;
    std::uint64_t available = 0;
};

/// What Windows reports about the machine; what it does not report is empty.
struct MachineInfo {
    std::optional<std::string> windows_name;
    std::optional<std::string> build_number;
    std::optional<std::uint32_t> update_revision;
    std::optional<std::string> processor_name;  ///< as stored; some names are padded with blanks
    std::uint32_t logical_processors = 0;
    std::optional<PhysicalMemory> memory;
    std::optional<std::uint32_t> gpu_scheduling_mode;  ///< "HwSchMode"; empty if absent or not a number
};

MachineInfo ProbeMachine();
void PrintMachineSection(const MachineInfo& machine);

/// Reports what ProbeMachine finds.
void ReportMachineSection();
