// One desktop image on loan from desktop duplication.
#pragma once

#include <d3d11.h>
#include <dxgi1_2.h>
#include <wrl/client.h>

/// Gives the image back when it goes, and lets go of every reference to it before that: the next image may
/// be made only then, and the texture must not be touched after it. Keeps a reference to the duplication
/// meanwhile, which counts: an output that is duplicated anew needs the old one gone.
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

    /// The image, on the device that duplicates. Null when it is no texture.
    ID3D11Texture2D* Texture() const { return texture_.Get(); }

  private:
    Microsoft::WRL::ComPtr<IDXGIOutputDuplication> duplication_;
    bool acquired_ = false;
    DXGI_OUTDUPL_FRAME_INFO information_ = {};
    Microsoft::WRL::ComPtr<ID3D11Texture2D> texture_;
};
