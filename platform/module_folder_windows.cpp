#include "platform/module_folder.h"

#include <windows.h>

#include <array>
#include <string_view>

#include "platform/utf8.h"

std::string ExecutableFolder() {
    std::array<wchar_t, MAX_PATH> path = {};
    const DWORD length = GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
    if (length == 0 || length >= path.size()) {  // A path that fills the buffer has been truncated.
        return {};
    }
    const std::wstring_view wide(path.data(), length);
    const std::string text = Utf8FromWide(wide);
    // A path with an unpaired surrogate cannot be converted without loss, so no file could be opened with it.
    return WideFromUtf8(text) == wide ? FolderOfPath(text) : std::string();
}

std::wstring ExecutablePath() {
    constexpr std::size_t kLongestPath = 32767;  // In UTF-16 units, the limit of Windows.
    std::wstring path(kLongestPath + 1, L'\0');
    const DWORD length = GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
    path.resize(length < path.size() ? length : 0);
    return path;
}
