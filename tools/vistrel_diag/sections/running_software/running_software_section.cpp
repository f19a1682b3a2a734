#include "tools/vistrel_diag/sections/running_software/running_software_section.h"

#include <algorithm>
#include <array>

#include "platform/letter_case.h"
#include "platform/utf8.h"
#include "tools/vistrel_diag/report/console.h"
#include "tools/vistrel_diag/report/report.h"

namespace {

constexpr int kLongestWaitInSeconds = 60;

// The host application runs the product, so either process means that the product is running.
constexpr std::array<std::string_view, 2> kVistrelExecutables = {"Ambulo.exe", "Vistrel.exe"};

constexpr std::array<std::string_view, 10> kNotableExecutables = {
    "Ambulo.exe",       "Vistrel.exe",   "vrserver.exe",
    "vrcompositor.exe", "vrmonitor.exe", "VirtualDesktop.Streamer.exe",
    "OculusClient.exe", "obs64.exe",     "obs32.exe",
    "Parsec.exe"};

template <std::size_t Count>
bool IsAmong(const std::array<std::string_view, Count>& names, std::string_view executable_name) {
    return std::any_of(names.begin(), names.end(), [executable_name](std::string_view name) {
        return EqualsIgnoringAsciiCase(name, executable_name);
    });
}

void PrintVistrelWarning() {
    Report::Line("");
    Report::Line("!! Vistrel IS RUNNING. That changes how to read everything below:");
    Report::Line("!!   - screen capture will fail, because Vistrel already holds it");
    Report::Line("!!   - the warp and inference timings are inflated by competing with it for the GPU");
    Report::Line("!! For clean timings, close Vistrel and run this again.");
}

}  // namespace

bool IsVistrelExecutable(std::string_view executable_name) {
    return IsAmong(kVistrelExecutables, executable_name);
}

std::vector<std::string> NotablePrograms(const std::optional<ProcessSnapshot>& processes) {
    std::vector<std::string> notable;
    for (const RunningProcess& process : processes.value_or(ProcessSnapshot())) {
        if (IsAmong(kNotableExecutables, process.executable_name)) {
            notable.push_back(process.executable_name);
        }
    }
    return notable;
}

std::string ExecutableNameOf(std::uint32_t id, const std::optional<ProcessSnapshot>& processes) {
    for (const RunningProcess& process : processes.value_or(ProcessSnapshot())) {
        if (process.id == id) {
            return process.executable_name;
        }
    }
    return {};
}

std::string WindowTitleText(std::u16string_view title) {
    const bool ends_in_half_a_character = !title.empty() && title.back() >= 0xD800 && title.back() <= 0xDBFF;
    return Utf8FromUtf16(ends_in_half_a_character ? title.substr(0, title.size() - 1) : title);
}

bool IsVistrelRunning(const SnapshotSource& take_snapshot) {
    const ProcessSnapshot processes = take_snapshot().value_or(ProcessSnapshot());
    return std::any_of(processes.begin(), processes.end(), [](const RunningProcess& process) {
        return IsVistrelExecutable(process.executable_name);
    });
}

void WaitForVistrelToClose(const SnapshotSource& take_snapshot, const std::function<void()>& wait_a_second) {
    ConsolePrint(
        "\n  Vistrel is running. It holds the screen capture, so please close it now.\n"
        "  Waiting");
    FlushConsole();
    for (int i = 0; i < kLongestWaitInSeconds && IsVistrelRunning(take_snapshot); ++i) {
        ConsolePrint(".");
        FlushConsole();
        wait_a_second();
    }
    if (IsVistrelRunning(take_snapshot)) {
        ConsolePrint("\n  Still running - carrying on anyway; the report will say so.\n");
    } else {
        ConsolePrint("\n  Closed, thank you. Continuing.\n");
    }
}

void PrintRunningSoftwareSection(const RunningSoftwareInfo& software) {
    if (software.notable.empty()) {
        Report::Line("Nothing notable - no Vistrel, no SteamVR, no capture software.");
    }
    for (const std::string& name : software.notable) {
        Report::Line("  %s", name.c_str());
    }
    if (software.foreground) {
        Report::Line("Foreground app  : %s  \"%s\"", software.foreground->executable_name.c_str(),
                     software.foreground->title.c_str());
    }
    if (std::any_of(software.notable.begin(), software.notable.end(), IsVistrelExecutable)) {
        PrintVistrelWarning();
    }
}
