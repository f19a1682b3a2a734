#include "capture/frame_description.h"

D3D11_TEXTURE2D_DESC FrameTextureDescription(const D3D11_TEXTURE2D_DESC& acquired) {
    D3D11_TEXTURE2D_DESC frame = acquired;
    frame.Usage = D3D11_USAGE_DEFAULT;
    frame.BindFlags = D3D11_BIND_SHADER_RESOURCE | D3D11_BIND_RENDER_TARGET;
    frame.CPUAccessFlags = 0;
    frame.MiscFlags = D3D11_RESOURCE_MISC_GDI_COMPATIBLE;
    if (acquired.Format == DXGI_FORMAT_B8G8R8A8_TYPELESS) {
        frame.Format = DXGI_FORMAT_B8G8R8A8_UNORM;
    } else if (acquired.Format == DXGI_FORMAT_R8G8B8A8_TYPELESS) {
        frame.Format = DXGI_FORMAT_R8G8B8A8_UNORM;
        frame.MiscFlags = 0;
    }
    return frame;
}

D3D11_TEXTURE2D_DESC CarryTextureDescription(const D3D11_TEXTURE2D_DESC& acquired) {
    D3D11_TEXTURE2D_DESC carry = {};
    carry.Width = acquired.Width;
    carry.Height = acquired.Height;
    carry.MipLevels = 1;
    carry.ArraySize = 1;
    carry.Format = acquired.Format;
    carry.SampleDesc.Count = 1;
    carry.Usage = D3D11_USAGE_STAGING;
    carry.CPUAccessFlags = D3D11_CPU_ACCESS_READ;
    return carry;
}

D3D11_TEXTURE2D_DESC ReadBackDescription(const D3D11_TEXTURE2D_DESC& texture) {
    D3D11_TEXTURE2D_DESC copy = texture;
    copy.Usage = D3D11_USAGE_STAGING;
    copy.BindFlags = 0;
    copy.CPUAccessFlags = D3D11_CPU_ACCESS_READ;
    copy.MiscFlags = 0;
    return copy;
}

bool HasFourByteChannels(DXGI_FORMAT format) {
    switch (format) {
        case DXGI_FORMAT_B8G8R8A8_TYPELESS:
        case DXGI_FORMAT_B8G8R8A8_UNORM:
        case DXGI_FORMAT_B8G8R8A8_UNORM_SRGB:
        case DXGI_FORMAT_B8G8R8X8_TYPELESS:
        case DXGI_FORMAT_B8G8R8X8_UNORM:
        case DXGI_FORMAT_B8G8R8X8_UNORM_SRGB:
        case DXGI_FORMAT_R8G8B8A8_TYPELESS:
        case DXGI_FORMAT_R8G8B8A8_UNORM:
        case DXGI_FORMAT_R8G8B8A8_UNORM_SRGB:
            return true;
        default:
            return false;
    }
}
