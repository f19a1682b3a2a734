// titled_window SECONDS TITLE [COUNT]: shows a foreground window for that long, with COUNT times TITLE as its
// title. Prints "ready" once the window is in the foreground; exits with 1 if it never is.
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
    constexpr int kMostAttempts = 30'000;  // Ten minutes, or longer on a busy machine.
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

    // A predefined control class as the window, so that no class has to be registered.
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
