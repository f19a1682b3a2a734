// The GPU resources for timing the warp at one eye size.
#pragma once

#include <d3d11.h>
#include <wrl/client.h>

#include <array>
#include <cstdint>
#include <optional>

#include "tools/vistrel_diag/sections/warp/colour_picture.h"
#include "tools/vistrel_diag/sections/warp/warp_failure.h"

struct EyeTarget {
    Microsoft::WRL::ComPtr<ID3D11Texture2D> texture;
    Microsoft::WRL::ComPtr<ID3D11RenderTargetView> view;
};

struct WarpResources {
    Microsoft::WRL::ComPtr<ID3D11Texture2D> colour;
    Microsoft::WRL::ComPtr<ID3D11ShaderResourceView> colour_view;
    Microsoft::WRL::ComPtr<ID3D11Texture2D> depth;
    Microsoft::WRL::ComPtr<ID3D11RenderTargetView> depth_target;
    Microsoft::WRL::ComPtr<ID3D11ShaderResourceView> depth_view;
    std::array<EyeTarget, 2> eyes;
    Microsoft::WRL::ComPtr<ID3D11VertexShader> full_screen;
    Microsoft::WRL::ComPtr<ID3D11SamplerState> sampler;
    D3D11_VIEWPORT viewport = {};
};

/// Creates the textures and their views, `width` x `height` each. The colour picture is `frame` or the
/// synthetic pattern; the depth is not drawn yet. Returns what could not be created.
std::optional<WarpFailure> CreateWarpTextures(ID3D11Device& device, const FrameView& frame,
                                              std::int32_t width, std::int32_t height,
                                              WarpResources& resources);

/// Creates the full-screen vertex shader, the sampler and the viewport. Returns what could not be created.
std::optional<WarpFailure> CreateWarpStates(ID3D11Device& device, std::int32_t width, std::int32_t height,
                                            WarpResources& resources);
