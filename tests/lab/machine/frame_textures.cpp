#include "tests/lab/machine/frame_textures.h"

#include <utility>
#include <vector>

#include "tests/lab/machine/desktop_picture.h"
#include "tests/lab/machine/machine.h"

namespace lab {

using Microsoft::WRL::ComPtr;

DXGI_FORMAT FrameTextures::Format() const {
    switch (format_) {
        case PixelFormat::kBgraTypeless:
            return DXGI_FORMAT_B8G8R8A8_TYPELESS;
        case PixelFormat::kRgba:
            return DXGI_FORMAT_R8G8B8A8_UNORM;
        case PixelFormat::kRgbaTypeless:
            return DXGI_FORMAT_R8G8B8A8_TYPELESS;
        case PixelFormat::kHalfFloat:
            return DXGI_FORMAT_R16G16B16A16_FLOAT;
        case PixelFormat::kBgra:
            break;
    }
    return DXGI_FORMAT_B8G8R8A8_UNORM;
}

HRESULT FrameTextures::Create(std::size_t output, ID3D11Device* device) {
    output_ = output;
    const Output& script = TheMachine().scenario.outputs[output];
    size_ = TheMachine().outputs[output].size;
    if (script.rotation == 90 || script.rotation == 270) {
        std::swap(size_.width, size_.height);  // Duplication delivers a rotated desktop un-rotated.
    }
    // DuplicateOutput converts the format of an HDR desktop; DuplicateOutput1 would not.
    format_ = script.hdr ? PixelFormat::kBgra : TheMachine().outputs[output].format;
    D3D11_TEXTURE2D_DESC description = {};
    description.Width = size_.width;
    description.Height = size_.height;
    description.MipLevels = 1;
    description.ArraySize = 1;
    description.Format = Format();
    description.SampleDesc.Count = 1;
    description.Usage = D3D11_USAGE_DEFAULT;
    description.BindFlags = D3D11_BIND_RENDER_TARGET | D3D11_BIND_SHADER_RESOURCE;
    for (std::size_t i = 0; i < textures_.size(); ++i) {
        const std::vector<std::uint8_t> picture = TestPicture(size_, format_, i % 2 != 0);
        D3D11_SUBRESOURCE_DATA data = {};
        data.pSysMem = picture.data();
        data.SysMemPitch = size_.width * BytesPerTexel(format_);
        const HRESULT result = device->CreateTexture2D(&description, &data, &textures_[i]);
        if (FAILED(result)) {
            return result;
        }
    }
    const std::vector<std::uint8_t> nothing(std::size_t{size_.width} * size_.height * BytesPerTexel(format_));
    D3D11_SUBRESOURCE_DATA data = {};
    data.pSysMem = nothing.data();
    data.SysMemPitch = size_.width * BytesPerTexel(format_);
    return device->CreateTexture2D(&description, &data, &black_);
}

ComPtr<ID3D11Texture2D> FrameTextures::Current() const {
    return delivered_ == 0 ? black_ : textures_[static_cast<std::size_t>(delivered_ - 1) % textures_.size()];
}

ComPtr<ID3D11Texture2D> FrameTextures::Next() {
    const ComPtr<ID3D11Texture2D>& texture =
        textures_[static_cast<std::size_t>(delivered_++) % textures_.size()];
    const Machine& machine = TheMachine();
    const bool byte_texels = BytesPerTexel(format_) == 4;
    if (machine.scenario.outputs[output_].picture == Picture::kDesktop && byte_texels) {
        const Display& display = machine.DisplayOf(output_);
        const std::vector<std::uint8_t> picture = RealDesktopPicture(display.left, display.top, size_);
        ComPtr<ID3D11Device> device;
        ComPtr<ID3D11DeviceContext> context;
        texture->GetDevice(&device);
        device->GetImmediateContext(&context);
        context->UpdateSubresource(texture.Get(), 0, nullptr, picture.data(), size_.width * 4, 0);
    }
    return texture;
}

}  // namespace lab
