// Keeps a few report lines and then dies, or ends, as its argument says. Its report goes to the current
// directory.
#include <windows.h>

#include <cstdlib>
#include <functional>
#include <map>
#include <stdexcept>
#include <string>

#include "tools/vistrel_diag/report.h"
#include "tools/vistrel_diag/rescue.h"

namespace {

int volatile depth_reached = 0;

int OverflowStack(int depth) {
    char volatile frame[1024] = {};
    frame[depth % 1024] = 1;
    depth_reached = depth;
    return OverflowStack(depth + 1) + frame[0];
}

void AccessNothing() {
    int volatile* volatile nothing = nullptr;
    *nothing = 1;
}

void CrashOnAnotherThread() {
    HANDLE thread = CreateThread(
        nullptr, 0,
        [](void*) -> DWORD {
            AccessNothing();
            return 0;
        },
        nullptr, 0, nullptr);
    WaitForSingleObject(thread, INFINITE);
}

/// A hang: what would end the process comes from the test.
void Hang() {
    CreateFileW(L"hanging", GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
    Sleep(INFINITE);
}

void PressControlC() {
    GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0);
    Sleep(INFINITE);
}

void EndSession() {
    // What Windows sends every top-level window once the session really ends.
    HWND window = nullptr;
    for (int tries = 0; tries < 500 && window == nullptr; ++tries) {
        Sleep(10);
        window = FindWindowW(L"vistrel_diag session end", nullptr);
    }
    SendMessageW(window, WM_QUERYENDSESSION, 0, 0);
    SendMessageW(window, WM_ENDSESSION, TRUE, 0);
    ExitProcess(7);
}

}  // namespace

int main(int argument_count, char** arguments) {
    const std::string way = argument_count > 1 ? arguments[1] : "";
    const std::map<std::string, std::function<void()>> ways = {
        {"ordinary", [] {}},
        {"access-violation", AccessNothing},
        {"stack-overflow", [] { OverflowStack(0); }},
        {"abort", [] { std::abort(); }},
        {"uncaught-exception", [] { throw std::runtime_error("nobody catches this"); }},
        {"other-thread", CrashOnAnotherThread},
        {"hang", Hang},
        {"ctrl-c", PressControlC},
        {"session-end", EndSession},
    };
    const auto chosen = ways.find(way);
    if (chosen == ways.end()) {
        return 2;
    }
    Rescue rescue(Report::FilePath(""));
    if (argument_count > 2) {
        chosen->second();  // Before anything was kept.
    }
    Report::Section("GPUs");
    for (int line = 0; line < 1000; ++line) {  // More than one block of kept text.
        Report::Line("line %d of the report, long enough to fill the blocks it is kept in", line);
    }
    Report::Section("HEADSET / OPENXR");
    chosen->second();
    Report::Line("the last line");
    rescue.WriteOrdinaryReport([] { Report::WriteFile(""); });
    return 0;
}
