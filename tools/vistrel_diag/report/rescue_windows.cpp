#include "tools/vistrel_diag/report/rescue.h"

#include <windows.h>
// windows.h first
#include <winternl.h>

#include <array>
#include <atomic>
#include <string_view>

#include "platform/abort_handler.h"
#include "platform/end_process.h"
#include "platform/fault_module.h"
#include "platform/long_path.h"
#include "platform/utf8.h"
#include "tools/vistrel_diag/report/console_state.h"
#include "tools/vistrel_diag/report/report.h"
#include "tools/vistrel_diag/report/session_end_watch.h"

namespace {

enum class Stage { Idle, Armed, OrdinaryReport, Written, Rescuing, Rescued };

/// One atomic value, so that no thread sees one member without the other.
struct State {
    Stage stage = Stage::Idle;
    DWORD writer = 0;  ///< the thread that writes the file: in OrdinaryReport and Rescuing
};

constexpr DWORD kStackForHandler = 64 * 1024;  // Lets the handler run after a stack overflow.
constexpr DWORD kLongestWaitMs = 4000;         // Windows ends a process about 5 s after asking it to close.
constexpr std::size_t kLongestPath = 32767;    // In UTF-16 units, the limit of Windows.

std::atomic<State> state = State{};
static_assert(std::atomic<State>::is_always_lock_free);
std::array<wchar_t, kLongestPath + 1> path = {};  ///< in the kernel's form, "\??\C:\..."
std::size_t path_length = 0;
DWORD guaranteed_thread = 0;  ///< has stack left after an overflow
const void* overflow_address = nullptr;
LPTOP_LEVEL_EXCEPTION_FILTER filter_found = nullptr;
HANDLE overflow_seen = nullptr;    ///< event
HANDLE overflow_writer = nullptr;  ///< thread that waits for the event

/// Why the run ended.
struct Death {
    RunEnd end = RunEnd::Crash;
    DWORD exception_code = 0;       ///< of a crash
    const void* address = nullptr;  ///< where that happened
};

/// Whether all of it was written.
bool WriteAll(HANDLE file, std::string_view text) {
    DWORD written = 0;
    return WriteFile(file, text.data(), static_cast<DWORD>(text.size()), &written, nullptr) != FALSE &&
           written == text.size();
}

/// Opens the report file and empties it. Uses the kernel's own function, because CreateFileW allocates and
/// the crashed thread may hold the heap lock.
HANDLE CreateReportFile() {
    UNICODE_STRING name = {static_cast<USHORT>(path_length * sizeof(wchar_t)),
                           static_cast<USHORT>(path_length * sizeof(wchar_t)), path.data()};
    OBJECT_ATTRIBUTES attributes = {};
    InitializeObjectAttributes(&attributes, &name, OBJ_CASE_INSENSITIVE, nullptr, nullptr);
    // An older report is worth more than one that found nothing.
    const ULONG disposition = Report::HasFindings() ? FILE_OVERWRITE_IF : FILE_CREATE;
    HANDLE file = nullptr;
    IO_STATUS_BLOCK status = {};
    const NTSTATUS result =
        NtCreateFile(&file, GENERIC_WRITE | SYNCHRONIZE | FILE_READ_ATTRIBUTES, &attributes, &status, nullptr,
                     FILE_ATTRIBUTE_NORMAL, FILE_SHARE_READ | FILE_SHARE_WRITE, disposition,
                     FILE_SYNCHRONOUS_IO_NONALERT | FILE_NON_DIRECTORY_FILE, nullptr, 0);
    return result >= 0 ? file : nullptr;
}

/// Returns whether the file now contains everything kept and the closing line.
bool WriteFileCutShort(std::string_view closing_line) {
    HANDLE file = CreateReportFile();
    if (file == nullptr) {
        return false;
    }
    bool whole = true;
    Report::Text().ForEachPiece(
        [file, &whole](std::string_view piece) { whole = whole && WriteAll(file, piece); });
    whole = whole && WriteAll(file, "\r\n") && WriteAll(file, closing_line) && WriteAll(file, "\r\n");
    CloseHandle(file);
    return whole;
}

/// Uses no heap, no lock and no C stream: any of them may be what failed. Not inlined, because its callers
/// may run on a stack that has overflowed.
__attribute__((noinline)) void WriteReportCutShort(const Death& death) {
    std::array<char, 64> module = {};
    std::size_t offset = 0;
    if (death.address != nullptr) {
        FindFaultModule(death.address, module.data(), module.size());
        // Without a module an offset cannot be looked up.
        offset = module[0] != '\0' ? OffsetInModule(death.address) : 0;
    }
    std::array<char, 512> line = {};
    const std::size_t length =
        FormatCutShortLine(line.data(), line.size(), death.end, {death.exception_code, module.data(), offset},
                           Report::CurrentSection());
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

/// A user who double-clicked the tool needs time to read its window before it closes.
void WaitForEnterInOwnConsole() {
    if (!HasConsoleOfItsOwn()) {
        return;
    }
    WriteAll(GetStdHandle(STD_OUTPUT_HANDLE), "\r\nPress Enter to close.\r\n");
    HANDLE input = GetStdHandle(STD_INPUT_HANDLE);
    FlushConsoleInputBuffer(input);
    std::array<char, 64> answer = {};
    DWORD read = 0;
    ReadFile(input, answer.data(), static_cast<DWORD>(answer.size()), &read, nullptr);
}

/// Other threads have too little stack after an overflow, so a thread of our own waits to do the work. It
/// uses no heap, which the overflowed thread may have locked. It is not used for other crashes: the crashed
/// thread may hold a lock of Windows that only that thread can acquire again.
DWORD WINAPI WaitForOverflow(void* /*unused*/) {
    // The C runtime allocates per-thread data when a thread first formats a text.
    std::array<char, 64> unused = {};
    FormatCutShortLine(unused.data(), unused.size(), RunEnd::Crash, {}, "");
    WaitForSingleObject(overflow_seen, INFINITE);
    if (state.load().stage == Stage::Rescuing) {
        WriteReportCutShort({RunEnd::Crash, EXCEPTION_STACK_OVERFLOW, overflow_address});
        state = State{Stage::Rescued};
        WaitForEnterInOwnConsole();
    }
    return 0;
}

void BeginToWaitForOverflow() {
    overflow_seen = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    if (overflow_seen != nullptr) {
        overflow_writer = CreateThread(nullptr, 0, WaitForOverflow, nullptr, 0, nullptr);
    }
}

/// The handle of an event or a thread; null when there is none.
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

/// Whether there is anything worth writing. If the run has found nothing yet, only a crash is.
bool IsWorthRescuing(RunEnd end) {
    const bool died = end == RunEnd::Crash || end == RunEnd::Abort;
    return Report::HasFindings() || (died && Report::Text().size() > 0);
}

/// Returns true when the calling thread has to write the file. The ordinary report takes precedence while
/// another thread writes it.
bool ClaimRescue(RunEnd end) {
    const DWORD self = GetCurrentThreadId();
    State now = state;
    const bool may_write =
        now.stage == Stage::Armed || (now.stage == Stage::OrdinaryReport && now.writer == self);
    return may_write && IsWorthRescuing(end) && state.compare_exchange_strong(now, {Stage::Rescuing, self});
}

/// Does not wait for the calling thread, which may have crashed during the write.
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

/// Runs on the waiting thread. The user may read for any length of time.
void RescueOnOtherThread(const void* address) {
    overflow_address = address;
    SetEvent(overflow_seen);
    WaitForSingleObject(overflow_writer, HasConsoleOfItsOwn() ? INFINITE : kLongestWaitMs);
}

/// Returns when the report is written as far as possible; the process may end then. False when there was
/// nothing to do, or another thread did it.
bool RescueReport(const Death& death) {
    if (!ClaimRescue(death.end)) {
        WaitForOtherWriter();
        return false;
    }
    const bool little_stack =
        death.exception_code == EXCEPTION_STACK_OVERFLOW && GetCurrentThreadId() != guaranteed_thread;
    if (little_stack && overflow_writer != nullptr) {
        RescueOnOtherThread(death.address);
        return true;
    }
    WriteReportCutShort(death);
    state = State{Stage::Rescued};
    if (death.end == RunEnd::Crash || death.end == RunEnd::Abort) {
        WaitForEnterInOwnConsole();
    }
    return true;
}

/// The report is on the disk and only the cleanup is left. If a driver crashes in it, nothing is lost.
void EndIfReportIsWritten() {
    if (state.load().stage == Stage::Written) {
        EndProcess(0);
    }
}

LONG WINAPI OnUnhandledException(EXCEPTION_POINTERS* exception) {
    const DWORD code = exception->ExceptionRecord->ExceptionCode;
    const bool rescued = RescueReport({RunEnd::Crash, code, FaultAddress(*exception->ExceptionRecord)});
    PutConsoleBack();
    EndIfReportIsWritten();
    if (rescued) {
        // Ends the process at once with the exception's code, as Windows would. No more code runs in a broken
        // process, and no system dialog blocks the console.
        TerminateProcess(GetCurrentProcess(), code);
    }
    return EXCEPTION_CONTINUE_SEARCH;
}

void OnAbort(int /*signal*/) {
    RescueReport({RunEnd::Abort});
    PutConsoleBack();
    EndIfReportIsWritten();
}

BOOL WINAPI OnConsoleEvent(DWORD event) {
    RescueReport({event == CTRL_C_EVENT || event == CTRL_BREAK_EVENT ? RunEnd::ControlC
                  : event == CTRL_CLOSE_EVENT                        ? RunEnd::ConsoleClosed
                                                                     : RunEnd::SessionEnded});
    return FALSE;  // The event then ends the program as usual.
}

void OnSessionEnd(SessionEnd end) {
    if (end == SessionEnd::LogOffOrShutDown) {
        RescueReport({RunEnd::SessionEnded});
        return;
    }
    // The Restart Manager waits for the end of the process.
    RescueReport({RunEnd::ClosedByInstaller});
    PutConsoleBack();
    // Not ExitProcess: it ends the run's thread first, which may hold a lock that the DLLs need for their
    // end.
    TerminateProcess(GetCurrentProcess(), 0);
}

/// A runtime or a driver may have replaced the crash handlers; then the next crash would leave no report.
void ReinstallHandlers() {
    SetUnhandledExceptionFilter(OnUnhandledException);
    HandleAbort(OnAbort);
}

/// The path in the kernel's form; empty when there is none.
std::wstring KernelPath(const std::wstring& wide_path) {
    if (wide_path.starts_with(LR"(\\?\)")) {
        return LR"(\??\)" + wide_path.substr(4);
    }
    std::wstring whole(kLongestPath + 1, L'\0');
    whole.resize(
        GetFullPathNameW(wide_path.c_str(), static_cast<DWORD>(whole.size()), whole.data(), nullptr));
    if (whole.empty()) {
        return {};
    }
    return whole.starts_with(LR"(\\)") ? LR"(\??\UNC)" + whole.substr(1) : LR"(\??\)" + whole;
}

/// Does not return once another thread has begun to write the rescued report: the process is about to end.
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
    constexpr UINT kControlCExit = 0xC000013A;  // The exit code that Windows uses for Ctrl-C.
    RescueReport({RunEnd::ControlC});
    PutConsoleBack();
    ExitProcess(kControlCExit);
}

Rescue::Rescue(const std::string& report_path) {
    const std::wstring kernel_path = KernelPath(WideFromUtf8(OpenablePath(report_path)));
    if (kernel_path.empty() || kernel_path.size() > kLongestPath) {
        return;
    }
    path_length = kernel_path.copy(path.data(), kernel_path.size());
    guaranteed_thread = GetCurrentThreadId();
    state = State{Stage::Armed};
    ULONG stack = kStackForHandler;
    SetThreadStackGuarantee(&stack);
    BeginToWaitForOverflow();
    filter_found = SetUnhandledExceptionFilter(OnUnhandledException);
    HandleAbort(OnAbort);
    Report::SetSectionListener(ReinstallHandlers);
    SetConsoleCtrlHandler(OnConsoleEvent, TRUE);
    WatchForSessionEnd(OnSessionEnd);
}

void Rescue::WriteOrdinaryReport(const std::function<void()>& write) {
    GoOnTo({Stage::OrdinaryReport, GetCurrentThreadId()});
    write();
    GoOnTo({Stage::Written});
}

Rescue::~Rescue() {
    GoOnTo({Stage::Idle});
    StopWaitingForOverflow();
    StopWatchingForSessionEnd();
    SetConsoleCtrlHandler(OnConsoleEvent, FALSE);
    Report::SetSectionListener(nullptr);
    HandleAbort(nullptr);
    SetUnhandledExceptionFilter(filter_found);
}
