#include "tools/vistrel_diag/sections/machine/machine_section.h"

#include "tools/vistrel_diag/report/report.h"

namespace {

double Gigabytes(std::uint64_t bytes) {
    return static_cast<double>(bytes) / 1048576.0 / 1024.0;
}

const char* GpuSchedulingText(const std::optional<std::uint32_t>& mode) {
    if (!mode) {
        return "not set (driver default)";
    }
    switch (*mode) {
        case 1:
            return "disabled";
        case 2:
            return "ENABLED";
        default:
            return "unknown value";
    }
}

}  // namespace

void PrintMachineSection(const MachineInfo& machine) {
    const std::string update_revision =
        machine.update_revision ? std::to_string(*machine.update_revision) : std::string();
    Report::Line("OS              : %s (build %s.%s)", machine.windows_name.value_or("").c_str(),
                 machine.build_number.value_or("").c_str(), update_revision.c_str());
    Report::Line("CPU             : %s (%u logical)", machine.processor_name.value_or("").c_str(),
                 machine.logical_processors);
    const PhysicalMemory memory = machine.memory.value_or(PhysicalMemory());
    Report::Line("RAM             : %.1f GB total, %.1f GB free", Gigabytes(memory.total),
                 Gigabytes(memory.available));
    Report::Line("GPU scheduling  : %s", GpuSchedulingText(machine.gpu_scheduling_mode));
}
