// The baseline for the tool's start and size: a program that only prints a line, but contains the libraries
// that the tool needs.
#include <d3d11.h>
#include <dxgi.h>
#include <shlobj.h>
#include <windows.h>

#include <cstdio>
#include <fstream>
#include <nlohmann/json.hpp>

namespace {

/// Never called; the reference keeps the linker from omitting the libraries.
bool UsesEveryLibrary(const wchar_t* path) {
    nlohmann::json keys;
    std::ifstream(reinterpret_cast<const char*>(path)) >> keys;
    return CreateDXGIFactory1(IID_IDXGIFactory1, nullptr) == S_OK && GetForegroundWindow() != nullptr &&
           D3D11CreateDevice(nullptr, D3D_DRIVER_TYPE_HARDWARE, nullptr, 0, nullptr, 0, D3D11_SDK_VERSION,
                             nullptr, nullptr, nullptr) == S_OK &&
           RegCloseKey(nullptr) == 0 && SHGetFolderPathW(nullptr, 0, nullptr, 0, nullptr) == S_OK &&
           keys.value("vistrel_scale", 0.0F) > 0.0F;
}

}  // namespace

int wmain(int count, wchar_t** arguments) {
    constexpr int kNeverSoMany = 1000;
    if (count > kNeverSoMany && UsesEveryLibrary(arguments[1])) {
        return 1;
    }
    std::puts("=====================================================");
    std::fflush(stdout);
    return 0;
}
