#include "tools/vistrel_diag/rescue.h"

#include <windows.h>

#include <array>
#include <atomic>
#include <csignal>
#include <string_view>

#include "platform/utf8.h"
#include "tools/vistrel_diag/report.h"
#include "tools/vistrel_diag/session_end_watch.h"

namespace {

enum class Stage { Idle, Armed, OrdinaryReport, Rescuing };

constexpr DWORD kStackForHandler = 64 * 1024;  // So that the handler can run after a stack overflow.
constexpr DWORD kLongestWaitMs = 4000;         // Windows ends a process about 5 s after it was told to close.

std::atomic<Stage> stage = Stage::Idle;
std::array<wchar_t, 1024> path = {};

void WriteAll(HANDLE file, std::string_view text) {
    DWORD written = 0;
    WriteFile(file, text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
}

/// Uses no heap, no lock and no C stream: any of them may be what broke.
void WriteReportCutShort(RunEnd end, unsigned exception_code) {
    std::array<char, 256> line = {};
    const std::size_t length =
        FormatCutShortLine(line.data(), line.size(), end, exception_code, Report::CurrentSection());
    const std::string_view closing_line(line.data(), length);

    HANDLE file = CreateFileW(path.data(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                              CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file != INVALID_HANDLE_VALUE) {
        Report::Text().ForEachPiece([file](std::string_view piece) { WriteAll(file, piece); });
        WriteAll(file, "\r\n");
        WriteAll(file, closing_line);
        WriteAll(file, "\r\n");
        CloseHandle(file);
    }
    HANDLE console = GetStdHandle(STD_OUTPUT_HANDLE);
    WriteAll(console, "\r\n");
    WriteAll(console, closing_line);
    WriteAll(console,
             file != INVALID_HANDLE_VALUE
                 ? "\r\nThe lines found so far are in vistrel_diag_report.txt; please send that file.\r\n"
                 : "\r\nThe report file could not be written. Copy the text above instead.\r\n");
}

void WaitForOrdinaryReport() {
    for (DWORD waited = 0; stage == Stage::OrdinaryReport && waited < kLongestWaitMs; waited += 10) {
        Sleep(10);
    }
}

/// True when the calling thread is the one to write the file. Before the first line there is nothing to
/// rescue, and an older report is worth more than an empty one.
bool ClaimRescue(Stage from) {
    return Report::Text().size() > 0 && stage.compare_exchange_strong(from, Stage::Rescuing);
}

bool RescueAfterCrash(RunEnd end, unsigned exception_code) {
    if (!ClaimRescue(Stage::Armed) && !ClaimRescue(Stage::OrdinaryReport)) {
        return false;
    }
    WriteReportCutShort(end, exception_code);
    return true;
}

void RescueOnRequest(RunEnd end) {
    if (ClaimRescue(Stage::Armed)) {
        WriteReportCutShort(end, 0);
    } else {
        WaitForOrdinaryReport();
    }
}

LONG WINAPI OnUnhandledException(EXCEPTION_POINTERS* exception) {
    const DWORD code = exception->ExceptionRecord->ExceptionCode;
    if (RescueAfterCrash(RunEnd::Crash, code)) {
        // At once and with the exception's code, as Windows would; nothing more runs in what is broken, and
        // no dialog of the system's holds the console.
        TerminateProcess(GetCurrentProcess(), code);
    }
    return EXCEPTION_CONTINUE_SEARCH;
}

void OnAbort(int /*signal*/) {
    RescueAfterCrash(RunEnd::Abort, 0);
}

BOOL WINAPI OnConsoleEvent(DWORD event) {
    RescueOnRequest(event == CTRL_C_EVENT || event == CTRL_BREAK_EVENT ? RunEnd::ControlC
                    : event == CTRL_CLOSE_EVENT                        ? RunEnd::ConsoleClosed
                                                                       : RunEnd::SessionEnded);
    return FALSE;  // The event then ends the program as it would have.
}

void OnSessionEnd() {
    RescueOnRequest(RunEnd::SessionEnded);
}

}  // namespace

Rescue::Rescue(const std::string& report_path) {
    const std::wstring wide_path = WideFromUtf8(report_path);
    if (wide_path.empty() || wide_path.size() >= path.size()) {
        return;
    }
    path = {};
    wide_path.copy(path.data(), wide_path.size());
    stage = Stage::Armed;
    ULONG stack = kStackForHandler;
    SetThreadStackGuarantee(&stack);
    SetUnhandledExceptionFilter(OnUnhandledException);
    std::signal(SIGABRT, OnAbort);
    SetConsoleCtrlHandler(OnConsoleEvent, TRUE);
    WatchForSessionEnd(OnSessionEnd);
}

void Rescue::WriteOrdinaryReport(const std::function<void()>& write) {
    Stage armed = Stage::Armed;
    if (!stage.compare_exchange_strong(armed, Stage::OrdinaryReport) && armed == Stage::Rescuing) {
        Sleep(INFINITE);  // Another thread has begun to write the file and the process is about to end.
    }
    write();
    stage = Stage::Idle;
}

Rescue::~Rescue() {
    stage = Stage::Idle;
    StopWatchingForSessionEnd();
    SetConsoleCtrlHandler(OnConsoleEvent, FALSE);
    std::signal(SIGABRT, SIG_DFL);
    SetUnhandledExceptionFilter(nullptr);
}
