#include "tools/vistrel_diag/sections/machine/machine_reading.h"

#include <charconv>
#include <cmath>
#include <cstddef>
#include <string>

namespace {

std::optional<std::string> KnownText(std::string text) {
    return text.empty() ? std::nullopt : std::optional(std::move(text));
}

std::uint64_t BytesOfGigabytes(double gigabytes) {
    constexpr double kBytesPerGigabyte = 1024.0 * 1048576.0;
    constexpr double kMostGigabytes = 17179869183.0;  // What 64 bits of bytes hold.
    return static_cast<std::uint64_t>(std::fmin(std::fmax(gigabytes, 0.0), kMostGigabytes) *
                                      kBytesPerGigabyte);
}

bool ReadWindows(std::string_view line, MachineInfo& machine) {
    std::string name;
    std::string build;
    std::string revision;
    if (!LineScan(line)
             .Text("OS              : ")
             .UpToLast(name, " (build ")
             .UpToLast(build, ".")
             .UpToLast(revision, ")")
             .IsWhole()) {
        return false;
    }
    std::uint32_t number = 0;
    if (!revision.empty()) {
        if (!LineScan(revision).Whole(number).IsWhole()) {
            return false;
        }
        machine.update_revision = number;
    }
    machine.windows_name = KnownText(std::move(name));
    machine.build_number = KnownText(std::move(build));
    return true;
}

bool ReadProcessor(std::string_view line, MachineInfo& machine) {
    std::string name;
    std::uint32_t logical = 0;
    if (!LineScan(line)
             .Text("CPU             : ")
             .UpToLast(name, " (")
             .Whole(logical)
             .Text(" logical)")
             .IsWhole()) {
        return false;
    }
    machine.processor_name = KnownText(std::move(name));
    machine.logical_processors = logical;
    return true;
}

bool ReadMemory(std::string_view line, MachineInfo& machine) {
    double total = 0.0;
    double available = 0.0;
    if (!LineScan(line)
             .Text("RAM             : ")
             .Number(total)
             .Text(" GB total, ")
             .Number(available)
             .Text(" GB free")
             .IsWhole()) {
        return false;
    }
    if (total != 0.0 || available != 0.0) {
        machine.memory = PhysicalMemory{BytesOfGigabytes(total), BytesOfGigabytes(available)};
    }
    return true;
}

bool ReadGpuScheduling(std::string_view line, MachineInfo& machine) {
    std::size_t mode = 0;
    if (!LineScan(line)
             .Text("GPU scheduling  : ")
             .OneOf(mode, {"unknown value", "disabled", "ENABLED", "not set (driver default)"})
             .IsWhole()) {
        return false;
    }
    constexpr std::size_t kNotSet = 3;
    if (mode != kNotSet) {
        machine.gpu_scheduling_mode = static_cast<std::uint32_t>(mode);
    }
    return true;
}

}  // namespace

std::optional<MachineReading> ReadMachineSection(SourceLines lines, UnreadLines& unread) {
    MachineReading reading;
    bool any = false;
    for (const SourceLine& line : lines) {
        if (IsBlankLine(line.text)) {
            continue;
        }
        std::uint32_t* where = nullptr;
        if (reading.windows_line == 0 && ReadWindows(line.text, reading.machine)) {
            where = &reading.windows_line;
        } else if (reading.processor_line == 0 && ReadProcessor(line.text, reading.machine)) {
            where = &reading.processor_line;
        } else if (reading.memory_line == 0 && ReadMemory(line.text, reading.machine)) {
            where = &reading.memory_line;
        } else if (reading.gpu_scheduling_line == 0 && ReadGpuScheduling(line.text, reading.machine)) {
            where = &reading.gpu_scheduling_line;
        } else {
            unread.push_back(line);
            continue;
        }
        *where = line.number;
        any = true;
    }
    return any ? std::optional(std::move(reading)) : std::nullopt;
}
