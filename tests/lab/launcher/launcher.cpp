// Runs a program on a simulated machine:
//
//     vistrel_lab.exe SCENARIO PROGRAM [ARGUMENT ...]
//
// The program inherits the console, the input and the current directory; the exit code is the program's. If
// the run is not possible, the error stream says why, and the exit code is 125.
#include <windows.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>

#include "platform/unique_handle.h"
#include "tests/lab/launcher/command_line_text.h"
#include "tests/lab/launcher/process_start.h"
#include "tests/lab/machine/scenario.h"

namespace {

namespace fs = std::filesystem;

constexpr int kCannotRun = 125;

int Complain(const std::string& what) {
    std::fprintf(stderr, "vistrel_lab: %s\n", what.c_str());
    return kCannotRun;
}

/// The error in the scenario; empty if there is none.
std::string ScenarioProblem(const fs::path& path) {
    std::ifstream file(path);
    if (!file) {
        return "cannot open " + path.string();
    }
    try {
        lab::ReadScenario(file);
    } catch (const lab::ScenarioError& error) {
        return path.string() + ", " + error.what();
    }
    return {};
}

fs::path MachineLibrary() {
    std::wstring path(32768, L'\0');
    path.resize(GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
    return fs::path(path).parent_path() / L"vistrel_lab_machine.dll";
}

/// A job that ends the other program when this one ends.
KernelHandle KillingJob() {
    KernelHandle job(CreateJobObjectW(nullptr, nullptr));
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits = {};
    limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
    SetInformationJobObject(job.get(), JobObjectExtendedLimitInformation, &limits, sizeof(limits));
    return job;
}

std::optional<PROCESS_INFORMATION> StartSuspended(const std::wstring& command_line) {
    STARTUPINFOW startup = {};
    startup.cb = sizeof(startup);
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = GetStdHandle(STD_INPUT_HANDLE);
    startup.hStdOutput = GetStdHandle(STD_OUTPUT_HANDLE);
    startup.hStdError = GetStdHandle(STD_ERROR_HANDLE);
    return lab::CreateSuspended(nullptr, command_line, 0, &startup);
}

/// Ctrl-C is handled by the program; this process waits until that ends.
BOOL WINAPI StayForConsoleEvent(DWORD /*event*/) {
    return TRUE;
}

int Run(const fs::path& scenario, const std::wstring& command_line) {
    SetEnvironmentVariableW(L"VISTREL_LAB_SCENARIO", fs::absolute(scenario).c_str());
    const std::optional<PROCESS_INFORMATION> started = StartSuspended(command_line);
    if (!started) {
        return Complain("the program cannot be started, error " + std::to_string(GetLastError()));
    }
    const KernelHandle process(started->hProcess);
    const KernelHandle thread(started->hThread);
    const KernelHandle job = KillingJob();
    AssignProcessToJobObject(job.get(), process.get());
    if (!lab::LoadLibraryInto(process.get(), MachineLibrary())) {
        TerminateProcess(process.get(), kCannotRun);
        return Complain("the machine cannot be loaded into the program");
    }
    SetConsoleCtrlHandler(StayForConsoleEvent, TRUE);
    const UINT code_page = GetConsoleOutputCP();
    ResumeThread(thread.get());
    WaitForSingleObject(process.get(), INFINITE);
    DWORD exit_code = kCannotRun;
    GetExitCodeProcess(process.get(), &exit_code);
    if (exit_code > 0xFF) {  // Wine passes only the last byte to Linux.
        std::fprintf(stderr, "vistrel_lab: the program ended with 0x%08lX\n", exit_code);
    }
    if (const UINT left = GetConsoleOutputCP(); left != code_page) {
        std::fprintf(stderr, "vistrel_lab: the program left the console in code page %u\n", left);
    }
    return static_cast<int>(exit_code);
}

}  // namespace

int wmain(int argument_count, wchar_t** arguments) {
    if (argument_count < 3) {
        return Complain("usage: vistrel_lab.exe SCENARIO PROGRAM [ARGUMENT ...]");
    }
    const fs::path scenario = arguments[1];
    if (const std::string problem = ScenarioProblem(scenario); !problem.empty()) {
        return Complain(problem);
    }
    std::wstring command_line;
    for (int i = 2; i < argument_count; ++i) {
        command_line += (command_line.empty() ? L"" : L" ") + lab::QuotedArgument(arguments[i]);
    }
    return Run(scenario, command_line);
}
