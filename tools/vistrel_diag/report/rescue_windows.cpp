#include "tools/vistrel_diag/report/rescue.h"

#include <windows.h>

#include <array>
#include <atomic>
#include <csignal>
#include <string_view>

#include "platform/long_path.h"
#include "platform/utf8.h"
#include "tools/vistrel_diag/report/console_state.h"
#include "tools/vistrel_diag/report/report.h"
#include "tools/vistrel_diag/report/session_end_watch.h"

namespace {

enum class Stage { Idle, Armed, OrdinaryReport, Rescuing, Rescued };

/// Together, so that nobody sees one without the other.
struct State {
    Stage stage = Stage::Idle;
    DWORD writer = 0;  ///< the thread that writes the file: in OrdinaryReport and Rescuing
};

constexpr DWORD kStackForHandler = 64 * 1024;  // So that the handler can run after a stack overflow.
constexpr DWORD kLongestWaitMs = 4000;         // Windows ends a process about 5 s after it was told to close.
constexpr std::size_t kLongestPath = 32767;    // In UTF-16 units; Windows has no longer ones.

std::atomic<State> state = State{};
static_assert(std::atomic<State>::is_always_lock_free);
std::array<wchar_t, kLongestPath + 1> path = {};
LPTOP_LEVEL_EXCEPTION_FILTER filter_found = nullptr;
HANDLE overflow_seen = nullptr;    ///< event
HANDLE overflow_writer = nullptr;  ///< thread, waits for the event

/// Whether all of it was written.
bool WriteAll(HANDLE file, std::string_view text) {
    DWORD written = 0;
    return WriteFile(file, text.data(), static_cast<DWORD>(text.size()), &written, nullptr) != FALSE &&
           written == text.size();
}

/// Whether the file now holds everything kept and the closing line.
bool WriteFileCutShort(std::string_view closing_line) {
    // An older report is worth more than one that found nothing.
    const DWORD disposition = Report::HasFindings() ? CREATE_ALWAYS : CREATE_NEW;
    HANDLE file = CreateFileW(path.data(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                              disposition, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        return false;
    }
    bool whole = true;
    Report::Text().ForEachPiece(
        [file, &whole](std::string_view piece) { whole = whole && WriteAll(file, piece); });
    whole = whole && WriteAll(file, "\r\n") && WriteAll(file, closing_line) && WriteAll(file, "\r\n");
    CloseHandle(file);
    return whole;
}

/// Uses no heap, no lock and no C stream: any of them may be what broke. Not inlined, for its callers may run
/// on a stack that has overflowed.
__attribute__((noinline)) void WriteReportCutShort(RunEnd end, unsigned exception_code) {
    std::array<char, 256> line = {};
    const std::size_t length =
        FormatCutShortLine(line.data(), line.size(), end, exception_code, Report::CurrentSection());
    const std::string_view closing_line(line.data(), length);
    const bool written = WriteFileCutShort(closing_line);

    HANDLE console = GetStdHandle(STD_OUTPUT_HANDLE);
    WriteAll(console, "\r\n");
    WriteAll(console, closing_line);
    WriteAll(console,
             written ? "\r\nThe lines found so far are in vistrel_diag_report.txt; please send that file.\r\n"
                     : "\r\nThe report file could not be written. Copy the text above instead.\r\n");
    PutConsoleBack();
}

/// What is left of an overflowed stack is too little for that, above all on a thread that is not ours; so a
/// thread stands by for it. For anything else it would be the wrong one: the crashed thread may hold a lock
/// of Windows' that only itself can pass again.
DWORD WINAPI WaitForOverflow(void* /*unused*/) {
    WaitForSingleObject(overflow_seen, INFINITE);
    if (state.load().stage == Stage::Rescuing) {
        WriteReportCutShort(RunEnd::Crash, EXCEPTION_STACK_OVERFLOW);
    }
    return 0;
}

void BeginToWaitForOverflow() {
    overflow_seen = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    if (overflow_seen != nullptr) {
        overflow_writer = CreateThread(nullptr, 0, WaitForOverflow, nullptr, 0, nullptr);
    }
}

/// Of an event or a thread; null is none.
void CloseAndForget(HANDLE& handle) {
    if (handle != nullptr) {
        CloseHandle(handle);
        handle = nullptr;
    }
}

void StopWaitingForOverflow() {
    if (overflow_writer != nullptr) {
        SetEvent(overflow_seen);
        WaitForSingleObject(overflow_writer, kLongestWaitMs);
    }
    CloseAndForget(overflow_writer);
    CloseAndForget(overflow_seen);
}

/// Whether there is anything that support would miss. Of a run that found nothing, that is its crash alone.
bool IsWorthRescuing(RunEnd end) {
    const bool died = end == RunEnd::Crash || end == RunEnd::Abort;
    return Report::HasFindings() || (died && Report::Text().size() > 0);
}

/// True when the calling thread is the one to write the file. While another thread writes the ordinary
/// report, that is the better one.
bool ClaimRescue(RunEnd end) {
    const DWORD self = GetCurrentThreadId();
    State now = state;
    const bool may_write =
        now.stage == Stage::Armed || (now.stage == Stage::OrdinaryReport && now.writer == self);
    return may_write && IsWorthRescuing(end) && state.compare_exchange_strong(now, {Stage::Rescuing, self});
}

/// Does not wait for the calling thread, which may have crashed while it was writing.
void WaitForOtherWriter() {
    for (DWORD waited = 0; waited < kLongestWaitMs; waited += 10) {
        const State now = state;
        const bool writing = now.stage == Stage::OrdinaryReport || now.stage == Stage::Rescuing;
        if (!writing || now.writer == GetCurrentThreadId()) {
            return;
        }
        Sleep(10);
    }
}

/// Returns when the report stands in its file as well as it can: then the process may end. False when there
/// was nothing to do, or another thread did it.
bool RescueReport(RunEnd end, unsigned exception_code) {
    if (!ClaimRescue(end)) {
        WaitForOtherWriter();
        return false;
    }
    if (exception_code == EXCEPTION_STACK_OVERFLOW && overflow_writer != nullptr) {
        SetEvent(overflow_seen);
        WaitForSingleObject(overflow_writer, kLongestWaitMs);
    } else {
        WriteReportCutShort(end, exception_code);
    }
    state = State{Stage::Rescued};
    return true;
}

LONG WINAPI OnUnhandledException(EXCEPTION_POINTERS* exception) {
    const DWORD code = exception->ExceptionRecord->ExceptionCode;
    const bool rescued = RescueReport(RunEnd::Crash, code);
    PutConsoleBack();
    if (rescued) {
        // At once and with the exception's code, as Windows would; nothing more runs in what is broken, and
        // no dialog of the system's holds the console.
        TerminateProcess(GetCurrentProcess(), code);
    }
    return EXCEPTION_CONTINUE_SEARCH;
}

void OnAbort(int /*signal*/) {
    RescueReport(RunEnd::Abort, 0);
    PutConsoleBack();
}

BOOL WINAPI OnConsoleEvent(DWORD event) {
    RescueReport(event == CTRL_C_EVENT || event == CTRL_BREAK_EVENT ? RunEnd::ControlC
                 : event == CTRL_CLOSE_EVENT                        ? RunEnd::ConsoleClosed
                                                                    : RunEnd::SessionEnded,
                 0);
    return FALSE;  // The event then ends the program as it would have.
}

void OnSessionEnd(SessionEnd end) {
    if (end == SessionEnd::LogOffOrShutDown) {
        RescueReport(RunEnd::SessionEnded, 0);
        return;
    }
    // The Restart Manager waits for the end of the process.
    RescueReport(RunEnd::ClosedByInstaller, 0);
    PutConsoleBack();
    ExitProcess(0);
}

/// Does not return once another thread has begun to write the report cut short: the process is about to end.
void GoOnTo(State next) {
    State now = state;
    while (now.stage != Stage::Rescuing && now.stage != Stage::Rescued) {
        if (state.compare_exchange_weak(now, next)) {
            return;
        }
    }
    Sleep(INFINITE);
}

}  // namespace

void EndByControlC() {
    constexpr UINT kControlCExit = 0xC000013A;  // What Windows itself ends such a process with.
    RescueReport(RunEnd::ControlC, 0);
    PutConsoleBack();
    ExitProcess(kControlCExit);
}

Rescue::Rescue(const std::string& report_path) {
    const std::wstring wide_path = WideFromUtf8(OpenablePath(report_path));
    if (wide_path.empty() || wide_path.size() > kLongestPath) {
        return;
    }
    path.fill(L'\0');
    wide_path.copy(path.data(), wide_path.size());
    state = State{Stage::Armed};
    ULONG stack = kStackForHandler;
    SetThreadStackGuarantee(&stack);
    BeginToWaitForOverflow();
    filter_found = SetUnhandledExceptionFilter(OnUnhandledException);
    std::signal(SIGABRT, OnAbort);
    SetConsoleCtrlHandler(OnConsoleEvent, TRUE);
    WatchForSessionEnd(OnSessionEnd);
}

void Rescue::WriteOrdinaryReport(const std::function<void()>& write) {
    GoOnTo({Stage::OrdinaryReport, GetCurrentThreadId()});
    write();
    GoOnTo({Stage::Idle});
}

Rescue::~Rescue() {
    GoOnTo({Stage::Idle});
    StopWaitingForOverflow();
    StopWatchingForSessionEnd();
    SetConsoleCtrlHandler(OnConsoleEvent, FALSE);
    std::signal(SIGABRT, SIG_DFL);
    SetUnhandledExceptionFilter(filter_found);
}
