// The constant buffer of the stereo warp shader, computed without Direct3D.
#pragma once

#include <cstdint>

#include "settings/diag_settings.h"

/// What the shader reads at register b0. Order, types and size are fixed by the shader's file.
struct StereoWarpConstants {
    float separation;  ///< of the eyes, as a share of the screen's width (of its arc when curved)
    float screen_depth;
    float depth_strength;
    float popout_limit;
    float eye_balance;
    std::uint32_t eye;  ///< 0 left, 1 right
    std::uint32_t search_steps;
    std::uint32_t debug_stage;
    float edge_magnet;
    float depth_has_mips;    // Switches are 1 or 0 from here on.
    float depth_resolution;  ///< pixels
    float second_flag;
    float depth_inverted;
    float fill_smooth;
    float curve_radius;
    float screen_size;
    float threshold;
    float flat_flag;
    float flat_pair_flag;
    float fixed_flag;
    float region_low_x;
    float region_low_y;
    float region_high_x;
    float region_high_y;
    float curve_mode;
    float curve_wraps;
    float curve_margin_x;
    float curve_margin_y;
};
static_assert(sizeof(StereoWarpConstants) == 112, "the shader's buffer has 28 values of four bytes");

/// Settings of the product that this tool does not read from a settings file, with the product's built-in
/// values.
struct FixedWarpSettings {
    float curve_radius = 5.0F;
    float curve_radius_override = 0.0F;  ///< used by the shader instead of the radius when above 0
    bool flat_flag = false;
    bool flat_pair_first = false;
    bool flat_pair_second = false;
    bool fixed_flag = true;
    float region_x[2] = {0.05F, 0.95F};  // Either corner may come first.
    float region_y[2] = {0.76F, 0.99F};
};

/// What the caller knows about one eye's draw.
struct StereoWarpArguments {
    std::uint32_t eye = 0;        ///< 0 left, 1 right
    float screen_size = 0.0F;     ///< metres; 0.01 or less counts as 1
    bool depth_has_mips = false;  ///< the depth texture has more than one mip level
    bool second_flag = false;
    float depth_resolution = 0.0F;  ///< pixels; below 64 means the settings' ai_resolution
    float threshold = 0.0F;         ///< 0.03 or less means 0.063
    std::uint32_t curve_mode = 0;   ///< 0 flat, 1 full circle, 2 half circle, 3 `curve_angle`
    float curve_angle = 0.0F;       ///< radians; below 0.1 the separation is 0
};

/// The buffer's contents for one eye, whose separation is scaled by `separation_multiplier`. All calculations
/// are in single precision.
StereoWarpConstants ComputeStereoWarpConstants(const DiagSettings& settings,
                                               const StereoWarpArguments& arguments,
                                               float separation_multiplier,
                                               const FixedWarpSettings& fixed = {});
