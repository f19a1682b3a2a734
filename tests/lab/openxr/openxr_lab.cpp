#include "tests/lab/openxr/openxr_lab.h"

#include <windows.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include "platform/module_folder.h"
#include "platform/utf8.h"

namespace {

constexpr const wchar_t* kLoaderFile = L"openxr_loader.dll";
constexpr const wchar_t* kManifestVariable = L"VISTREL_LAB_OPENXR_MANIFEST";

/// The lab's libraries, relative to the test programs in the build tree; the test bundle has the same layout.
std::filesystem::path LibraryFolder(const std::string& name) {
    return std::filesystem::canonical(std::filesystem::path(WideFromUtf8(ExecutableFolder())) / ".." / "lab" /
                                      "openxr" / name);
}

bool UnderWine() {
    return GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr;
}

std::string ReadFile(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

std::filesystem::path FolderOf(LabLoader loader) {
    switch (loader) {
        case LabLoader::Genuine:
            return LibraryFolder("genuine_loader");
        case LabLoader::StandIn:
            return LibraryFolder("stand_in_loader");
        case LabLoader::WithoutCreate:
            return LibraryFolder("loader_without_create");
        case LabLoader::WithoutFind:
            return LibraryFolder("loader_without_find");
        case LabLoader::WithoutEnumerate:
            return LibraryFolder("loader_without_enumerate");
        case LabLoader::WithoutExports:
            return LibraryFolder("loader_without_exports");
        case LabLoader::None:
            break;
    }
    return LibraryFolder("openxr_runtime");  // A folder without a loader.
}

/// The genuine loader treats programs under Wine as elevated and reads only this registry value. It contains
/// an environment variable, so that every process can have its own runtime, or none.
void RegisterRuntimeWithWine() {
    constexpr std::wstring_view value = L"%VISTREL_LAB_OPENXR_MANIFEST%";
    const LSTATUS status =
        RegSetKeyValueW(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Khronos\\OpenXR\\1", L"ActiveRuntime", REG_EXPAND_SZ,
                        value.data(), static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t)));
    if (status != ERROR_SUCCESS) {
        throw std::runtime_error("cannot register the scripted OpenXR runtime");
    }
}

/// On Windows the installed runtime stays registered: the loader prefers this variable, unless the program
/// runs as administrator.
void RegisterRuntime(const std::filesystem::path& manifest) {
    if (UnderWine()) {
        RegisterRuntimeWithWine();
    } else {
        SetEnvironmentVariableW(L"XR_RUNTIME_JSON", manifest.c_str());
    }
}

std::filesystem::path MakeFolder() {
    std::array<wchar_t, MAX_PATH> temporary = {};
    GetTempPathW(static_cast<DWORD>(temporary.size()), temporary.data());
    static int number = 0;
    std::filesystem::path folder =
        std::filesystem::path(temporary.data()) /
        ("openxr-" + std::to_string(GetCurrentProcessId()) + "-" + std::to_string(++number));
    std::filesystem::remove_all(folder);
    std::filesystem::create_directories(folder);
    return folder;
}

}  // namespace

OpenXrLab::OpenXrLab(LabLoader loader, bool runtime_installed) : folder_(MakeFolder().wstring()) {
    const std::filesystem::path manifest = LibraryFolder("openxr_runtime") / "runtime.json";
    RegisterRuntime(manifest);
    SetEnvironmentVariableW(kManifestVariable, runtime_installed ? manifest.c_str() : nullptr);
    SetEnvironmentVariableW(L"VISTREL_LAB_OPENXR", (folder_ + L"\\script.txt").c_str());
    SetEnvironmentVariableW(L"VISTREL_LAB_OPENXR_LOG", (folder_ + L"\\log.txt").c_str());
    SetEnvironmentVariableW(L"XR_LOADER_DEBUG", nullptr);
    // Also removes the current directory from the search path.
    SetDllDirectoryW(FolderOf(loader).c_str());
    SetScript("");
}

OpenXrLab::~OpenXrLab() {
    UnloadLoader();
    SetDllDirectoryW(nullptr);
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
}

void OpenXrLab::SetScript(const std::string& script) const {
    std::filesystem::remove(std::filesystem::path(folder_) / "log.txt");
    std::ofstream(std::filesystem::path(folder_) / "script.txt", std::ios::binary) << script;
}

std::string OpenXrLab::Log() const {
    return ReadFile(std::filesystem::path(folder_) / "log.txt");
}

void OpenXrLab::UnloadLoader() {
    while (HMODULE loader = GetModuleHandleW(kLoaderFile)) {
        FreeLibrary(loader);
    }
}

std::string ReadSourceFile(const std::string& path_from_root) {
    const char* const given = std::getenv("VISTREL_SOURCE_FOLDER");  // Set outside the build machine.
    const std::filesystem::path path =
        std::filesystem::path(given != nullptr ? given : VISTREL_SOURCE_FOLDER) / path_from_root;
    if (!std::filesystem::exists(path)) {
        throw std::runtime_error("no file " + path.string());
    }
    return ReadFile(path);
}
