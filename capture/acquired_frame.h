// One desktop image acquired from desktop duplication.
#pragma once

#include <d3d11.h>
#include <dxgi1_2.h>
#include <wrl/client.h>

/// The destructor drops every reference to the image and then releases the frame: only then can the next
/// image be made, and the texture must not be used afterwards. Until then the object holds a reference to the
/// duplication. Drop it before the output is duplicated again: the old duplication must be gone by then.
class AcquiredFrame {
  public:
    explicit AcquiredFrame(IDXGIOutputDuplication* duplication) : duplication_(duplication) {}
    ~AcquiredFrame();
    AcquiredFrame(const AcquiredFrame&) = delete;
    AcquiredFrame& operator=(const AcquiredFrame&) = delete;

    /// AcquireNextFrame; called once. Waits up to `timeout_ms`.
    HRESULT Acquire(UINT timeout_ms);

    /// The performance counter when the image was presented; 0 when only the pointer changed.
    LONGLONG PresentTicks() const { return information_.LastPresentTime.QuadPart; }

    /// The image, on the device that duplicates. Null when it is not a texture.
    ID3D11Texture2D* Texture() const { return texture_.Get(); }

  private:
    Microsoft::WRL::ComPtr<IDXGIOutputDuplication> duplication_;
    bool acquired_ = false;
    DXGI_OUTDUPL_FRAME_INFO information_ = {};
    Microsoft::WRL::ComPtr<ID3D11Texture2D> texture_;
};
