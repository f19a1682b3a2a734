#include "capture/frame_picture.h"

#include "capture/frame_description.h"

bool FramePicture::Fit(ID3D11Device* device, const D3D11_TEXTURE2D_DESC& acquired) {
    const D3D11_TEXTURE2D_DESC wanted = FrameTextureDescription(acquired);
    if (texture_) {
        D3D11_TEXTURE2D_DESC present = {};
        texture_->GetDesc(&present);
        // The format is compared too: copying between textures of different formats would produce garbage.
        if (present.Width == wanted.Width && present.Height == wanted.Height &&
            present.Format == wanted.Format) {
            return true;
        }
        Release();
    }
    if (FAILED(device->CreateTexture2D(&wanted, nullptr, &texture_)) ||
        FAILED(device->CreateShaderResourceView(texture_.Get(), nullptr, &view_))) {
        Release();
        return false;
    }
    return true;
}

void FramePicture::NoteImage(bool presented) {
    if (presented) {
        content_ = PictureContent::Desktop;
    } else if (content_ == PictureContent::Nothing) {
        content_ = PictureContent::Unpresented;
    }
}

void FramePicture::Release() {
    view_.Reset();
    texture_.Reset();
    content_ = PictureContent::Nothing;
}
