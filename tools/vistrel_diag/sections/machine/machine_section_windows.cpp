#include <windows.h>

#include "platform/registry.h"
#include "tools/vistrel_diag/report/report.h"
#include "tools/vistrel_diag/sections/machine/machine_section.h"

namespace {

std::optional<PhysicalMemory> ProbeMemory() {
    MEMORYSTATUSEX status = {};
    status.dwLength = sizeof(status);
    if (GlobalMemoryStatusEx(&status) == 0) {
        return std::nullopt;
    }
    return PhysicalMemory{status.ullTotalPhys, status.ullAvailPhys};
}

}  // namespace

MachineInfo ProbeMachine() {
    MachineInfo machine;
    const RegistryKey windows(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion");
    machine.windows_name = windows.ReadText(L"ProductName");
    machine.build_number = windows.ReadText(L"CurrentBuildNumber");
    machine.update_revision = windows.ReadNumber(L"UBR");

    const RegistryKey processor(HKEY_LOCAL_MACHINE, L"HARDWARE\\DESCRIPTION\\System\\CentralProcessor\\0");
    machine.processor_name = processor.ReadText(L"ProcessorNameString");
    SYSTEM_INFO system = {};
    GetNativeSystemInfo(&system);
    machine.logical_processors = system.dwNumberOfProcessors;

    machine.memory = ProbeMemory();

    const RegistryKey graphics(HKEY_LOCAL_MACHINE, L"SYSTEM\\CurrentControlSet\\Control\\GraphicsDrivers");
    machine.gpu_scheduling_mode = graphics.ReadNumber(L"HwSchMode");
    return machine;
}

void ReportMachineSection() {
    Report::Section("MACHINE");
    PrintMachineSection(ProbeMachine());
}
