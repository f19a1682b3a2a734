#include "settings/product_data.h"

#include <shlobj.h>
#include <windows.h>

#include <array>

#include "platform/utf8.h"
#include "settings/diag_settings.h"
#include "settings/settings_file.h"

namespace {

/// The same text when the code page of the process is UTF-8, as the manifest asks for; before Windows 10 1903
/// it is not.
std::string Utf8FromCodePage(const std::string& text) {
    const int size = static_cast<int>(text.size());
    std::wstring wide(text.size(), L'\0');
    const int length = MultiByteToWideChar(CP_ACP, 0, text.data(), size, wide.data(), size);
    return length > 0 ? Utf8FromWide({wide.data(), static_cast<std::size_t>(length)}) : text;
}

}  // namespace

std::string ProductDataFolder() {
    std::array<char, MAX_PATH> local_data = {};
    if (FAILED(SHGetFolderPathA(nullptr, CSIDL_LOCAL_APPDATA, nullptr, 0, local_data.data()))) {
        return ".";
    }
    const std::string folder = std::string(local_data.data()) + "\\Vistrel";
    CreateDirectoryA(folder.c_str(), nullptr);  // Mostly it is there already.
    return Utf8FromCodePage(folder);
}

std::string ProductDataPath(std::string_view file_name) {
    return ProductDataFolder() + "\\" + std::string(file_name);
}

bool LoadProductSettings(std::string_view exe_dir) {
    const bool steam = DiagSettings::Instance().steam_build;
    return ApplyFirstSettingsFile(SettingsFileCandidates(
        ProductDataPath(steam ? "usersettings_steam.json" : "usersettings.json"), exe_dir));
}
