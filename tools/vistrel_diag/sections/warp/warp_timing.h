// What one headset frame of the stereo warp costs the GPU.
#pragma once

#include <cstdint>

#include <optional>

#include "tools/vistrel_diag/sections/warp/colour_picture.h"
#include "tools/vistrel_diag/sections/warp/warp_failure.h"

class LongWait;
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
    std::optional<DepthMapFailure> depth_map_failure = {};  ///< the warp is timed all the same
    std::optional<WarpFailure> failure = {};                ///< set unless ok
};

/// What textures took between two readings of the memory in use, in MB of 1,048,576 bytes; 0 when less is in
/// use afterwards: something else was freed late then.
inline double VideoMemoryTakenMb(std::uint64_t before, std::uint64_t after) {
    return after <= before ? 0.0 : static_cast<double>(after - before) * (1.0 / 1048576.0);
}

/// Draws the warp untimed, on eyes of `width` x `height` with `frame`, until the GPU has left its idle
/// clocks: about 500 ms of its work, or 1 s. Does nothing where the warp cannot be drawn. Nothing stays bound
/// to `context` or alive. `long_wait` is told of the waits for the GPU, which have no limit; null when nobody
/// is to know.
void WarmUpWarp(ID3D11Device* device, ID3D11DeviceContext* context, const StereoWarpShader& shader,
                std::int32_t width, std::int32_t height, const FrameView& frame,
                LongWait* long_wait = nullptr);

/// Times `shader`, which is loaded, on eyes of `width` x `height` with `frame`, or the synthetic pattern, as
/// the picture. `adapter` is the one that `device` runs on, or null when unknown (the memory taken is then
/// 0). What fails is told in the result. Nothing of the textures stays bound to `context` or alive.
/// `long_wait` as above.
WarpTiming TimeStereoWarp(ID3D11Device* device, ID3D11DeviceContext* context, IDXGIAdapter1* adapter,
                          const StereoWarpShader& shader, std::int32_t width, std::int32_t height,
                          const FrameView& frame, LongWait* long_wait = nullptr);
