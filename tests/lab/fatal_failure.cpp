#include "tests/lab/fatal_failure.h"

#include <windows.h>

#include <cstddef>
#include <cstdlib>

namespace lab {
namespace {

/// Reaches for what is beyond the stack's end. Leaves as much of the stack to the handler as a program on
/// Windows gets that had it guaranteed; Wine would leave next to nothing.
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

}  // namespace

void FailFatally(std::string_view failure) {
    if (failure == "crash") {
        AccessNothing(nullptr);
    } else if (failure == "crash_elsewhere") {
        HANDLE const thread = CreateThread(nullptr, 0, AccessNothing, nullptr, 0, nullptr);
        WaitForSingleObject(thread, INFINITE);
    } else if (failure == "overflow") {
        OverflowStack();
    } else if (failure == "abort") {
        std::abort();
    } else if (failure == "hang") {
        Sleep(INFINITE);
    }
}

}  // namespace lab
