#include "tests/lab/machine/black_texture.h"

#include <wrl/client.h>

#include <cstddef>
#include <cstdint>

namespace lab {
namespace {

using Microsoft::WRL::ComPtr;

// {2F4B6A90-8D15-4C7E-B3A2-71E0C95D6F48}: the private data that says whether a texture is black.
constexpr GUID kBlackness = {0x2f4b6a90, 0x8d15, 0x4c7e, {0xb3, 0xa2, 0x71, 0xe0, 0xc9, 0x5d, 0x6f, 0x48}};
constexpr std::size_t kBytesPerTexel = 4;
constexpr std::size_t kTexelsToOneWithColour = 100;  // A pointer may be drawn on a black desktop.

bool IsMostlyBlack(const D3D11_MAPPED_SUBRESOURCE& mapped, UINT width, UINT height) {
    std::size_t with_colour = 0;
    for (UINT y = 0; y < height; ++y) {
        const auto* const row =
            static_cast<const std::uint8_t*>(mapped.pData) + std::size_t{y} * mapped.RowPitch;
        for (std::size_t texel = 0; texel < width; ++texel) {
            const std::uint8_t* const colour = row + texel * kBytesPerTexel;
            with_colour += colour[0] != 0 || colour[1] != 0 || colour[2] != 0 ? 1 : 0;
        }
    }
    return with_colour * kTexelsToOneWithColour < std::size_t{width} * height;
}

bool IsBlack(ID3D11DeviceContext* context, ID3D11Texture2D* texture) {
    D3D11_TEXTURE2D_DESC description = {};
    texture->GetDesc(&description);
    if (description.Format != DXGI_FORMAT_B8G8R8A8_UNORM) {
        return false;
    }
    description.Usage = D3D11_USAGE_STAGING;
    description.BindFlags = 0;
    description.CPUAccessFlags = D3D11_CPU_ACCESS_READ;
    description.MiscFlags = 0;
    ComPtr<ID3D11Device> device;
    context->GetDevice(&device);
    ComPtr<ID3D11Texture2D> copy;
    D3D11_MAPPED_SUBRESOURCE mapped = {};
    if (FAILED(device->CreateTexture2D(&description, nullptr, &copy))) {
        return false;
    }
    context->CopyResource(copy.Get(), texture);
    if (FAILED(context->Map(copy.Get(), 0, D3D11_MAP_READ, 0, &mapped))) {
        return false;
    }
    const bool black = IsMostlyBlack(mapped, description.Width, description.Height);
    context->Unmap(copy.Get(), 0);
    return black;
}

}  // namespace

bool ReadsBlackTexture(ID3D11DeviceContext* context) {
    ComPtr<ID3D11ShaderResourceView> view;
    context->PSGetShaderResources(0, 1, &view);
    ComPtr<ID3D11Resource> resource;
    ComPtr<ID3D11Texture2D> texture;
    if (!view) {
        return false;
    }
    view->GetResource(&resource);
    if (FAILED(resource.As(&texture))) {
        return false;
    }
    std::uint32_t black = 0;
    UINT size = sizeof(black);
    if (FAILED(texture->GetPrivateData(kBlackness, &size, &black)) || size != sizeof(black)) {
        black = IsBlack(context, texture.Get()) ? 1 : 0;
        texture->SetPrivateData(kBlackness, sizeof(black), &black);
    }
    return black != 0;
}

}  // namespace lab
