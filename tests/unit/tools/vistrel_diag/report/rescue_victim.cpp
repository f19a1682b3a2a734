// Keeps a few report lines and then crashes, or ends, as its argument says. Its report goes to the folder
// named by VISTREL_RESCUE_VICTIM_FOLDER, or else to the current directory.
#include <windows.h>

#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <map>
#include <stdexcept>
#include <string>

#include "tests/lab/fatal_failure.h"
#include "tools/vistrel_diag/report/report.h"
#include "tools/vistrel_diag/report/rescue.h"

namespace {

void AccessNothing() {
    lab::FailFatally("crash");
}

void OverflowStack() {
    lab::FailFatally("overflow");
}

using Action = void (*)();

HANDLE StartThread(Action action) {
    return CreateThread(
        nullptr, 0,
        [](void* begun) -> DWORD {
            reinterpret_cast<Action>(begun)();
            return 0;
        },
        reinterpret_cast<void*>(action), 0, nullptr);
}

std::atomic<bool> writes_are_slow = false;
std::atomic<int> slow_writes = 0;

/// Looked up before the crash, because that takes locks.
const auto real_write_file =
    reinterpret_cast<decltype(&WriteFile)>(GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "WriteFile"));

BOOL WINAPI WriteSlowly(HANDLE file, const void* text, DWORD size, DWORD* written, OVERLAPPED* overlapped) {
    if (writes_are_slow) {
        ++slow_writes;
        Sleep(150);
    }
    return real_write_file(file, text, size, written, overlapped);
}

/// `first` begins to write the report, and while it does, `second` happens on the main thread.
void OneUponTheOther(Action first, Action second) {
    writes_are_slow = true;
    StartThread(first);
    while (slow_writes == 0) {
        Sleep(1);
    }
    second();
}

/// In the middle of an allocation, which the thread never completes.
void OverflowStackWithHeapLocked() {
    HeapLock(GetProcessHeap());
    OverflowStack();
}

LONG WINAPI FilterOfALibrary(EXCEPTION_POINTERS* /*exception*/) {
    TerminateProcess(GetCurrentProcess(), 77);
    return EXCEPTION_EXECUTE_HANDLER;
}

/// Like a runtime that installs its own crash reporter in one section, before a driver crashes in the next.
void CrashAfterALibraryTookTheFilter() {
    SetUnhandledExceptionFilter(FilterOfALibrary);
    Report::EnterSection("HEADSET / OPENXR");
    AccessNothing();
}

/// The main thread writes one line after the other.
void CrashAmidLines() {
    StartThread([] {
        Sleep(100);
        AccessNothing();
    });
    for (int line = 0;; ++line) {
        Report::Line("%08d", line);
    }
}

/// A hang: the test sends the event that ends the process.
void Hang() {
    CreateFileW(L"hanging", GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
    Sleep(INFINITE);
}

void SendControlC() {
    GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0);
}

void PressControlC() {
    SendControlC();
    Sleep(INFINITE);
}

/// This process's window, because another run of the tool may be active. Null until it exists.
HWND SessionEndWindow() {
    HWND window = nullptr;
    DWORD process = 0;
    do {
        window = FindWindowExW(nullptr, window, L"vistrel_diag session end", nullptr);
        GetWindowThreadProcessId(window, &process);
    } while (window != nullptr && process != GetCurrentProcessId());
    return window;
}

/// The messages that Windows sends to every top-level window when the user logs off: whether it may, and then
/// whether the session really ends. `reason`: the kind of end.
void AskToEndSession(bool ends, DWORD reason) {
    HWND window = nullptr;
    for (int tries = 0; tries < 500 && window == nullptr; ++tries) {
        Sleep(10);
        window = SessionEndWindow();
    }
    if (window == nullptr) {
        ExitProcess(9);
    }
    if (SendMessageW(window, WM_QUERYENDSESSION, 0, reason) != FALSE) {
        SendMessageW(window, WM_ENDSESSION, ends ? TRUE : FALSE, reason);
    }
}

void EndSession() {
    AskToEndSession(true, ENDSESSION_LOGOFF);
    ExitProcess(7);
}

/// The messages that the Restart Manager sends to programs that use a file that an installer replaces. It
/// waits for them to end.
void CloseForInstaller() {
    AskToEndSession(true, ENDSESSION_CLOSEAPP);
    Sleep(INFINITE);
}

