// The GPU time and memory of one headset frame of the stereo warp.
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
    double vram_mb = 0.0;  ///< video memory taken by the textures
    bool ok = false;
    std::optional<DepthMapFailure> depth_map_failure = {};  ///< the warp is timed nevertheless
    std::optional<WarpFailure> failure = {};                ///< set unless ok
};

/// The memory taken by textures, from readings of the memory in use before and after, in MB of 1,048,576
/// bytes. 0 when less is in use afterwards, because something else was freed late.
inline double VideoMemoryTakenMb(std::uint64_t before, std::uint64_t after) {
    return after <= before ? 0.0 : static_cast<double>(after - before) * (1.0 / 1048576.0);
}

/// Draws the warp untimed, on eyes of `width` x `height` with `frame`, until the GPU has left its idle
/// clocks: about 500 ms of GPU work, or 1 s. Does nothing when the warp cannot be drawn. Afterwards all its
/// objects are released and unbound from `context`. `long_wait` is notified of the waits for the GPU, which
/// have no limit; may be null.
void WarmUpWarp(ID3D11Device* device, ID3D11DeviceContext* context, const StereoWarpShader& shader,
                std::int32_t width, std::int32_t height, const FrameView& frame,
                LongWait* long_wait = nullptr);

/// Times `shader`, which must be loaded, on eyes of `width` x `height`. The picture is `frame`, or the
/// synthetic pattern. `adapter` is the one that `device` runs on, or null when unknown (the memory taken is
/// then 0). The result describes any failure. Afterwards the textures are released and unbound from
/// `context`. `long_wait` as above.
WarpTiming TimeStereoWarp(ID3D11Device* device, ID3D11DeviceContext* context, IDXGIAdapter1* adapter,
                          const StereoWarpShader& shader, std::int32_t width, std::int32_t height,
                          const FrameView& frame, LongWait* long_wait = nullptr);
