// Why the warp, or the depth map that it reads, is not available.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

/// What could not be created or measured.
enum class WarpStop {
    ColourTexture,
    DepthTexture,
    LeftEyeTarget,
    RightEyeTarget,
    VertexShader,
    NoUsableTime
};

/// Why the warp could not be timed at one eye size.
struct WarpFailure {
    WarpStop stop = WarpStop::NoUsableTime;
    std::optional<std::uint32_t> result;  ///< Direct3D's HRESULT; empty when no call of it failed
};

/// Why the depth texture keeps its initial contents: the luminance shader could not be compiled or created.
struct DepthMapFailure {
    std::string compiler_message;         ///< may be empty
    std::optional<std::uint32_t> result;  ///< of CreatePixelShader; empty when compiling failed
};
