#include "tests/lab/machine/module_functions.h"

#include <algorithm>
#include <string>

#include "platform/utf8.h"
#include "tests/lab/machine/machine.h"

namespace lab {

DWORD WINAPI SimulatedGetModuleFileNameW(HMODULE module, LPWSTR path, DWORD size) {
    const std::wstring told = WideFromUtf8(TheMachine().scenario.program_path);
    if (module != nullptr || told.empty() || size == 0) {
        return GetModuleFileNameW(module, path, size);
    }
    const std::size_t fitting = std::min<std::size_t>(told.size(), size - 1);
    path[told.copy(path, fitting)] = L'\0';
    SetLastError(fitting < told.size() ? ERROR_INSUFFICIENT_BUFFER : ERROR_SUCCESS);
    return fitting < told.size() ? size : static_cast<DWORD>(fitting);
}

}  // namespace lab
