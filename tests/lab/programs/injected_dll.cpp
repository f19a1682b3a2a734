// A DLL such as a game modification installs beside a program, with the name of a Windows DLL. Appends its
// path to the file named by VISTREL_INJECTED_LOG when it is loaded; its functions fail.
#include <windows.h>
// windows.h first
#include <d3d11.h>
#include <dxgi.h>

#include <array>
#include <cstdio>

namespace {

void NoteBeingLoaded(HINSTANCE module) {
    const wchar_t* const log = _wgetenv(L"VISTREL_INJECTED_LOG");
    std::FILE* const file = log == nullptr ? nullptr : _wfopen(log, L"ab");
    if (file == nullptr) {
        return;
    }
    std::array<wchar_t, MAX_PATH> path = {};
    GetModuleFileNameW(module, path.data(), static_cast<DWORD>(path.size()));
    std::fprintf(file, "%ls\n", path.data());
    std::fclose(file);
}

}  // namespace

extern "C" __declspec(dllexport) HRESULT WINAPI CreateDXGIFactory1(REFIID, void**) {
    return E_ACCESSDENIED;
}

extern "C" __declspec(dllexport) HRESULT WINAPI
    D3D11CreateDevice(IDXGIAdapter*, D3D_DRIVER_TYPE, HMODULE, UINT, const D3D_FEATURE_LEVEL*, UINT, UINT,
                      ID3D11Device**, D3D_FEATURE_LEVEL*, ID3D11DeviceContext**) {
    return E_ACCESSDENIED;
}

BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID) {
    if (reason == DLL_PROCESS_ATTACH) {
        NoteBeingLoaded(module);
    }
    return TRUE;
}
