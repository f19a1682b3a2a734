// The textures in which a simulated desktop is delivered.
#pragma once

#include <windows.h>
// windows.h first
#include <d3d11.h>
#include <wrl/client.h>

#include <array>
#include <cstddef>
#include <cstdint>

#include "tests/lab/machine/scenario.h"

namespace lab {

class FrameTextures {
  public:
    /// Creates them for the current state of the output at this position of the scenario, on the device that
    /// duplicates it.
    HRESULT Create(std::size_t output, ID3D11Device* device);

    /// The next image. The even and the odd test picture are prepared and alternate; the real desktop is read
    /// now.
    Microsoft::WRL::ComPtr<ID3D11Texture2D> Next();

    /// The image of the last Next; black before the first.
    Microsoft::WRL::ComPtr<ID3D11Texture2D> Current() const;

    Size Dimensions() const { return size_; }
    DXGI_FORMAT Format() const;

  private:
    std::size_t output_ = 0;
    Size size_;
    PixelFormat format_ = PixelFormat::kBgra;
    std::array<Microsoft::WRL::ComPtr<ID3D11Texture2D>, 2> textures_;
    Microsoft::WRL::ComPtr<ID3D11Texture2D> black_;
    std::int64_t delivered_ = 0;
};

}  // namespace lab
