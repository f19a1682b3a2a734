#include "platform/console_utf8.h"

#include <windows.h>

#include <algorithm>
#include <atomic>
#include <string>

namespace {

/// The code page to restore; 0 while there is none. Windows calls the handler below on its own thread.
std::atomic<UINT> code_page_found = 0;

/// Replaces control characters by their Unicode control pictures, so that a window title or device name
/// cannot send commands to the terminal. Those used for layout are kept.
wchar_t Shown(wchar_t unit) {
    constexpr wchar_t kFirstPicture = 0x2400;
    constexpr wchar_t kDelete = 0x7F;
    if (unit == L'\n' || unit == L'\r' || unit == L'\t') {
        return unit;
    }
    if (unit < L' ') {
        return static_cast<wchar_t>(kFirstPicture + unit);
    }
    if (unit == kDelete) {
        return kFirstPicture + 0x21;
    }
    return unit > kDelete && unit < 0xA0 ? L'\uFFFD' : unit;
}

/// Puts a carriage return before every line feed. A console adds one itself only while that mode is enabled,
/// and a program that ran there before may have disabled it.
std::wstring WithWholeLineEnds(const std::wstring& text) {
    std::wstring result;
    for (const wchar_t unit : text) {
        if (unit == L'\n' && (result.empty() || result.back() != L'\r')) {
            result += L'\r';
        }
        result += unit;
    }
    return result;
}

BOOL WINAPI OnConsoleEvent(DWORD /*event*/) {
    PutConsoleCodePageBack();
    return FALSE;  // The event then ends the program as usual.
}

}  // namespace

bool StandardOutputIsConsole() {
    DWORD mode = 0;
    return GetConsoleMode(GetStdHandle(STD_OUTPUT_HANDLE), &mode) != 0;
}

void WriteToConsole(std::string_view text) {
    const int bytes = static_cast<int>(text.size());
    std::wstring wide(text.size(), L'\0');  // UTF-16 never has more units than UTF-8 has bytes.
    wide.resize(
        static_cast<std::size_t>(MultiByteToWideChar(CP_UTF8, 0, text.data(), bytes, wide.data(), bytes)));
    std::transform(wide.begin(), wide.end(), wide.begin(), Shown);
    const std::wstring shown = WithWholeLineEnds(wide);
    DWORD written = 0;
    WriteConsoleW(GetStdHandle(STD_OUTPUT_HANDLE), shown.data(), static_cast<DWORD>(shown.size()), &written,
                  nullptr);
}

void PutConsoleCodePageBack() {
    if (const UINT code_page = code_page_found.exchange(0); code_page != 0) {
        SetConsoleOutputCP(code_page);
    }
}

ConsoleUtf8Output::ConsoleUtf8Output() : is_console_(StandardOutputIsConsole()) {
    if (!is_console_) {
        return;
    }
    code_page_found = GetConsoleOutputCP();
    SetConsoleCtrlHandler(OnConsoleEvent, TRUE);
    SetConsoleOutputCP(CP_UTF8);
}

ConsoleUtf8Output::~ConsoleUtf8Output() {
    if (is_console_) {
        SetConsoleCtrlHandler(OnConsoleEvent, FALSE);
        PutConsoleCodePageBack();
    }
}
