#include "tools/vistrel_diag/report/console_mode.h"

#include <windows.h>

void SwitchQuickEditOff() {
    const HANDLE input = GetStdHandle(STD_INPUT_HANDLE);
    if (input == nullptr || input == INVALID_HANDLE_VALUE) {
        return;
    }
    DWORD mode = 0;
    if (GetConsoleMode(input, &mode) == 0 || (mode & ENABLE_QUICK_EDIT_MODE) == 0) {
        return;
    }
    // Without the extended flag Windows ignores a change of quick-edit.
    SetConsoleMode(input, (mode & ~static_cast<DWORD>(ENABLE_QUICK_EDIT_MODE)) | ENABLE_EXTENDED_FLAGS);
}
