// The caller-side copy of the desktop.
#pragma once

#include <d3d11.h>
#include <wrl/client.h>

/// What a picture shows.
enum class PictureContent {
    Nothing,      ///< no image has been copied into it, or the copy failed
    Unpresented,  ///< an image without a present: the first image of a duplication may still be black
    Desktop,      ///< an image of the desktop
};

/// A texture on the caller's device and its shader resource view; both exist, or neither.
class FramePicture {
  public:
    /// Prepares the picture for a copy of a texture described by `acquired`; replaces a picture of another
    /// size or format. False when Direct3D cannot create it; there is then no picture.
    bool Fit(ID3D11Device* device, const D3D11_TEXTURE2D_DESC& acquired);

    /// Records that an image was copied into the picture. `presented` is true for an image that came from a
    /// present, false for a mere move of the pointer, which delivers the last image again.
    void NoteImage(bool presented);

    PictureContent Content() const { return content_; }

    /// Releases the picture. Views handed out before stay usable.
    void Release();

    ID3D11Texture2D* Texture() const { return texture_.Get(); }
    const Microsoft::WRL::ComPtr<ID3D11ShaderResourceView>& View() const { return view_; }

  private:
    Microsoft::WRL::ComPtr<ID3D11Texture2D> texture_;
    Microsoft::WRL::ComPtr<ID3D11ShaderResourceView> view_;
    PictureContent content_ = PictureContent::Nothing;
};
