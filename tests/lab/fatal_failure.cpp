#include "tests/lab/fatal_failure.h"

#include <windows.h>

#include <cstddef>
#include <cstdlib>
#include <map>

namespace lab {
namespace {

/// Accesses memory beyond the end of the stack. Leaves the handler as much stack as Windows guarantees a
/// program that asked for it; Wine would leave next to nothing.
void OverflowStack() {
    constexpr std::size_t kLeft = std::size_t{24} * 1024;
    ULONG_PTR low = 0;
    ULONG_PTR high = 0;
    GetCurrentThreadStackLimits(&low, &high);
    const std::size_t used = high - reinterpret_cast<ULONG_PTR>(&low);
    auto volatile* const most = static_cast<char*>(__builtin_alloca(high - low - used - kLeft));
    most[0] = 1;
    auto volatile* const too_much = static_cast<char*>(__builtin_alloca(2 * kLeft));
    too_much[0] = 1;
}

DWORD WINAPI AccessNothing(void* /*unused*/) {
    int volatile* volatile nothing = nullptr;
    *nothing = 1;
    return 0;
}

/// The same as ucrtbase.dll in a program built with Microsoft's compiler: its own SIGABRT handler, then a
/// fail-fast.
void AbortInUniversalRuntime() {
    HMODULE library = LoadLibraryW(L"ucrtbase.dll");
    reinterpret_cast<void (*)()>(GetProcAddress(library, "abort"))();
}

void FailFast() {
    constexpr unsigned kFatalAppExit = 7;
    asm volatile("int $0x29" : : "c"(kFatalAppExit));
}

/// Windows ends the process without calling any handler. Wine does not detect such corruption.
void CorruptHeap() {
    constexpr UINT kHeapCorruption = 0xC0000374;
    TerminateProcess(GetCurrentProcess(), kHeapCorruption);
}

void ThrowAsMicrosoft() {
    constexpr DWORD kCppException = 0xE06D7363;
    constexpr ULONG_PTR kMagic = 0x19930520;
    HMODULE own = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       reinterpret_cast<LPCWSTR>(&ThrowAsMicrosoft), &own);
    const ULONG_PTR arguments[] = {kMagic, 0, 0, reinterpret_cast<ULONG_PTR>(own)};
    RaiseException(kCppException, EXCEPTION_NONCONTINUABLE, 4, arguments);
}

/// INT_MIN / -1. Windows raises an exception each time the instruction is retried; Wine turns the real one
/// into a division by zero.
void OverflowInteger() {
    const auto raise = reinterpret_cast<void(NTAPI*)(EXCEPTION_RECORD*)>(
        GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "RtlRaiseException"));
    for (;;) {
        EXCEPTION_RECORD exception = {};
        exception.ExceptionCode = EXCEPTION_INT_OVERFLOW;
        raise(&exception);
    }
}

[[noreturn]] void Hang() {
    wchar_t name[MAX_PATH] = {};
    if (GetEnvironmentVariableW(kHangVariable, name, MAX_PATH) != 0) {
        SetEvent(OpenEventW(EVENT_MODIFY_STATE, FALSE, name));
    }
    for (;;) {
        Sleep(INFINITE);
    }
}

using Failure = void (*)();

const std::map<std::string_view, Failure>& Failures() {
    static const std::map<std::string_view, Failure> failures = {
        {"crash", [] { AccessNothing(nullptr); }},
        {"crash_elsewhere",
         [] { WaitForSingleObject(CreateThread(nullptr, 0, AccessNothing, nullptr, 0, nullptr), INFINITE); }},
        {"overflow", OverflowStack},
        {"abort", std::abort},
        {"ucrt_abort", AbortInUniversalRuntime},
        {"fail_fast", FailFast},
        {"heap_corruption", CorruptHeap},
        {"terminate", [] { TerminateProcess(GetCurrentProcess(), 42); }},
        {"cpp_exception", ThrowAsMicrosoft},
        {"overflow_of_integer", OverflowInteger},
        {"hang", Hang},
    };
    return failures;
}

}  // namespace

void FailFatally(std::string_view failure) {
    if (const auto found = Failures().find(failure); found != Failures().end()) {
        found->second();
    }
}

}  // namespace lab
