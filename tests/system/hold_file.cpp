// Holds a file open for writing until its standard input ends, like another program that is using the file.
//
//     hold_file PATH none|read|write        how the file is shared with others meanwhile
#include <windows.h>

#include <cstdio>
#include <cwchar>

int wmain(int count, wchar_t** arguments) {
    if (count != 3) {
        return 2;
    }
    DWORD share = 0;
    if (std::wcscmp(arguments[2], L"read") == 0) {
        share = FILE_SHARE_READ;
    } else if (std::wcscmp(arguments[2], L"write") == 0) {
        share = FILE_SHARE_READ | FILE_SHARE_WRITE;
    }
    const HANDLE file = CreateFileW(arguments[1], GENERIC_READ | GENERIC_WRITE, share, nullptr, OPEN_EXISTING,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        return 1;
    }
    std::puts("held");
    std::fflush(stdout);
    while (std::getchar() != EOF) {
    }
    CloseHandle(file);
    return 0;
}