/// The user cancelled the installer.
void CancelInstaller() {
    AskToEndSession(false, ENDSESSION_CLOSEAPP);
    if (GetFileAttributesW(L"vistrel_diag_report.txt") != INVALID_FILE_ATTRIBUTES) {
        ExitProcess(8);
    }
}

/// Another program cancels the log-off, and the run continues.
void CancelEndOfSession() {
    AskToEndSession(false, ENDSESSION_LOGOFF);
    if (GetFileAttributesW(L"vistrel_diag_report.txt") != INVALID_FILE_ATTRIBUTES) {
        ExitProcess(8);
    }
}

/// Exits with the stack that the main thread has left for a handler after an overflow, in KB.
void TellStackGuarantee() {
    ULONG size = 0;  // Zero queries the size without changing it.
    SetThreadStackGuarantee(&size);
    ExitProcess(size / 1024);
}

std::string ReportFolder() {
    const wchar_t* const folder = _wgetenv(L"VISTREL_RESCUE_VICTIM_FOLDER");
    const std::u8string text = std::filesystem::path(folder != nullptr ? folder : L"").u8string();
    return {text.begin(), text.end()};
}

}  // namespace

extern "C" {
decltype(&WriteFile) __imp_WriteFile = WriteSlowly;
}

int main(int argument_count, char** arguments) {
    const std::string way = argument_count > 1 ? arguments[1] : "";
    const std::map<std::string, std::function<void()>> ways = {
        {"ordinary", [] {}},
        {"access-violation", AccessNothing},
        {"stack-overflow", OverflowStack},
        {"abort", [] { lab::FailFatally("abort"); }},
        {"uncaught-exception", [] { throw std::runtime_error("nobody catches this"); }},
        {"other-thread", [] { lab::FailFatally("crash_elsewhere"); }},
        {"stack-overflow-on-other-thread", [] { WaitForSingleObject(StartThread(OverflowStack), INFINITE); }},
        {"stack-overflow-with-heap-locked", OverflowStackWithHeapLocked},
        {"stack-overflow-with-heap-locked-on-other-thread",
         [] { WaitForSingleObject(StartThread(OverflowStackWithHeapLocked), INFINITE); }},
        {"universal-abort", [] { lab::FailFatally("ucrt_abort"); }},
        {"library-took-the-filter", CrashAfterALibraryTookTheFilter},
        {"amid-lines", CrashAmidLines},
        {"crash-upon-crash", [] { OneUponTheOther(AccessNothing, AccessNothing); }},
        {"abort-upon-crash", [] { OneUponTheOther(AccessNothing, std::abort); }},
        {"ctrl-c-upon-crash", [] { OneUponTheOther(AccessNothing, PressControlC); }},
        {"crash-upon-ctrl-c", [] { OneUponTheOther(SendControlC, AccessNothing); }},
        {"end-upon-ctrl-c", [] { OneUponTheOther(SendControlC, [] {}); }},
        {"crash-in-ordinary-report", [] {}},
        {"crash-after-ordinary-report", [] {}},
        {"hang", Hang},
        {"ctrl-c", PressControlC},
        {"session-end", EndSession},
        {"installer", CloseForInstaller},
        {"installer-cancelled", CancelInstaller},
        {"session-end-cancelled", CancelEndOfSession},
        {"stack-guarantee", TellStackGuarantee},
    };
    const auto chosen = ways.find(way);
    if (chosen == ways.end()) {
        return 2;
    }
    const std::string folder = ReportFolder();
    Rescue rescue(Report::FilePath(folder));
    if (argument_count > 2) {
        chosen->second();  // Before any line is kept.
    }
    Report::Section("GPUs");
    for (int line = 0; line < 1000; ++line) {  // More than one block of kept text.
        Report::Line("line %d of the report, long enough to fill the blocks it is kept in", line);
    }
    Report::Section("HEADSET / OPENXR");
    chosen->second();
    Report::Line("the last line");
    rescue.WriteOrdinaryReport([&way, &folder] {
        Report::WriteFile(folder);
        if (way == "crash-in-ordinary-report") {
            AccessNothing();
        }
    });
    if (way == "crash-after-ordinary-report") {
        AccessNothing();
    }
    return 0;
}
