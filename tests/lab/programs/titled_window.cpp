// titled_window SECONDS TITLE [COUNT]: shows a window in the foreground for that long, its title TITLE, COUNT
// times over. Prints "ready" once the window is in the foreground; ends with 1 when it does not get there.
#include <windows.h>

#include <cstdio>
#include <cwchar>
#include <string>

namespace {

void HandleMessages() {
    MSG message = {};
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != FALSE) {
        DispatchMessageW(&message);
    }
}

bool BringToForeground(HWND window) {
    constexpr int kMostAttempts = 30'000;  // Ten minutes, and longer on a loaded machine.
    for (int i = 0; i < kMostAttempts && GetForegroundWindow() != window; ++i) {
        SetForegroundWindow(window);
        HandleMessages();
        Sleep(20);
    }
    return GetForegroundWindow() == window;
}

}  // namespace

int wmain(int argument_count, wchar_t** arguments) {
    const double seconds = argument_count > 1 ? std::wcstod(arguments[1], nullptr) : 0.0;
    const std::wstring once = argument_count > 2 ? arguments[2] : L"";
    const long count = argument_count > 3 ? std::wcstol(arguments[3], nullptr, 10) : 1;
    std::wstring title;
    for (long i = 0; i < count; ++i) {
        title += once;
    }

    // A control as the window itself: no class of our own is needed.
    const HWND window = CreateWindowExW(0, L"STATIC", title.c_str(), WS_OVERLAPPEDWINDOW | WS_VISIBLE, 40, 40,
                                        320, 200, nullptr, nullptr, GetModuleHandleW(nullptr), nullptr);
    if (window == nullptr || !BringToForeground(window)) {
        return 1;
    }
    std::puts("ready");
    std::fflush(stdout);

    const ULONGLONG end = GetTickCount64() + static_cast<ULONGLONG>(seconds * 1000.0);
    while (GetTickCount64() < end) {
        HandleMessages();
        Sleep(20);
    }
    return 0;
}
