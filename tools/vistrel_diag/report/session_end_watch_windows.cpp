#include "tools/vistrel_diag/report/session_end_watch.h"

#include <windows.h>

namespace {

constexpr const wchar_t* kWindowClass = L"vistrel_diag session end";
constexpr DWORD kLongestThreadEndMs = 2000;

void (*session_end_callback)(SessionEnd end) = nullptr;
HANDLE watching_thread = nullptr;
DWORD watching_thread_id = 0;

LRESULT CALLBACK OnWindowMessage(HWND window, UINT message, WPARAM first, LPARAM second) {
    if (message == WM_ENDSESSION && first != FALSE) {  // FALSE: another program cancelled the log-off.
        const bool for_another = (static_cast<DWORD>(second) & ENDSESSION_CLOSEAPP) != 0;
        session_end_callback(for_another ? SessionEnd::ClosedForAnotherOne : SessionEnd::LogOffOrShutDown);
        return 0;
    }
    return DefWindowProcW(window, message, first, second);
}

DWORD WINAPI PumpMessages(void* /*unused*/) {
    WNDCLASSW window_class = {};
    window_class.lpfnWndProc = OnWindowMessage;
    window_class.hInstance = GetModuleHandleW(nullptr);
    window_class.lpszClassName = kWindowClass;
    if (RegisterClassW(&window_class) == 0) {
        return 0;
    }
    // A top-level window that is never shown; message-only windows do not receive the end of the session.
    HWND window = CreateWindowExW(WS_EX_TOOLWINDOW | WS_EX_NOACTIVATE, kWindowClass, L"", WS_POPUP, 0, 0, 0,
                                  0, nullptr, nullptr, window_class.hInstance, nullptr);
    MSG message = {};
    while (window != nullptr && GetMessageW(&message, nullptr, 0, 0) > 0) {
        DispatchMessageW(&message);
    }
    if (window != nullptr) {
        DestroyWindow(window);
    }
    UnregisterClassW(kWindowClass, window_class.hInstance);
    return 0;
}

}  // namespace

void WatchForSessionEnd(void (*on_session_end)(SessionEnd end)) {
    session_end_callback = on_session_end;
    watching_thread = CreateThread(nullptr, 0, PumpMessages, nullptr, 0, &watching_thread_id);
}

void StopWatchingForSessionEnd() {
    if (watching_thread == nullptr) {
        return;
    }
    // Fails until the thread has a message queue; the thread is still starting then, and a retry succeeds.
    for (DWORD waited = 0; waited < kLongestThreadEndMs; waited += 10) {
        PostThreadMessageW(watching_thread_id, WM_QUIT, 0, 0);
        if (WaitForSingleObject(watching_thread, 10) == WAIT_OBJECT_0) {
            break;
        }
    }
    CloseHandle(watching_thread);
    watching_thread = nullptr;
}
