#include "capture/display_device.h"

#include "capture/frame_description.h"

void DisplayDevice::ShareRenderDevice(ID3D11Device* device, ID3D11DeviceContext* context,
                                      const AdapterLuid& luid) {
    Release();
    device_ = device;
    context_ = context;
    luid_ = luid;
}

bool DisplayDevice::IsSecondDeviceOn(const AdapterLuid& luid) const {
    return cross_adapter_ && device_ && luid_ == luid;
}

HRESULT DisplayDevice::CreateSecondDevice(IDXGIAdapter1* adapter, const AdapterLuid& luid) {
    staging_.Reset();
    context_.Reset();
    device_.Reset();
    const HRESULT result = D3D11CreateDevice(adapter, D3D_DRIVER_TYPE_UNKNOWN, nullptr, 0, nullptr, 0,
                                             D3D11_SDK_VERSION, &device_, nullptr, &context_);
    if (FAILED(result)) {
        return result;
    }
    cross_adapter_ = true;
    luid_ = luid;
    return result;
}

bool DisplayDevice::Carry(ID3D11Texture2D* acquired, ID3D11DeviceContext* render_context,
                          ID3D11Texture2D* picture) {
    D3D11_TEXTURE2D_DESC description = {};
    acquired->GetDesc(&description);
    if (!context_ || !FitStaging(description)) {
        return false;
    }
    context_->CopyResource(staging_.Get(), acquired);
    D3D11_MAPPED_SUBRESOURCE mapped = {};
    if (FAILED(context_->Map(staging_.Get(), 0, D3D11_MAP_READ, 0, &mapped))) {
        return false;
    }
    render_context->UpdateSubresource(picture, 0, nullptr, mapped.pData, mapped.RowPitch, 0);
    context_->Unmap(staging_.Get(), 0);
    return true;
}

bool DisplayDevice::FitStaging(const D3D11_TEXTURE2D_DESC& acquired) {
    if (staging_) {
        D3D11_TEXTURE2D_DESC present = {};
        staging_->GetDesc(&present);
        if (present.Width == acquired.Width && present.Height == acquired.Height &&
            present.Format == acquired.Format) {
            return true;
        }
        staging_.Reset();
    }
    const D3D11_TEXTURE2D_DESC wanted = CarryTextureDescription(acquired);
    return SUCCEEDED(device_->CreateTexture2D(&wanted, nullptr, &staging_));
}

void DisplayDevice::Release() {
    staging_.Reset();
    context_.Reset();
    device_.Reset();
    cross_adapter_ = false;
    luid_ = {};
}
