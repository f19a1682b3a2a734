// Where the images of a duplicated desktop come from.
#pragma once

#include <windows.h>
// windows.h first
#include <d3d11.h>
#include <dxgi1_2.h>
#include <wrl/client.h>

#include <cstddef>
#include <functional>
#include <memory>

namespace lab {

/// The result of one AcquireNextFrame call.
struct FoundImage {
    HRESULT result = S_OK;  ///< a failure: there is no image, and the other members are meaningless
    DXGI_OUTDUPL_FRAME_INFO info = {};
    Microsoft::WRL::ComPtr<IDXGIResource> resource = {};
};

/// Has the same lifetime as the duplication that takes its images from it.
class ImageSource {
  public:
    ImageSource() = default;
    virtual ~ImageSource() = default;
    ImageSource(const ImageSource&) = delete;
    ImageSource& operator=(const ImageSource&) = delete;

    virtual DXGI_MODE_DESC Mode() const { return {}; }

    /// Waits for the next image for at most `timeout` milliseconds of the machine's time.
    virtual FoundImage Next(UINT timeout) = 0;

    /// The program has released the image of the last Next.
    virtual void TakeBack() {}
};

/// Creates the source of a duplication: the output's position in the scenario, and the device that duplicates
/// it.
using ImageSourceMaker =
    std::function<HRESULT(std::size_t output, ID3D11Device* device, std::unique_ptr<ImageSource>& source)>;

}  // namespace lab
