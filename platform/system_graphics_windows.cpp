#include "platform/system_graphics.h"

#include <windows.h>
// windows.h first
#include <d3d11.h>
#include <dxgi.h>

#include "platform/library.h"

namespace {

struct SystemGraphics {
    LibraryFunction create_factory = FindSystemFunction(L"dxgi.dll", "CreateDXGIFactory1");
    LibraryFunction create_device = FindSystemFunction(L"d3d11.dll", "D3D11CreateDevice");
};

const SystemGraphics& Loaded() {
    static const SystemGraphics graphics;
    return graphics;
}

template <typename Object>
void Clear(Object** object) {
    if (object != nullptr) {
        *object = nullptr;
    }
}

}  // namespace

void LoadSystemGraphics() {
    Loaded();
}

HRESULT WINAPI CreateDXGIFactory1(REFIID riid, void** factory) {
    const LibraryFunction& create = Loaded().create_factory;
    if (create.function == nullptr) {
        Clear(factory);
        return create.missing;
    }
    return reinterpret_cast<decltype(&CreateDXGIFactory1)>(create.function)(riid, factory);
}

HRESULT WINAPI D3D11CreateDevice(IDXGIAdapter* adapter, D3D_DRIVER_TYPE driver_type, HMODULE software,
                                 UINT flags, const D3D_FEATURE_LEVEL* levels, UINT level_count,
                                 UINT sdk_version, ID3D11Device** device, D3D_FEATURE_LEVEL* level,
                                 ID3D11DeviceContext** context) {
    const LibraryFunction& create = Loaded().create_device;
    if (create.function == nullptr) {
        Clear(device);
        Clear(context);
        return create.missing;
    }
    return reinterpret_cast<decltype(&D3D11CreateDevice)>(create.function)(
        adapter, driver_type, software, flags, levels, level_count, sdk_version, device, level, context);
}
