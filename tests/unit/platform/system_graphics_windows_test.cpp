// A Windows whose dxgi.dll and d3d11.dll lack the required functions.
#include "platform/system_graphics.h"

#include <d3d11.h>
#include <dxgi.h>
#include <gtest/gtest.h>
#include <windows.h>

#include <string>
#include <vector>

namespace {

/// The functions of dxgi.dll and d3d11.dll that were looked up.
std::vector<std::string>& LookedUp() {
    static std::vector<std::string> names;
    return names;
}

FARPROC WINAPI FindNothing(HMODULE module, LPCSTR name) {
    if (module == GetModuleHandleW(L"dxgi.dll") || module == GetModuleHandleW(L"d3d11.dll")) {
        LookedUp().emplace_back(name);
    }
    SetLastError(ERROR_PROC_NOT_FOUND);
    return nullptr;
}

}  // namespace

extern "C" {
decltype(&GetProcAddress) __imp_GetProcAddress = FindNothing;
}

namespace {

constexpr HRESULT kNoSuchFunction = HRESULT_FROM_WIN32(ERROR_PROC_NOT_FOUND);

/// Something that is not null, for a call to clear.
template <typename Object>
Object* Left() {
    static int something = 0;
    return reinterpret_cast<Object*>(&something);
}

TEST(SystemGraphics, LooksForEachFunctionOnce) {
    LoadSystemGraphics();
    LoadSystemGraphics();
    EXPECT_EQ(LookedUp(), (std::vector<std::string>{"CreateDXGIFactory1", "D3D11CreateDevice"}));
}

TEST(SystemGraphics, ReportsWhyThereIsNoFactory) {
    void* factory = Left<void>();
    EXPECT_EQ(CreateDXGIFactory1(__uuidof(IDXGIFactory1), &factory), kNoSuchFunction);
    EXPECT_EQ(factory, nullptr);
}

TEST(SystemGraphics, ReportsWhyThereIsNoDevice) {
    auto* device = Left<ID3D11Device>();
    auto* context = Left<ID3D11DeviceContext>();
    EXPECT_EQ(D3D11CreateDevice(nullptr, D3D_DRIVER_TYPE_HARDWARE, nullptr, 0, nullptr, 0, D3D11_SDK_VERSION,
                                &device, nullptr, &context),
              kNoSuchFunction);
    EXPECT_EQ(device, nullptr);
    EXPECT_EQ(context, nullptr);
    EXPECT_EQ(D3D11CreateDevice(nullptr, D3D_DRIVER_TYPE_HARDWARE, nullptr, 0, nullptr, 0, D3D11_SDK_VERSION,
                                nullptr, nullptr, nullptr),
              kNoSuchFunction);
}

}  // namespace
