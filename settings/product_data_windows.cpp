#include "settings/product_data.h"

#include <shlobj.h>
#include <windows.h>

#include <array>

#include "platform/utf8.h"
#include "settings/diag_settings.h"
#include "settings/settings_file.h"

std::string ProductDataFolder() {
    std::array<wchar_t, MAX_PATH> local_data = {};
    if (FAILED(SHGetFolderPathW(nullptr, CSIDL_LOCAL_APPDATA, nullptr, 0, local_data.data()))) {
        return ".";
    }
    const std::wstring folder = std::wstring(local_data.data()) + L"\\Vistrel";
    CreateDirectoryW(folder.c_str(), nullptr);  // Usually it exists already.
    return Utf8FromWide(folder);
}

std::string ProductDataPath(std::string_view file_name) {
    return ProductDataFolder() + "\\" + std::string(file_name);
}

bool LoadProductSettings(std::string_view exe_dir) {
    const bool steam = DiagSettings::Instance().steam_build;
    return ApplyFirstSettingsFile(SettingsFileCandidates(
        ProductDataPath(steam ? "usersettings_steam.json" : "usersettings.json"), exe_dir));
}
