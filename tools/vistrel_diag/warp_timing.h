// What one headset frame of the stereo warp costs the GPU.
#pragma once

#include <cstdint>

#include "tools/vistrel_diag/colour_picture.h"

class StereoWarpShader;
struct ID3D11Device;
struct ID3D11DeviceContext;
struct IDXGIAdapter;

/// The warp timed at one eye size.
struct WarpTiming {
    std::int32_t width = 0;
    std::int32_t height = 0;
    double gpu_ms = 0.0;   ///< median of one headset frame, both eyes; 0 unless ok
    double vram_mb = 0.0;  ///< what the textures took
    bool ok = false;
};

/// Times `shader`, which is loaded, on eyes of `width` x `height` with `frame`, or the synthetic pattern, as
/// the picture. `adapter` is the one that `device` runs on, or null when unknown (the memory taken is then
/// 0). What fails is reported in one line and leaves the result not ok. Nothing of the textures stays bound
/// to `context` or alive.
WarpTiming TimeStereoWarp(ID3D11Device* device, ID3D11DeviceContext* context, IDXGIAdapter* adapter,
                          const StereoWarpShader& shader, std::int32_t width, std::int32_t height,
                          const FrameView& frame);
