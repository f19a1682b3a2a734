#include "platform/console_utf8.h"

#include <windows.h>

#include <algorithm>
#include <atomic>
#include <string>

namespace {

/// The code page to put back; 0 while there is none. Windows calls the handler below on a thread of its own.
std::atomic<UINT> code_page_found = 0;

/// A control character as its picture, so that no window's title or device's name gives a terminal commands;
/// what text is laid out with stays.
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

/// Every line feed behind a carriage return. A console returns by itself only as long as nobody has switched
/// that off, which a program that ran there before may have done.
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
    return FALSE;  // The event then ends the program as it would have without this handler.
}

}  // namespace

bool StandardOutputIsConsole() {
    DWORD mode = 0;
    return GetConsoleMode(GetStdHandle(STD_OUTPUT_HANDLE), &mode) != 0;
}

void WriteToConsole(std::string_view text) {
    const int bytes = static_cast<int>(text.size());
    std::wstring wide(text.size(), L'\0');  // Never more units than there are bytes.
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
