#include "capture/acquired_frame.h"

using Microsoft::WRL::ComPtr;

AcquiredFrame::~AcquiredFrame() {
    texture_.Reset();
    if (acquired_) {
        // The result is ignored: the next acquire fails in the same way and reports why.
        duplication_->ReleaseFrame();
    }
}

HRESULT AcquiredFrame::Acquire(UINT timeout_ms) {
    ComPtr<IDXGIResource> resource;
    const HRESULT result = duplication_->AcquireNextFrame(timeout_ms, &information_, &resource);
    acquired_ = SUCCEEDED(result);
    if (acquired_ && resource && FAILED(resource.As(&texture_))) {
        texture_.Reset();
    }
    return result;
}
