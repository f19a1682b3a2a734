// sleeper SECONDS: prints "ready", then does nothing for that long. A copy under another name runs as a
// process of that name.
#include <windows.h>

#include <cstdio>
#include <cwchar>

int wmain(int argument_count, wchar_t** arguments) {
    const double seconds = argument_count > 1 ? std::wcstod(arguments[1], nullptr) : 0.0;
    std::puts("ready");
    std::fflush(stdout);
    Sleep(static_cast<DWORD>(seconds * 1000.0));
    return 0;
}
