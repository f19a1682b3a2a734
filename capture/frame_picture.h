// The caller-side copy of the desktop.
#pragma once

#include <d3d11.h>
#include <wrl/client.h>

/// A texture on the caller's device and a shader's view of it; both or neither.
class FramePicture {
  public:
    /// Makes the picture one that can take a copy of a texture described by `acquired`, replacing an older
    /// one of another size or format. False when Direct3D cannot make it; there is no picture then.
    bool Fit(ID3D11Device* device, const D3D11_TEXTURE2D_DESC& acquired);

    /// Lets go of the picture. Views handed out before stay usable.
    void Release();

    ID3D11Texture2D* Texture() const { return texture_.Get(); }
    const Microsoft::WRL::ComPtr<ID3D11ShaderResourceView>& View() const { return view_; }

  private:
    Microsoft::WRL::ComPtr<ID3D11Texture2D> texture_;
    Microsoft::WRL::ComPtr<ID3D11ShaderResourceView> view_;
};
