#include "platform/end_process.h"

#include <windows.h>

#include <cstdlib>

void EndProcess(unsigned exit_code) {
#ifndef VISTREL_COUNTS_LINES
    TerminateProcess(GetCurrentProcess(), exit_code);
#endif
    std::exit(static_cast<int>(exit_code));
}
