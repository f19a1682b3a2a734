// A function as GetProcAddress and import tables know it.
#pragma once

#include <windows.h>

namespace lab {

template <typename Function>
FARPROC AsProc(Function* function) {
    return reinterpret_cast<FARPROC>(reinterpret_cast<void*>(function));
}

}  // namespace lab
