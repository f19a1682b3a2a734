#include "tools/vistrel_diag/report/console_state.h"

#include <windows.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cwchar>
#include <string>

#include "platform/utf8.h"
#include "tools/vistrel_diag/report/console.h"
#include "tools/vistrel_diag/report/console_mode.h"
#include "tools/vistrel_diag/report/console_reader.h"
#include "tools/vistrel_diag/report/progress.h"

namespace {

/// The original state, to be restored. Any thread that ends the process may read it.
struct Found {
    std::atomic<bool> input_changed = false;
    DWORD input_mode = 0;
    std::atomic<bool> title_changed = false;
    std::array<wchar_t, 1024> title = {};  ///< longer ones are truncated
    bool title_known = false;
    DWORD output_mode = 0;
    bool output_mode_known = false;
    std::atomic<bool> taskbar_changed = false;
    std::atomic<bool> own_console = false;
    std::atomic<bool> shows_progress = false;
    bool knows_sequences = false;
};

Found& WhatWasFound() {
    static Found found;
    return found;
}

HANDLE Input() {
    return GetStdHandle(STD_INPUT_HANDLE);
}

HANDLE Output() {
    return GetStdHandle(STD_OUTPUT_HANDLE);
}

bool IsConsole(HANDLE handle) {
    DWORD mode = 0;
    return GetConsoleMode(handle, &mode) != FALSE;
}

/// Enables escape sequences on the console for its lifetime only: text that other code writes to the standard
/// error stream is not checked for sequences. Then restores the mode of the beginning, not that of just
/// before: the thread of Ctrl-C may do the same at this moment.
class SequencesObeyed {
  public:
    SequencesObeyed() {
        const Found& found = WhatWasFound();
        obeyed_ = found.output_mode_known &&
                  SetConsoleMode(Output(), found.output_mode | ENABLE_PROCESSED_OUTPUT |
                                               ENABLE_VIRTUAL_TERMINAL_PROCESSING) != FALSE;
    }
    ~SequencesObeyed() {
        if (obeyed_) {
            SetConsoleMode(Output(), WhatWasFound().output_mode);
        }
    }
    SequencesObeyed(const SequencesObeyed&) = delete;
    SequencesObeyed& operator=(const SequencesObeyed&) = delete;
    explicit operator bool() const { return obeyed_; }

  private:
    bool obeyed_ = false;
};

/// Windows Terminal and others show progress on the taskbar; other terminals ignore the sequence. `state`: 0
/// none, 1 a percentage, 3 busy. Allocates nothing.
void WriteTaskbarSequence(int state, int percent) {
    std::array<wchar_t, 32> sequence = {};
    const int units =
        std::swprintf(sequence.data(), sequence.size(), L"\x1b]9;4;%d;%d\x1b\\", state, percent);
    const SequencesObeyed obeyed;
    if (obeyed && units > 0) {
        DWORD written = 0;
        WriteConsoleW(Output(), sequence.data(), static_cast<DWORD>(units), &written, nullptr);
    }
}

int Columns() {
    constexpr int kUsual = 80;
    CONSOLE_SCREEN_BUFFER_INFO info = {};
    if (GetConsoleScreenBufferInfo(Output(), &info) == FALSE) {
        return kUsual;
    }
    return std::min<int>(info.dwSize.X, info.srWindow.Right - info.srWindow.Left + 1);
}

void SetTitle(std::string_view title) {
    if (WhatWasFound().shows_progress) {
        WhatWasFound().title_changed = true;
        SetConsoleTitleW(WideFromUtf8(std::string(title)).c_str());
    }
}

void SetTaskbar(Progress::Taskbar state, int percent) {
    if (!WhatWasFound().shows_progress || !WhatWasFound().knows_sequences) {
        return;
    }
    WhatWasFound().taskbar_changed = state != Progress::Taskbar::Nothing;
    switch (state) {
        case Progress::Taskbar::Nothing:
            WriteTaskbarSequence(0, 0);
            break;
        case Progress::Taskbar::Part:
            WriteTaskbarSequence(1, percent);
            break;
        case Progress::Taskbar::Busy:
            WriteTaskbarSequence(3, 0);
            break;
    }
}

constexpr Progress::Display kDisplay = {Columns, SetTitle, SetTaskbar};

void BeginWithInput() {
    Found& found = WhatWasFound();
    if (GetConsoleMode(Input(), &found.input_mode) == FALSE) {
        return;
    }
    found.input_changed = true;
    SwitchQuickEditOff();
    DWORD mode = 0;
    constexpr DWORD kWholeLines = ENABLE_PROCESSED_INPUT | ENABLE_LINE_INPUT | ENABLE_ECHO_INPUT;
    if (GetConsoleMode(Input(), &mode) != FALSE && (mode & kWholeLines) != kWholeLines) {
        SetConsoleMode(Input(), mode | kWholeLines);
    }
    SetConsoleReader(&RealConsoleReader());
}

void BeginWithOutput() {
    if (!IsConsole(Output())) {
        return;
    }
    Found& found = WhatWasFound();
    found.output_mode_known = GetConsoleMode(Output(), &found.output_mode) != FALSE;
    found.knows_sequences = static_cast<bool>(SequencesObeyed());
    found.title = {};
    found.title_known = GetConsoleTitleW(found.title.data(), static_cast<DWORD>(found.title.size())) != 0;
    found.shows_progress = true;
    SetConsoleWriter(WriteToConsole);
    Progress::SetDisplay(&kDisplay);
}

BOOL WINAPI OnConsoleEvent(DWORD /*event*/) {
    PutConsoleBack();
    return FALSE;  // The event then ends the program as usual.
}

}  // namespace

ConsoleState::ConsoleState() {
    DWORD process = 0;
    const bool alone = GetConsoleProcessList(&process, 1) == 1;
    WhatWasFound().own_console = alone && IsConsole(Input()) && IsConsole(Output());
    SetConsoleCtrlHandler(OnConsoleEvent, TRUE);
    BeginWithInput();
    BeginWithOutput();
}

ConsoleState::~ConsoleState() {
    Progress::SetDisplay(nullptr);
    SetConsoleWriter(nullptr);
    SetConsoleReader(nullptr);
    SetConsoleCtrlHandler(OnConsoleEvent, FALSE);
    PutConsoleBack();
    WhatWasFound().own_console = false;
}

void PutConsoleBack() {
    Found& found = WhatWasFound();
    found.shows_progress = false;  // A thread that is still measuring shows nothing more.
    if (found.taskbar_changed.exchange(false)) {
        WriteTaskbarSequence(0, 0);
    }
    if (found.title_changed.exchange(false) && found.title_known) {
        SetConsoleTitleW(found.title.data());
    }
    if (found.input_changed.exchange(false)) {
        // Without the extended flag Windows would not restore quick-edit.
        const bool quick_edit = (found.input_mode & ENABLE_QUICK_EDIT_MODE) != 0;
        SetConsoleMode(Input(), found.input_mode | (quick_edit ? ENABLE_EXTENDED_FLAGS : 0));
    }
    PutConsoleCodePageBack();
}

bool HasConsoleOfItsOwn() {
    return WhatWasFound().own_console;
}
