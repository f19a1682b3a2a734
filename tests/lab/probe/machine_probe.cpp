// Lists the machine as a program sees it through the functions that a scenario replaces: adapters with their
// outputs, the device that can be made on each, display devices, the cursor.
#include <windows.h>
// windows.h first
#include <d3d11.h>
#include <dxgi1_4.h>
#include <wrl/client.h>

#include <cstdio>
#include <cstring>

#include "platform/utf8.h"

namespace {

using Microsoft::WRL::ComPtr;

void ShowDevice(IDXGIAdapter1* adapter) {
    ComPtr<ID3D11Device> device;
    const HRESULT result = D3D11CreateDevice(adapter, D3D_DRIVER_TYPE_UNKNOWN, nullptr, 0, nullptr, 0,
                                             D3D11_SDK_VERSION, &device, nullptr, nullptr);
    std::printf("  device 0x%08lX\n", static_cast<unsigned long>(result));
    ComPtr<IDXGIDevice> dxgi_device;
    ComPtr<IDXGIAdapter> owner;
    DXGI_ADAPTER_DESC description = {};
    if (device && SUCCEEDED(device.As(&dxgi_device)) && SUCCEEDED(dxgi_device->GetAdapter(&owner)) &&
        SUCCEEDED(owner->GetDesc(&description))) {
        std::printf("  device of %s\n", Utf8FromWideArray(description.Description).c_str());
    }
}

void ShowAdapter(UINT index, IDXGIAdapter1* adapter) {
    DXGI_ADAPTER_DESC1 description = {};
    const HRESULT result = adapter->GetDesc1(&description);
    std::printf("adapter %u 0x%08lX %s\n", index, static_cast<unsigned long>(result),
                Utf8FromWideArray(description.Description).c_str());
    ComPtr<IDXGIAdapter3> adapter3;
    DXGI_QUERY_VIDEO_MEMORY_INFO memory = {};
    if (SUCCEEDED(adapter->QueryInterface(IID_PPV_ARGS(&adapter3))) &&
        SUCCEEDED(adapter3->QueryVideoMemoryInfo(0, DXGI_MEMORY_SEGMENT_GROUP_LOCAL, &memory))) {
        std::printf("  memory %llu of %llu\n", memory.CurrentUsage, memory.Budget);
    }
    ComPtr<IDXGIOutput> output;
    for (UINT i = 0; SUCCEEDED(adapter->EnumOutputs(i, &output)); ++i) {
        DXGI_OUTPUT_DESC output_description = {};
        output->GetDesc(&output_description);
        std::printf("  output %s %ldx%ld\n", Utf8FromWideArray(output_description.DeviceName).c_str(),
                    output_description.DesktopCoordinates.right - output_description.DesktopCoordinates.left,
                    output_description.DesktopCoordinates.bottom - output_description.DesktopCoordinates.top);
    }
    ShowDevice(adapter);
}

void ShowDisplays() {
    DISPLAY_DEVICEW device = {};
    device.cb = sizeof(device);
    for (DWORD i = 0; EnumDisplayDevicesW(nullptr, i, &device, 0) != FALSE; ++i) {
        DEVMODEW mode = {};
        mode.dmSize = sizeof(mode);
        EnumDisplaySettingsW(device.DeviceName, ENUM_CURRENT_SETTINGS, &mode);
        std::printf("display %s flags %lu %lux%lu@%lu\n", Utf8FromWideArray(device.DeviceName).c_str(),
                    device.StateFlags, mode.dmPelsWidth, mode.dmPelsHeight, mode.dmDisplayFrequency);
    }
}

void ShowCursor() {
    CURSORINFO cursor = {};
    cursor.cbSize = sizeof(cursor);
    const BOOL known = GetCursorInfo(&cursor);
    std::printf("cursor %d showing %lu at %ld,%ld %s\n", known, cursor.flags, cursor.ptScreenPos.x,
                cursor.ptScreenPos.y, cursor.hCursor != nullptr ? "with a shape" : "without a shape");
}

void Leak(const ComPtr<IDXGIFactory1>& factory) {
    IDXGIAdapter1* adapter = nullptr;
    ID3D11Device* device = nullptr;
    factory->EnumAdapters1(0, &adapter);
    D3D11CreateDevice(adapter, D3D_DRIVER_TYPE_UNKNOWN, nullptr, 0, nullptr, 0, D3D11_SDK_VERSION, &device,
                      nullptr, nullptr);
    factory->AddRef();
}

}  // namespace

int main(int argument_count, char** arguments) {
    for (int i = 1; i < argument_count; ++i) {
        std::printf("argument %s\n", arguments[i]);
    }
    ComPtr<IDXGIFactory1> factory;
    const HRESULT result = CreateDXGIFactory1(IID_PPV_ARGS(&factory));
    std::printf("factory 0x%08lX\n", static_cast<unsigned long>(result));
    ComPtr<IDXGIAdapter1> adapter;
    for (UINT i = 0; factory && SUCCEEDED(factory->EnumAdapters1(i, &adapter)); ++i) {
        ShowAdapter(i, adapter.Get());
    }
    ShowDisplays();
    ShowCursor();
    if (argument_count > 1 && std::strcmp(arguments[1], "--leak") == 0) {
        Leak(factory);
    }
    return 7;
}
