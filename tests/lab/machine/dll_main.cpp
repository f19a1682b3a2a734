// The machine as a DLL: sets itself up when it is loaded and writes its counts when the process ends.
#include <windows.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>

#include "platform/utf8.h"
#include "tests/lab/console/console_functions.h"
#include "tests/lab/machine/clock.h"
#include "tests/lab/machine/fault_points.h"
#include "tests/lab/machine/import_patch.h"
#include "tests/lab/machine/machine.h"
#include "tests/lab/machine/process_functions.h"

namespace {

std::wstring EnvironmentText(const wchar_t* name) {
    std::wstring text(32768, L'\0');
    text.resize(GetEnvironmentVariableW(name, text.data(), static_cast<DWORD>(text.size())));
    return text;
}

/// Sets up a console if the environment names a script. False when the script cannot be read.
bool SetUpConsoleIfThereIsOne() {
    const std::wstring path = EnvironmentText(L"VISTREL_LAB_CONSOLE");
    if (path.empty() || lab::IsChild()) {  // Only the program itself has a person at its console.
        return true;
    }
    std::ifstream file{std::filesystem::path(path)};
    try {
        lab::SetUpConsole(lab::ReadConsoleScript(file), EnvironmentText(L"VISTREL_LAB_CONSOLE_RECORD"));
    } catch (const lab::ConsoleScriptError&) {
        return false;
    }
    return !file.bad();
}

bool SetUp() {
    std::ifstream file{std::filesystem::path(EnvironmentText(L"VISTREL_LAB_SCENARIO"))};
    if (!file) {
        return false;
    }
    try {
        lab::SetUpMachine(lab::ReadScenario(file));
    } catch (const lab::ScenarioError&) {
        return false;
    }
    const std::string& library = lab::TheMachine().scenario.library;
    if (!library.empty()) {
        LoadLibraryW(WideFromUtf8(library).c_str());
    }
    if (!SetUpConsoleIfThereIsOne()) {
        return false;
    }
    lab::MakeHangEvent();
    lab::SetUpFaults();
    lab::PatchProgramImports();
    return true;
}

}  // namespace

// For another test DLL in the process that simulates work.
extern "C" __declspec(dllexport) void LabPassTime(std::int64_t microseconds) {
    lab::PassTime(microseconds);
}

BOOL WINAPI DllMain(HINSTANCE, DWORD reason, LPVOID) {
    if (reason == DLL_PROCESS_ATTACH) {
        return SetUp() ? TRUE : FALSE;
    }
    if (reason == DLL_PROCESS_DETACH) {
        lab::TellConsoleOfEnd();
        lab::WriteAccounts();
    }
    return TRUE;
}
