#include "tests/lab/machine/fault_watch.h"

#include <wrl/client.h>

#include <atomic>

#include "tests/lab/machine/fault_points.h"
#include "tests/lab/machine/vtable.h"

namespace lab {
namespace {

using Microsoft::WRL::ComPtr;

constexpr std::size_t kDuplicateOutputSlot = 22;

using DuplicateOutputFunction = HRESULT(STDMETHODCALLTYPE*)(IDXGIOutput1*, IUnknown*,
                                                            IDXGIOutputDuplication**);
std::atomic<DuplicateOutputFunction> real_duplicate_output = nullptr;

/// A duplication object can only be obtained by duplicating, so its class is watched when the first one is
/// created.
HRESULT STDMETHODCALLTYPE DuplicateOutputAndWatch(IDXGIOutput1* output, IUnknown* device,
                                                  IDXGIOutputDuplication** duplication) {
    const HRESULT result = real_duplicate_output.load()(output, device, duplication);
    if (SUCCEEDED(result)) {
        WatchMethods(*duplication, {{8, "IDXGIOutputDuplication::AcquireNextFrame"},
                                    {14, "IDXGIOutputDuplication::ReleaseFrame"}});
    }
    return result;
}

void WatchOutput(IDXGIOutput* output) {
    ComPtr<IDXGIOutput1> duplicable;
    if (SUCCEEDED(output->QueryInterface(IID_PPV_ARGS(&duplicable)))) {
        ReplaceVtableSlot(duplicable.Get(), kDuplicateOutputSlot, &DuplicateOutputAndWatch,
                          real_duplicate_output);
        WatchMethods(duplicable.Get(), {{22, "IDXGIOutput1::DuplicateOutput"}});
    }
    WatchMethods(output, {{0, "IDXGIOutput::QueryInterface"}, {7, "IDXGIOutput::GetDesc"}});
}

void WatchAdapter(IDXGIAdapter1* adapter) {
    ComPtr<IDXGIOutput> output;
    if (SUCCEEDED(adapter->EnumOutputs(0, &output))) {
        WatchOutput(output.Get());
    }
    ComPtr<IDXGIAdapter3> with_memory;
    if (SUCCEEDED(adapter->QueryInterface(IID_PPV_ARGS(&with_memory)))) {
        WatchMethods(with_memory.Get(), {{14, "IDXGIAdapter3::QueryVideoMemoryInfo"}});
    }
    WatchMethods(adapter, {{0, "IDXGIAdapter::QueryInterface"},
                           {6, "IDXGIAdapter::GetParent"},
                           {7, "IDXGIAdapter::EnumOutputs"},
                           {8, "IDXGIAdapter::GetDesc"},
                           {10, "IDXGIAdapter1::GetDesc1"}});
}

/// All textures share the same classes, including the frames of a duplication.
void WatchTexture(ID3D11Device* device) {
    D3D11_TEXTURE2D_DESC description = {};
    description.Width = 1;
    description.Height = 1;
    description.MipLevels = 1;
    description.ArraySize = 1;
    description.Format = DXGI_FORMAT_B8G8R8A8_UNORM;
    description.SampleDesc.Count = 1;
    description.BindFlags = D3D11_BIND_RENDER_TARGET;
    description.MiscFlags = D3D11_RESOURCE_MISC_GDI_COMPATIBLE;
    ComPtr<ID3D11Texture2D> texture;
    if (FAILED(device->CreateTexture2D(&description, nullptr, &texture))) {
        return;
    }
    ComPtr<IDXGIResource> resource;
    if (SUCCEEDED(texture->QueryInterface(IID_PPV_ARGS(&resource)))) {
        WatchMethods(resource.Get(), {{0, "IDXGIResource::QueryInterface"}});
    }
    ComPtr<IDXGISurface1> surface;
    if (SUCCEEDED(texture->QueryInterface(IID_PPV_ARGS(&surface)))) {
        WatchMethods(surface.Get(), {{11, "IDXGISurface1::GetDC"}, {12, "IDXGISurface1::ReleaseDC"}});
    }
    WatchMethods(texture.Get(), {{0, "ID3D11Texture2D::QueryInterface"}});
}

void WatchContext(ID3D11Device* device) {
    ComPtr<ID3D11DeviceContext> context;
    device->GetImmediateContext(&context);
    WatchMethods(context.Get(), {{14, "ID3D11DeviceContext::Map"}, {29, "ID3D11DeviceContext::GetData"}});
}

using OpenXrFunction = void (*)();
using GetInstanceFunction = int(WINAPI*)(void* instance, const char* name, OpenXrFunction* function);
std::atomic<GetInstanceFunction> real_get_instance_function = nullptr;

int WINAPI GetInstanceFunctionAndWatch(void* instance, const char* name, OpenXrFunction* function) {
    const int result = real_get_instance_function.load()(instance, name, function);
    if (result >= 0 && function != nullptr && *function != nullptr) {
        *function =
            reinterpret_cast<OpenXrFunction>(WatchedFunction(name, reinterpret_cast<void*>(*function)));
    }
    return result;
}

}  // namespace

void WatchFactory(IDXGIFactory1* factory) {
    ComPtr<IDXGIAdapter1> adapter;
    if (SUCCEEDED(factory->EnumAdapters1(0, &adapter))) {
        WatchAdapter(adapter.Get());
    }
    WatchMethods(factory, {{0, "IDXGIFactory::QueryInterface"}, {12, "IDXGIFactory1::EnumAdapters1"}});
}

void WatchDevice(ID3D11Device* device) {
    WatchTexture(device);
    WatchContext(device);
    ComPtr<IDXGIDevice> dxgi_device;
    if (SUCCEEDED(device->QueryInterface(IID_PPV_ARGS(&dxgi_device)))) {
        WatchMethods(dxgi_device.Get(), {{7, "IDXGIDevice::GetAdapter"}});
    }
    WatchMethods(device, {{0, "ID3D11Device::QueryInterface"},
                          {3, "ID3D11Device::CreateBuffer"},
                          {5, "ID3D11Device::CreateTexture2D"},
                          {7, "ID3D11Device::CreateShaderResourceView"},
                          {9, "ID3D11Device::CreateRenderTargetView"},
                          {12, "ID3D11Device::CreateVertexShader"},
                          {15, "ID3D11Device::CreatePixelShader"},
                          {23, "ID3D11Device::CreateSamplerState"},
                          {24, "ID3D11Device::CreateQuery"}});
}

FARPROC WatchOpenXrLookup(FARPROC get_instance_function) {
    real_get_instance_function =
        reinterpret_cast<GetInstanceFunction>(reinterpret_cast<void*>(get_instance_function));
    return reinterpret_cast<FARPROC>(reinterpret_cast<void*>(&GetInstanceFunctionAndWatch));
}

}  // namespace lab
