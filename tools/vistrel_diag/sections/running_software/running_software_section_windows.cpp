#include <windows.h>

#include <algorithm>
#include <array>

#include "tools/vistrel_diag/report/report.h"
#include "tools/vistrel_diag/sections/running_software/running_software_section.h"

namespace {

constexpr std::size_t kTitleUnits = 512;  // Including the terminating zero; a longer title is truncated.

std::string TitleOf(HWND window) {
    std::array<wchar_t, kTitleUnits> title = {};
    const int length = GetWindowTextW(window, title.data(), static_cast<int>(title.size()));
    const auto units = static_cast<std::size_t>(std::max(length, 0));
    return WindowTitleText(std::u16string(title.begin(), title.begin() + std::min(units, kTitleUnits - 1)));
}

std::optional<ForegroundApplication> ProbeForegroundApplication() {
    const HWND window = GetForegroundWindow();
    if (window == nullptr) {
        return std::nullopt;
    }
    DWORD process_id = 0;
    const bool has_process = GetWindowThreadProcessId(window, &process_id) != 0;
    ForegroundApplication application;
    application.title = TitleOf(window);
    if (has_process) {  // The window may be closed already, and 0 is the id of the idle process.
        // A new snapshot: the foreground program may have started after the earlier one.
        application.executable_name = ExecutableNameOf(process_id, TakeProcessSnapshot());
    }
    return application;
}

}  // namespace

RunningSoftwareInfo ProbeRunningSoftware() {
    RunningSoftwareInfo software;
    software.notable = NotablePrograms(TakeProcessSnapshot());
    software.foreground = ProbeForegroundApplication();
    return software;
}

bool IsVistrelRunning() {
    return IsVistrelRunning(TakeProcessSnapshot);
}

void WaitForVistrelToClose() {
    WaitForVistrelToClose(TakeProcessSnapshot, [] { Sleep(1000); });
}

void ReportRunningSoftwareSection() {
    Report::Section("WHAT ELSE WAS RUNNING DURING THIS TEST");
    PrintRunningSoftwareSection(ProbeRunningSoftware());
}
