// The product's stereo warp: its shader, compiled from the product's own file, and the shader's constants.
#pragma once

#include <d3d11.h>
#include <wrl/client.h>

#include <string>

#include "render/stereo_warp_constants.h"

class StereoWarpShader {
  public:
    /// Finds, compiles and creates the warp on `device`. True when it is ready, also on every later call. A
    /// failed load is never tried again; LastError() says why it failed. A null `device` does not count as a
    /// try.
    bool Load(ID3D11Device* device);

    /// Why the load failed, in the compiler's own words where there are any; empty before that.
    const std::string& LastError() const { return last_error_; }

    /// Fills the constants for one eye from the settings of the process. Binds them (slot 0) and the pixel
    /// shader for the next draw. Does nothing before a successful load or without a context.
    void Apply(ID3D11DeviceContext* context, const StereoWarpArguments& arguments) const;

    float separation_multiplier = 1.0F;  ///< scales the eyes' separation

  private:
    bool CompileFrom(ID3D11Device& device, const std::string& path, const std::string& source);
    bool Fail(const std::string& error);

    Microsoft::WRL::ComPtr<ID3D11PixelShader> pixel_shader_;
    Microsoft::WRL::ComPtr<ID3D11Buffer> constant_buffer_;
    std::string last_error_;
    bool load_attempted_ = false;
};
