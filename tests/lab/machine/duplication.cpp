#include "tests/lab/machine/duplication.h"

#include <utility>

#include "tests/lab/machine/devices.h"
#include "tests/lab/machine/frame_guard.h"
#include "tests/lab/machine/machine.h"
#include "tests/lab/machine/scheduled_images.h"
#include "tests/lab/machine/simulated_object.h"
#include "tests/lab/machine/statistics.h"

namespace lab {
namespace {

using Microsoft::WRL::ComPtr;

ImageSourceMaker& SourceMaker() {
    static ImageSourceMaker maker = MakeScheduledImages;
    return maker;
}

/// A resource that is not a texture cannot be copied from either.
void Mark(IDXGIResource* frame, bool held) {
    ComPtr<ID3D11Texture2D> texture;
    if (SUCCEEDED(frame->QueryInterface(IID_PPV_ARGS(&texture)))) {
        MarkFrame(texture.Get(), held);
    }
}

class SimulatedDuplication final : public SimulatedDxgiObject<IDXGIOutputDuplication> {
  public:
    SimulatedDuplication(std::size_t output, std::unique_ptr<ImageSource> source)
        : SimulatedDxgiObject(Counts().live_duplications), output_(output), source_(std::move(source)) {
        TheMachine().outputs[output_].duplicated = true;
        ++Counts().made_duplications;
    }
    ~SimulatedDuplication() override {
        TheMachine().outputs[output_].duplicated = false;
        if (held_) {
            ++Counts().frames_never_released;
        }
    }

    void STDMETHODCALLTYPE GetDesc(DXGI_OUTDUPL_DESC* description) override {
        *description = {};
        description->ModeDesc = source_->Mode();
        description->Rotation = DXGI_MODE_ROTATION_IDENTITY;
    }

    HRESULT STDMETHODCALLTYPE AcquireNextFrame(UINT timeout, DXGI_OUTDUPL_FRAME_INFO* info,
                                               IDXGIResource** resource) override {
        InjectFailure("AcquireNextFrame");
        ++Counts().acquire_calls;
        if (info == nullptr || resource == nullptr) {
            return E_INVALIDARG;
        }
        *resource = nullptr;
        if (held_) {
            ++Counts().acquires_without_release;
            return DXGI_ERROR_INVALID_CALL;
        }
        const FoundImage image = source_->Next(timeout);
        if (FAILED(image.result)) {
            Counts().acquire_timeouts += image.result == DXGI_ERROR_WAIT_TIMEOUT ? 1 : 0;
            return image.result;
        }
        held_ = image.resource;
        Mark(held_.Get(), true);
        *info = image.info;
        return held_.CopyTo(resource);
    }

    HRESULT STDMETHODCALLTYPE ReleaseFrame() override {
        if (!held_) {
            ++Counts().releases_without_frame;
            return DXGI_ERROR_INVALID_CALL;
        }
        ++Counts().releases;
        Mark(held_.Get(), false);
        held_.Reset();
        source_->TakeBack();
        return S_OK;
    }

    HRESULT STDMETHODCALLTYPE GetFrameDirtyRects(UINT, RECT*, UINT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetFrameMoveRects(UINT, DXGI_OUTDUPL_MOVE_RECT*, UINT*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE GetFramePointerShape(UINT, void*, UINT*,
                                                   DXGI_OUTDUPL_POINTER_SHAPE_INFO*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE MapDesktopSurface(DXGI_MAPPED_RECT*) override { return DXGI_ERROR_UNSUPPORTED; }
    HRESULT STDMETHODCALLTYPE UnMapDesktopSurface() override { return DXGI_ERROR_INVALID_CALL; }

  private:
    std::size_t output_;
    std::unique_ptr<ImageSource> source_;
    ComPtr<IDXGIResource> held_;
};

}  // namespace

void TakeImagesFrom(ImageSourceMaker maker) {
    SourceMaker() = std::move(maker);
}

HRESULT DuplicateDesktop(std::size_t output, IUnknown* device, IDXGIOutputDuplication** duplication) {
    if (device == nullptr || duplication == nullptr) {
        return E_INVALIDARG;
    }
    *duplication = nullptr;
    TheMachine().duplicated.push_back(output);
    OutputState& state = TheMachine().outputs[output];
    if (DeviceAdapterPosition(device) != state.adapter) {
        ++Counts().duplications_refused;
        ++Counts().duplications_by_other_adapter;
        return E_INVALIDARG;
    }
    if (const std::optional<ResultCode> refusal = RefuseNow(state)) {
        ++Counts().duplications_refused;
        return static_cast<HRESULT>(*refusal);
    }
    if (state.duplicated) {
        ++Counts().duplications_refused;
        ++Counts().duplications_of_duplicated;
        return E_INVALIDARG;
    }
    ComPtr<ID3D11Device> d3d_device;
    HRESULT result = device->QueryInterface(IID_PPV_ARGS(&d3d_device));
    std::unique_ptr<ImageSource> source;
    if (SUCCEEDED(result)) {
        result = SourceMaker()(output, d3d_device.Get(), source);
    }
    if (SUCCEEDED(result)) {
        *duplication = new SimulatedDuplication(output, std::move(source));
    }
    return result;
}

}  // namespace lab
