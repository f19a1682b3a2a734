// The images of the scripted desktop.
#include <array>

#include "tests/unit/support/scripted_desktop_parts.h"

using Microsoft::WRL::ComPtr;

namespace {

ComPtr<ID3D11Texture2D> MakeTexture(ID3D11Device* device, const ScriptedFrame& frame) {
    const std::vector<std::uint8_t> pixels = ScriptedPixels(frame);
    D3D11_TEXTURE2D_DESC description = {};
    description.Width = frame.width;
    description.Height = frame.height;
    description.MipLevels = 1;
    description.ArraySize = 1;
    description.Format = frame.format;
    description.SampleDesc.Count = 1;
    description.Usage = D3D11_USAGE_DEFAULT;
    description.BindFlags = D3D11_BIND_RENDER_TARGET;
    const D3D11_SUBRESOURCE_DATA data = {pixels.data(), frame.width * BytesPerTexel(frame.format), 0};
    ComPtr<ID3D11Texture2D> texture;
    if (FAILED(device->CreateTexture2D(&description, &data, &texture))) {
        Misuse("a desktop texture could not be made");
    }
    return texture;
}

/// A resource that is not a texture.
ComPtr<IDXGIResource> MakeBuffer(ID3D11Device* device) {
    D3D11_BUFFER_DESC description = {};
    description.ByteWidth = 16;
    description.BindFlags = D3D11_BIND_VERTEX_BUFFER;
    ComPtr<ID3D11Buffer> buffer;
    ComPtr<IDXGIResource> resource;
    if (FAILED(device->CreateBuffer(&description, nullptr, &buffer)) || FAILED(buffer.As(&resource))) {
        Misuse("a buffer could not be made");
    }
    return resource;
}

class ScriptedImages final : public lab::ImageSource {
  public:
    explicit ScriptedImages(ID3D11Device* device) : device_(device) {}

    lab::FoundImage Next(UINT timeout) override {
        Desktop().timeouts.push_back(timeout);
        if (lost_) {
            return {.result = DXGI_ERROR_ACCESS_LOST};
        }
        const ScriptedFrame frame = NextFrame();
        lost_ = frame.result == DXGI_ERROR_ACCESS_LOST;
        lab::FoundImage image = {.result = frame.result};
        if (FAILED(frame.result)) {
            return image;
        }
        ++Desktop().frames_acquired;
        image.info.LastPresentTime.QuadPart = frame.present_ticks;
        image.info.AccumulatedFrames = 1;
        if (frame.has_texture) {
            texture_ = MakeTexture(device_.Get(), frame);
            texture_.As(&image.resource);
        } else {
            image.resource = MakeBuffer(device_.Get());
        }
        return image;
    }

    void TakeBack() override {
        ++Desktop().frames_released;
        if (texture_) {
            Spoil();
        }
    }

  private:
    static ScriptedFrame NextFrame() {
        ScriptedDesktop& desktop = Desktop();
        if (!desktop.frames.empty()) {
            const ScriptedFrame frame = desktop.frames.front();
            desktop.frames.pop_front();
            return frame;
        }
        return desktop.next_frame ? desktop.next_frame() : ScriptedFrame{.result = DXGI_ERROR_WAIT_TIMEOUT};
    }

    /// A released image is overwritten at once, and nothing may refer to it any more.
    void Spoil() {
        D3D11_TEXTURE2D_DESC description = {};
        texture_->GetDesc(&description);
        const UINT pitch = description.Width * BytesPerTexel(description.Format);
        const std::vector<std::uint8_t> garbage(std::size_t{pitch} * description.Height, 0xDD);
        ComPtr<ID3D11DeviceContext> context;
        device_->GetImmediateContext(&context);
        context->UpdateSubresource(texture_.Get(), 0, nullptr, garbage.data(), pitch, 0);
        if (texture_.Reset() != 0) {
            Misuse("a frame is still referenced after ReleaseFrame");
        }
    }

    ComPtr<ID3D11Device> device_;
    ComPtr<ID3D11Texture2D> texture_;
    bool lost_ = false;
};

}  // namespace

HRESULT MakeScriptedImages(std::size_t, ID3D11Device* device, std::unique_ptr<lab::ImageSource>& source) {
    source = std::make_unique<ScriptedImages>(device);
    return S_OK;
}

std::vector<std::uint8_t> ScriptedPixels(const ScriptedFrame& frame) {
    const UINT texel = BytesPerTexel(frame.format);
    std::vector<std::uint8_t> pixels;
    pixels.reserve(std::size_t{frame.width} * frame.height * texel);
    for (UINT y = 0; y < frame.height; ++y) {
        for (UINT x = 0; x < frame.width; ++x) {
            for (UINT channel = 0; channel < texel; ++channel) {
                const std::array<std::uint32_t, 4> bytes = {x * 3 + frame.seed, y * 5 + frame.seed, x ^ y,
                                                            255};
                pixels.push_back(static_cast<std::uint8_t>(bytes[channel % 4]));
            }
        }
    }
    return pixels;
}
