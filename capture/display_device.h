// The Direct3D device on the GPU that drives the captured display.
#pragma once

#include <d3d11.h>
#include <dxgi.h>
#include <wrl/client.h>

#include "platform/luid.h"

/// Either the caller's own device, or, when the display is connected to another GPU, a second device. Each
/// image is then read into main memory and copied to the caller's device.
class DisplayDevice {
  public:
    /// Uses the caller's device: the display is connected to its GPU.
    void ShareRenderDevice(ID3D11Device* device, ID3D11DeviceContext* context, const AdapterLuid& luid);

    /// Whether this already is a second device on the adapter with `luid`.
    bool IsSecondDeviceOn(const AdapterLuid& luid) const;

    /// Replaces any current device with a second device on `adapter`. On failure there is no device.
    HRESULT CreateSecondDevice(IDXGIAdapter1* adapter, const AdapterLuid& luid);

    /// Copies `acquired`, an image on the second device, into `picture` on the caller's. False on failure;
    /// the picture is then unchanged.
    bool Carry(ID3D11Texture2D* acquired, ID3D11DeviceContext* render_context, ID3D11Texture2D* picture);

    /// Releases the texture that images are copied through; the next image creates it again.
    void ReleaseStaging() { staging_.Reset(); }

    /// Returns to the state after construction.
    void Release();

    bool IsCrossAdapter() const { return cross_adapter_; }

    /// Null when there is none.
    ID3D11Device* Device() const { return device_.Get(); }

  private:
    bool FitStaging(const D3D11_TEXTURE2D_DESC& acquired);

    Microsoft::WRL::ComPtr<ID3D11Device> device_;
    Microsoft::WRL::ComPtr<ID3D11DeviceContext> context_;
    Microsoft::WRL::ComPtr<ID3D11Texture2D> staging_;
    bool cross_adapter_ = false;
    AdapterLuid luid_;
};
