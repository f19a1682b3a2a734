#include "tools/vistrel_diag/report/console_reader.h"

#include <windows.h>

#include <algorithm>
#include <array>
#include <string>

#include "platform/utf8.h"
#include "tools/vistrel_diag/report/rescue.h"

namespace {

HANDLE Input() {
    return GetStdHandle(STD_INPUT_HANDLE);
}

void ForgetTypedAhead() {
    FlushConsoleInputBuffer(Input());
}

std::optional<std::string> ReadLine() {
    std::wstring line;
    std::array<wchar_t, 256> piece = {};
    for (bool whole = false; !whole;) {
        DWORD units = 0;
        if (ReadConsoleW(Input(), piece.data(), static_cast<DWORD>(piece.size()), &units, nullptr) == FALSE) {
            return std::nullopt;
        }
        if (units == 0) {
            // Ctrl-C ends a read at once and the call succeeds; the handlers run on another thread, often
            // later. A run that treated this as an empty line would have continued by then.
            EndByControlC();
        }
        line.append(piece.data(), units);
        // Without processed input a carriage return has no line feed.
        whole = line.back() == L'\n' || (line.back() == L'\r' && units < piece.size());
    }
    line.erase(line.find_last_not_of(L"\r\n") + 1);
    return Utf8FromWide(line);
}

bool IsEnter(const INPUT_RECORD& record) {
    return record.EventType == KEY_EVENT && record.Event.KeyEvent.bKeyDown != FALSE &&
           (record.Event.KeyEvent.wVirtualKeyCode == VK_RETURN ||
            record.Event.KeyEvent.uChar.UnicodeChar == L'\r');
}

bool EnterWasPressed() {
    std::array<INPUT_RECORD, 16> records = {};
    DWORD waiting = 0;
    // Checked first, because a read without pending events would block.
    while (GetNumberOfConsoleInputEvents(Input(), &waiting) != FALSE && waiting > 0) {
        DWORD read = 0;
        const auto count = std::min<DWORD>(waiting, static_cast<DWORD>(records.size()));
        if (ReadConsoleInputW(Input(), records.data(), count, &read) == FALSE) {
            return false;
        }
        if (std::any_of(records.begin(), records.begin() + read, IsEnter)) {
            return true;
        }
    }
    return false;
}

constexpr ConsoleReader kRealConsoleReader = {ForgetTypedAhead, ReadLine, EnterWasPressed};

}  // namespace

const ConsoleReader& RealConsoleReader() {
    return kRealConsoleReader;
}
