// What the tool's start is compared with: a program that does nothing but say a line.
#include <cstdio>

int wmain(int, wchar_t**) {
    std::puts("=====================================================");
    std::fflush(stdout);
    return 0;
}
