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
            // Ctrl-C ends a read at once, as a success; the handlers run on another thread, often later. By
            // then a run that took this for an empty line would have gone on.
            EndByControlC();
        }
        line.append(piece.data(), units);
        // Where input is not processed the carriage return stands alone.
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
    // Asked first, for a read of no events would wait for one.
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
