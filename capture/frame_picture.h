// The caller-side copy of the desktop.
#pragma once

#include <d3d11.h>
#include <wrl/client.h>

/// What a picture shows.
enum class PictureContent {
    Nothing,      ///< no image was copied into it, or none could be
    Unpresented,  ///< an image that no present brought: duplication may begin with one that is still black
    Desktop,      ///< an image of the desktop
};

/// A texture on the caller's device and a shader's view of it; both or neither.
class FramePicture {
  public:
    /// Makes the picture one that can take a copy of a texture described by `acquired`, replacing an older
    /// one of another size or format. False when Direct3D cannot make it; there is no picture then.
    bool Fit(ID3D11Device* device, const D3D11_TEXTURE2D_DESC& acquired);

    /// An image was copied into the picture. `presented`: by a present, and not by a move of the pointer
    /// alone, which brings the last image once more.
    void NoteImage(bool presented);

    PictureContent Content() const { return content_; }

    /// Lets go of the picture. Views handed out before stay usable.
    void Release();

    ID3D11Texture2D* Texture() const { return texture_.Get(); }
    const Microsoft::WRL::ComPtr<ID3D11ShaderResourceView>& View() const { return view_; }

  private:
    Microsoft::WRL::ComPtr<ID3D11Texture2D> texture_;
    Microsoft::WRL::ComPtr<ID3D11ShaderResourceView> view_;
    PictureContent content_ = PictureContent::Nothing;
};
