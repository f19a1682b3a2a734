#include "tools/vistrel_diag/worker/worker_crash_record.h"

#include <windows.h>

#include <atomic>

#include "platform/abort_handler.h"
#include "platform/fault_module.h"
#include "tools/vistrel_diag/worker/worker_block.h"

namespace {

constexpr DWORD kStackForHandlers = 64 * 1024;  // Lets them run after a stack overflow.
constexpr DWORD kNoHeapInReport = 0x01;         // WER_FAULT_REPORTING_FLAG_NOHEAP
constexpr DWORD kNoReportWindow = 0x20;         // WER_FAULT_REPORTING_NO_UI
constexpr UINT kAbortExitCode = 3;              // The same as the C runtime's abort().

std::atomic<WorkerBlock*> noted_block = nullptr;

/// For crashes that no filter sees, such as a fail-fast or a corrupted heap. mingw's header does not compile.
void KeepErrorReportingQuiet() {
    using SetFlags = HRESULT(WINAPI*)(DWORD flags);
    const auto set_flags =
        reinterpret_cast<SetFlags>(GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "WerSetFlags"));
    if (set_flags != nullptr) {
        set_flags(kNoHeapInReport | kNoReportWindow);
    }
}

/// Called first for every exception, including those that a library handles itself. The exception is only
/// noted: if the process ends with its code, it was the cause. This works even if a library replaces
/// OnUnhandledException with its own filter.
LONG CALLBACK NoteException(EXCEPTION_POINTERS* raised) {
    const EXCEPTION_RECORD& exception = *raised->ExceptionRecord;
    if (WorkerBlock* const block = noted_block; block != nullptr) {
        FindFaultModule(FaultAddress(exception), block->fault_module.data(), block->fault_module.size());
        block->exception_code.store(exception.ExceptionCode, std::memory_order_release);
    }
    return EXCEPTION_CONTINUE_SEARCH;
}

/// Ends the process at once with the exception's code, before Windows Error Reporting starts.
LONG WINAPI OnUnhandledException(EXCEPTION_POINTERS* exception) {
    TerminateProcess(GetCurrentProcess(), exception->ExceptionRecord->ExceptionCode);
    return EXCEPTION_CONTINUE_SEARCH;
}

void OnAbort(int /*signal*/) {
    if (WorkerBlock* const block = noted_block; block != nullptr) {
        block->aborted = 1;
    }
    TerminateProcess(GetCurrentProcess(), kAbortExitCode);
}

/// The parent receives the same event and reports it. Windows notifies one process after the other, so the
/// parent must not have to wait for this one.
BOOL WINAPI OnConsoleEvent(DWORD /*event*/) {
    TerminateProcess(GetCurrentProcess(), static_cast<UINT>(STATUS_CONTROL_C_EXIT));
    return TRUE;
}

}  // namespace

void RecordCrashesIn(WorkerBlock& block) {
    noted_block = &block;
    SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX | SEM_NOOPENFILEERRORBOX);
    KeepErrorReportingQuiet();
    ULONG stack = kStackForHandlers;
    SetThreadStackGuarantee(&stack);
    AddVectoredExceptionHandler(/*first*/ 1, NoteException);
    SetUnhandledExceptionFilter(OnUnhandledException);
    HandleAbort(OnAbort);
    SetConsoleCtrlHandler(OnConsoleEvent, TRUE);
}

void StopRecordingCrashes() {
    noted_block = nullptr;
}
