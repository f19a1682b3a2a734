// What else was running, the machine, its graphics cards and displays.
#include <algorithm>
#include <string>

#include "tools/vistrel_diag/sections/displays/display_reading.h"
#include "tools/vistrel_diag/sections/gpu_overrides/gpu_override_reading.h"
#include "tools/vistrel_diag/sections/gpus/gpu_reading.h"
#include "tools/vistrel_diag/sections/gpus/gpu_section.h"
#include "tools/vistrel_diag/sections/machine/machine_reading.h"
#include "tools/vistrel_diag/sections/running_software/running_software_reading.h"
#include "tools/vistrel_report/facts_of_sections.h"

namespace {

constexpr double kBytesPerMegabyte = 1048576.0;
constexpr double kBytesPerGigabyte = kBytesPerMegabyte * 1024.0;

double Megabytes(std::uint64_t bytes) {
    return static_cast<double>(bytes) / kBytesPerMegabyte;
}

/// The whole text as a number; none where it is anything else.
std::optional<std::int64_t> WholeNumber(const std::optional<std::string>& text) {
    std::uint32_t number = 0;
    if (text && LineScan(*text).Whole(number).IsWhole()) {
        return number;
    }
    return std::nullopt;
}

MemoryUse MemoryOf(const VideoMemoryUse& memory, LineNumber line, bool out_of_headroom) {
    return {Megabytes(memory.usage), Megabytes(memory.budget), line, out_of_headroom};
}

}  // namespace

void AddSoftware(const std::optional<RunningSoftwareReading>& reading, SoftwareFacts& facts) {
    if (!reading) {
        return;
    }
    for (std::size_t i = 0; i < reading->software.notable.size(); ++i) {
        facts.programs.push_back({reading->software.notable[i], reading->notable_lines.at(i)});
    }
    if (const auto& foreground = reading->software.foreground) {
        facts.foreground_program = TextFact{foreground->executable_name, reading->foreground_line};
        facts.foreground_title = TextFact{foreground->title, reading->foreground_line};
    }
    facts.product_running_line = reading->warning_line;
}

void AddMachine(const std::optional<MachineReading>& reading, MachineFacts& facts) {
    if (!reading) {
        return;
    }
    const MachineInfo& machine = reading->machine;
    if (machine.windows_name) {
        facts.windows = TextFact{*machine.windows_name, reading->windows_line};
    }
    facts.build = WholeNumber(machine.build_number);
    if (machine.processor_name) {
        facts.processor = TextFact{*machine.processor_name, reading->processor_line};
    }
    if (reading->processor_line != 0) {
        facts.logical_processors = machine.logical_processors;
    }
    if (machine.memory) {
        facts.memory_gb = Rounded(static_cast<double>(machine.memory->total) / kBytesPerGigabyte);
        facts.free_memory_gb = Rounded(static_cast<double>(machine.memory->available) / kBytesPerGigabyte);
        facts.memory_line = reading->memory_line;
    }
    if (reading->gpu_scheduling_line != 0) {
        const std::optional<std::uint32_t>& mode = machine.gpu_scheduling_mode;
        facts.gpu_scheduling = TextFact{!mode        ? "not set"
                                        : *mode == 1 ? "disabled"
                                        : *mode == 2 ? "ENABLED"
                                                     : "unknown value",
                                        reading->gpu_scheduling_line};
    }
}

void AddGpus(const std::optional<GpuReading>& reading, Facts& facts) {
    if (!reading) {
        return;
    }
    facts.gpu_list_failure_line = reading->factory_failed_line;
    for (std::size_t i = 0; i < reading->inventory.gpus.size(); ++i) {
        const auto& [info, memory] = reading->inventory.gpus[i];
        const GpuLines& lines = reading->lines.at(i);
        GpuFacts gpu;
        gpu.number = info.index;
        gpu.name = info.name;
        gpu.vendor = VendorName(info.vendor_id);
        gpu.software = info.software;
        gpu.line = lines.name;
        if (lines.memory != 0) {
            gpu.dedicated_mb = Megabytes(info.dedicated_video_memory);
            gpu.shared_mb = Megabytes(info.shared_system_memory);
        }
        gpu.displays = info.displays;
        if (memory) {
            gpu.memory = MemoryOf(*memory, lines.memory_in_use, false);
        }
        facts.gpus.push_back(gpu);
    }
}

void AddGameMemory(const std::optional<GameVideoMemoryReading>& reading, Facts& facts) {
    for (std::size_t i = 0; reading && i < reading->gpus.size(); ++i) {
        const auto& [info, memory] = reading->gpus[i];
        const std::int64_t number = info.index;
        auto gpu = std::find_if(facts.gpus.begin(), facts.gpus.end(),
                                [number](const GpuFacts& listed) { return listed.number == number; });
        if (gpu == facts.gpus.end()) {  // Part 1 is missing.
            GpuFacts only_here;
            only_here.number = number;
            only_here.name = info.name;
            only_here.line = reading->lines.at(i);
            gpu = facts.gpus.insert(gpu, only_here);
        }
        if (memory) {
            gpu->memory_in_two = MemoryOf(*memory, reading->lines.at(i), reading->OutOfHeadroom(i));
        }
    }
}

void AddDisplays(const std::optional<DisplayReading>& reading, Facts& facts) {
    if (!reading) {
        return;
    }
    for (const ReadDisplay& read : reading->displays) {
        const DisplayInfo& display = read.display;
        facts.displays.push_back({display.name, display.width, display.height, display.refresh_hz,
                                  display.primary, display.gpu, read.gpu_name, read.line});
    }
}

void AddOverrides(const std::optional<GpuOverrideReading>& reading, Facts& facts) {
    for (std::size_t i = 0; reading && reading->preferences && i < reading->preferences->size(); ++i) {
        const GpuPreference& preference = (*reading->preferences)[i];
        facts.overrides.push_back({preference.application, preference.choice, reading->lines.at(i)});
    }
}
