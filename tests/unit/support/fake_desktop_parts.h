// What the parts of the scripted machine (fake_desktop.h) know of each other.
#pragma once

#include <d3d11.h>
#include <dxgi1_2.h>
#include <wrl/client.h>

#include <cstddef>
#include <string>

#include "tests/unit/support/fake_desktop.h"

/// Tags a device with the number of the adapter that it is said to run on.
inline constexpr GUID kAdapterTag = {0x6d1f6f40, 0x3c52, 0x4a76, {0x9b, 1, 2, 3, 4, 5, 6, 7}};

/// The system's own function, which the test program has replaced.
template <typename Function>
Function RealFunction(const wchar_t* module, const char* name) {
    return reinterpret_cast<Function>(GetProcAddress(LoadLibraryW(module), name));
}

/// Notes what Windows would have forbidden.
inline void Misuse(const char* text) {
    Machine().misuses.emplace_back(text);
}

inline UINT BytesPerTexel(DXGI_FORMAT format) {
    return format == DXGI_FORMAT_R16G16B16A16_FLOAT ? 8 : 4;
}

/// Scripted objects; the caller holds the one reference.
IDXGIFactory1* MakeFakeFactory();
IDXGIAdapter1* MakeFakeAdapter(std::size_t number);

/// The position in the script of an adapter made by MakeFakeAdapter.
std::size_t NumberOf(IDXGIAdapter* adapter);

/// A device as it is kept for all tests: making one takes half a second.
struct KeptDevice {
    std::wstring key;
    Microsoft::WRL::ComPtr<ID3D11Device> device;
    Microsoft::WRL::ComPtr<ID3D11DeviceContext> context;
    ULONG device_references = 0;
    ULONG context_references = 0;
};

/// The device of that `purpose` for an adapter. Null when the system has no Direct3D.
const KeptDevice* DeviceFor(std::size_t adapter, const wchar_t* purpose);
