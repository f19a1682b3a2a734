#include "tools/vistrel_diag/worker/worker_death.h"

#include <windows.h>

#include <atomic>

#include "platform/abort_handler.h"
#include "platform/fault_module.h"
#include "tools/vistrel_diag/worker/worker_block.h"

namespace {

constexpr DWORD kStackForHandlers = 64 * 1024;  // So that they can run after a stack overflow.
constexpr DWORD kNoHeapInReport = 0x01;         // WER_FAULT_REPORTING_FLAG_NOHEAP
constexpr DWORD kNoReportWindow = 0x20;         // WER_FAULT_REPORTING_NO_UI
constexpr UINT kAbortExitCode = 3;              // As the C runtime's own abort has it.

std::atomic<WorkerBlock*> noted_block = nullptr;

/// For what is past every filter: a fail-fast, a damaged heap. mingw's header of it does not compile.
void KeepErrorReportingQuiet() {
    using SetFlags = HRESULT(WINAPI*)(DWORD flags);
    const auto set_flags =
        reinterpret_cast<SetFlags>(GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "WerSetFlags"));
    if (set_flags != nullptr) {
        set_flags(kNoHeapInReport | kNoReportWindow);
    }
}

/// Every exception passes here first, also those that a library handles itself. It is only noted: should the
/// process end with its code, it was this one. A library that puts its own unhandled-exception filter in
/// place of OnUnhandledException does not come in the way of that.
LONG CALLBACK NoteException(EXCEPTION_POINTERS* raised) {
    const EXCEPTION_RECORD& exception = *raised->ExceptionRecord;
    if (WorkerBlock* const block = noted_block; block != nullptr) {
        FindFaultModule(FaultAddress(exception), block->fault_module.data(), block->fault_module.size());
        block->exception_code.store(exception.ExceptionCode, std::memory_order_release);
    }
    return EXCEPTION_CONTINUE_SEARCH;
}

/// At once and with the exception's code, before Windows' error reporting hears of it.
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

/// The parent gets the same event and says what there is to say. Windows asks one process after the other:
/// the parent must not have to wait for this one.
BOOL WINAPI OnConsoleEvent(DWORD /*event*/) {
    TerminateProcess(GetCurrentProcess(), static_cast<UINT>(STATUS_CONTROL_C_EXIT));
    return TRUE;
}

}  // namespace

void NoteDeathIn(WorkerBlock& block) {
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

void StopNotingDeath() {
    noted_block = nullptr;
}
