#include "platform/module_folder.h"

#include <windows.h>

#include <array>

#include "platform/utf8.h"

std::string ExecutableFolder() {
    std::array<wchar_t, MAX_PATH> path = {};
    const DWORD length = GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
    if (length == 0 || length >= path.size()) {  // A path that fills the buffer has been cut.
        return {};
    }
    return FolderOfPath(Utf8FromWide({path.data(), length}));
}
