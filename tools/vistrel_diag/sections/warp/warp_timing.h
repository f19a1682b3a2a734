// What one headset frame of the stereo warp costs the GPU.
#pragma once

#include <cstdint>

#include "tools/vistrel_diag/sections/warp/colour_picture.h"

class StereoWarpShader;
struct ID3D11Device;
struct ID3D11DeviceContext;
struct IDXGIAdapter1;

/// The warp timed at one eye size.
struct WarpTiming {
    std::int32_t width = 0;
    std::int32_t height = 0;
    double gpu_ms = 0.0;   ///< median of one headset frame, both eyes; 0 unless ok
    double vram_mb = 0.0;  ///< what the textures took
    bool ok = false;
};

/// What textures took between two readings of the memory in use, in MB of 1,048,576 bytes. The readings are
/// subtracted as unsigned numbers.
inline double VideoMemoryTakenMb(std::uint64_t before, std::uint64_t after) {
    return static_cast<double>(after - before) * (1.0 / 1048576.0);
}

/// Times `shader`, which is loaded, on eyes of `width` x `height` with `frame`, or the synthetic pattern, as
/// the picture. `adapter` is the one that `device` runs on, or null when unknown (the memory taken is then
/// 0). What fails is reported in one line and leaves the result not ok. Nothing of the textures stays bound
/// to `context` or alive.
WarpTiming TimeStereoWarp(ID3D11Device* device, ID3D11DeviceContext* context, IDXGIAdapter1* adapter,
                          const StereoWarpShader& shader, std::int32_t width, std::int32_t height,
                          const FrameView& frame);
