// A Direct3D 11 device on the machine's first adapter, and reading back what it drew.
#pragma once

#include <d3d11.h>
#include <dxgi.h>
#include <gtest/gtest.h>
#include <wrl/client.h>

#include <cstdint>
#include <cstring>
#include <vector>

#include "platform/dxgi_walk.h"

struct LabDevice {
    LabDevice() {
        Microsoft::WRL::ComPtr<IDXGIFactory1> factory;
        CreateDXGIFactory1(IID_PPV_ARGS(&factory));
        adapter = AdapterAt(factory.Get(), 0);
        D3D11CreateDevice(adapter.Get(), D3D_DRIVER_TYPE_UNKNOWN, nullptr, 0, nullptr, 0, D3D11_SDK_VERSION,
                          &device, nullptr, &context);
    }

    /// The pixels of `texture`, rows packed; `Pixel` is as large as one of them.
    template <typename Pixel>
    std::vector<Pixel> Read(ID3D11Texture2D* texture) const {
        D3D11_TEXTURE2D_DESC description = {};
        texture->GetDesc(&description);
        description.Usage = D3D11_USAGE_STAGING;
        description.BindFlags = 0;
        description.CPUAccessFlags = D3D11_CPU_ACCESS_READ;
        description.MiscFlags = 0;
        Microsoft::WRL::ComPtr<ID3D11Texture2D> copy;
        EXPECT_EQ(device->CreateTexture2D(&description, nullptr, &copy), S_OK);
        context->CopyResource(copy.Get(), texture);
        D3D11_MAPPED_SUBRESOURCE mapped = {};
        EXPECT_EQ(context->Map(copy.Get(), 0, D3D11_MAP_READ, 0, &mapped), S_OK);
        std::vector<Pixel> pixels(std::size_t{description.Width} * description.Height);
        for (UINT y = 0; y < description.Height; ++y) {
            std::memcpy(pixels.data() + std::size_t{y} * description.Width,
                        static_cast<const std::uint8_t*>(mapped.pData) + std::size_t{y} * mapped.RowPitch,
                        description.Width * sizeof(Pixel));
        }
        context->Unmap(copy.Get(), 0);
        return pixels;
    }

    Microsoft::WRL::ComPtr<IDXGIAdapter1> adapter;
    Microsoft::WRL::ComPtr<ID3D11Device> device;
    Microsoft::WRL::ComPtr<ID3D11DeviceContext> context;
};
