// The baseline for the tool's start: a program that only prints a line.
#include <cstdio>

int wmain(int, wchar_t**) {
    std::puts("=====================================================");
    std::fflush(stdout);
    return 0;
}
