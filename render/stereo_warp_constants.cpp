#include "render/stereo_warp_constants.h"

#include <algorithm>
#include <numbers>

namespace {

constexpr float kMetresPerMillimetre = 0.001F;
constexpr float kNarrowestCurveAngle = 0.1F;  // Radians.
constexpr float kSmallestCurveRadius = 3.0F;
constexpr float kCurveMargin = 0.15F;

float Switch(bool on) {
    return on ? 1.0F : 0.0F;
}

/// The eye separation as a share of an arc of `angle` radians.
float ShareOfArc(const DiagSettings& settings, float radius, float angle) {
    if (angle < kNarrowestCurveAngle) {
        return 0.0F;
    }
    const float used_radius = radius < kSmallestCurveRadius ? kSmallestCurveRadius : radius;
    return settings.SeparationMm() * kMetresPerMillimetre / used_radius / angle;
}

void CurveScreen(StereoWarpConstants& constants, const DiagSettings& settings,
                 const StereoWarpArguments& arguments, float radius) {
    constexpr float kPi = std::numbers::pi_v<float>;
    float angle = 2.0F * kPi;
    constants.curve_mode = 1.0F;
    constants.curve_wraps = Switch(arguments.curve_mode == 1);
    if (arguments.curve_mode == 2) {
        angle = kPi;
    } else if (arguments.curve_mode == 3) {
        angle = arguments.curve_angle;
        constants.curve_mode = 2.0F;
        constants.curve_margin_x = kCurveMargin;
        constants.curve_margin_y = kCurveMargin;
    }
    constants.separation = ShareOfArc(settings, radius, angle);
    constants.flat_flag = 0.0F;
    constants.flat_pair_flag = 0.0F;
}

}  // namespace

StereoWarpConstants ComputeStereoWarpConstants(const DiagSettings& settings,
                                               const StereoWarpArguments& arguments,
                                               float separation_multiplier, const FixedWarpSettings& fixed) {
    const bool depth_from_reshade =
        settings.reshade_enabled || settings.depth_mode == DiagSettings::kReShadeDepthMode;

    StereoWarpConstants constants = {};
    constants.screen_size = arguments.screen_size > 0.01F ? arguments.screen_size : 1.0F;
    constants.separation = settings.SeparationMm() * kMetresPerMillimetre / constants.screen_size;
    constants.screen_depth = settings.f3d_screen_depth;
    constants.depth_strength = settings.f3d_depth_strength;
    constants.popout_limit = settings.f3d_popout_limit;
    constants.eye_balance = settings.f3d_eye_balance;
    constants.eye = arguments.eye;
    // The shader reads these two as unsigned: a negative setting is passed as its two's complement.
    constants.search_steps = static_cast<std::uint32_t>(settings.f3d_search_steps);
    constants.debug_stage = static_cast<std::uint32_t>(settings.f3d_debug_stage);
    constants.edge_magnet = settings.f3d_edge_magnet;
    constants.depth_has_mips = Switch(arguments.depth_has_mips);
    constants.depth_resolution = arguments.depth_resolution >= 64.0F
                                     ? arguments.depth_resolution
                                     : static_cast<float>(settings.ai_resolution);
    constants.second_flag = Switch(arguments.second_flag);
    constants.depth_inverted = Switch(depth_from_reshade && settings.reshade_depth_invert);
    constants.fill_smooth = Switch(settings.f3d_fill_smooth);
    constants.curve_radius =
        fixed.curve_radius_override > 0.0F ? fixed.curve_radius_override : fixed.curve_radius;
    constants.threshold = arguments.threshold > 0.03F ? arguments.threshold : 0.063F;
    constants.flat_flag = Switch(fixed.flat_flag);
    constants.flat_pair_flag = Switch(fixed.flat_pair_first && fixed.flat_pair_second);
    constants.fixed_flag = Switch(fixed.fixed_flag);
    constants.region_low_x = std::min(fixed.region_x[0], fixed.region_x[1]);
    constants.region_low_y = std::min(fixed.region_y[0], fixed.region_y[1]);
    constants.region_high_x = std::max(fixed.region_x[0], fixed.region_x[1]);
    constants.region_high_y = std::max(fixed.region_y[0], fixed.region_y[1]);
    if (arguments.curve_mode != 0) {
        CurveScreen(constants, settings, arguments, fixed.curve_radius);
    }
    constants.separation *= separation_multiplier;
    return constants;
}
