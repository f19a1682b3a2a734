// The Direct3D device on the GPU that drives the captured display.
#pragma once

#include <d3d11.h>
#include <dxgi.h>
#include <wrl/client.h>

#include "platform/luid.h"

/// Either the caller's own device, or, when the display hangs on another GPU, a second one, which reads each
/// image into main memory and hands it to the caller's.
class DisplayDevice {
  public:
    /// The display hangs on the caller's GPU.
    void ShareRenderDevice(ID3D11Device* device, ID3D11DeviceContext* context, const AdapterLuid& luid);

    /// Whether this already is a second device on the adapter with `luid`.
    bool IsSecondDeviceOn(const AdapterLuid& luid) const;

    /// Replaces whatever there is by a second device on `adapter`. Left without a device on failure.
    HRESULT CreateSecondDevice(IDXGIAdapter1* adapter, const AdapterLuid& luid);

    /// Copies `acquired`, an image on the second device, into `picture` on the caller's. False when that
    /// cannot be done; the picture is untouched then.
    bool Carry(ID3D11Texture2D* acquired, ID3D11DeviceContext* render_context, ID3D11Texture2D* picture);

    /// Lets go of the texture that images are carried through; the next one makes it anew.
    void ReleaseStaging() { staging_.Reset(); }

    /// Back to the state after construction.
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
