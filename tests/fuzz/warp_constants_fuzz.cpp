// Any bytes as the settings, the screen and the eye of the stereo warp: the shader can use every value in its
// buffer, whatever the numbers were.
#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <initializer_list>

#include "render/stereo_warp_constants.h"

namespace {

void Require(bool holds) {
    if (!holds) {
        std::abort();
    }
}

/// Values from the input's front, zero once it has ended.
class Values {
  public:
    Values(const std::uint8_t* data, std::size_t size) : data_(data), size_(size) {}

    template <typename Value>
    Value Next() {
        std::array<std::uint8_t, sizeof(Value)> bytes = {};
        const std::size_t taken = bytes.size() < size_ ? bytes.size() : size_;
        std::memcpy(bytes.data(), data_, taken);
        data_ += taken;
        size_ -= taken;
        return std::bit_cast<Value>(bytes);
    }
    float Float() { return Next<float>(); }
    bool Bit() { return (Next<std::uint8_t>() & 1U) != 0; }

  private:
    const std::uint8_t* data_;
    std::size_t size_;
};

struct Input {
    DiagSettings settings;
    StereoWarpArguments arguments;
    FixedWarpSettings fixed;
    float multiplier = 0.0F;
};

Input ReadInput(Values values) {
    Input input;
    DiagSettings& settings = input.settings;
    settings.f3d_separation_pct = values.Float();
    settings.eye_distance_mm = values.Float();
    settings.f3d_screen_depth = values.Float();
    settings.f3d_depth_strength = values.Float();
    settings.f3d_popout_limit = values.Float();
    settings.f3d_eye_balance = values.Float();
    settings.f3d_edge_magnet = values.Float();
    settings.f3d_search_steps = values.Next<std::int32_t>();
    settings.f3d_debug_stage = values.Next<std::int32_t>();
    settings.ai_resolution = values.Next<std::int32_t>();
    settings.depth_mode = values.Next<std::int32_t>();
    settings.reshade_enabled = values.Bit();
    settings.reshade_depth_invert = values.Bit();
    settings.f3d_fill_smooth = values.Bit();
    StereoWarpArguments& arguments = input.arguments;
    arguments.curve_mode = values.Next<std::uint8_t>();
    arguments.eye = values.Next<std::uint32_t>();
    arguments.screen_size = values.Float();
    arguments.depth_has_mips = values.Bit();
    arguments.second_flag = values.Bit();
    arguments.depth_resolution = values.Float();
    arguments.threshold = values.Float();
    arguments.curve_angle = values.Float();
    FixedWarpSettings& fixed = input.fixed;
    fixed.curve_radius = values.Float();
    fixed.curve_radius_override = values.Float();
    fixed.flat_flag = values.Bit();
    fixed.flat_pair_first = values.Bit();
    fixed.flat_pair_second = values.Bit();
    fixed.fixed_flag = values.Bit();
    fixed.region_x[0] = values.Float();
    fixed.region_x[1] = values.Float();
    fixed.region_y[0] = values.Float();
    fixed.region_y[1] = values.Float();
    input.multiplier = values.Float();
    return input;
}

/// Compares bit by bit, because a NaN equals nothing.
void RequireSame(float value, float expected) {
    Require(std::bit_cast<std::uint32_t>(value) == std::bit_cast<std::uint32_t>(expected));
}

void RequireSwitch(float value, bool on) {
    RequireSame(value, on ? 1.0F : 0.0F);
}

void RequireSettingsUnchanged(const StereoWarpConstants& constants, const Input& input) {
    const DiagSettings& settings = input.settings;
    RequireSame(constants.screen_depth, settings.f3d_screen_depth);
    RequireSame(constants.depth_strength, settings.f3d_depth_strength);
    RequireSame(constants.popout_limit, settings.f3d_popout_limit);
    RequireSame(constants.eye_balance, settings.f3d_eye_balance);
    RequireSame(constants.edge_magnet, settings.f3d_edge_magnet);
    Require(constants.eye == input.arguments.eye);
    Require(constants.search_steps == std::bit_cast<std::uint32_t>(settings.f3d_search_steps));
    Require(constants.debug_stage == std::bit_cast<std::uint32_t>(settings.f3d_debug_stage));
}

void RequireSwitches(const StereoWarpConstants& constants, const Input& input) {
    const bool flat = input.arguments.curve_mode == 0;
    const bool delivered = input.settings.reshade_enabled || input.settings.depth_mode == 1;
    RequireSwitch(constants.depth_has_mips, input.arguments.depth_has_mips);
    RequireSwitch(constants.second_flag, input.arguments.second_flag);
    RequireSwitch(constants.depth_inverted, delivered && input.settings.reshade_depth_invert);
    RequireSwitch(constants.fill_smooth, input.settings.f3d_fill_smooth);
    RequireSwitch(constants.flat_flag, flat && input.fixed.flat_flag);
    RequireSwitch(constants.flat_pair_flag,
                  flat && input.fixed.flat_pair_first && input.fixed.flat_pair_second);
    RequireSwitch(constants.fixed_flag, input.fixed.fixed_flag);
    RequireSwitch(constants.curve_wraps, input.arguments.curve_mode == 1);
}

/// Values by which the shader divides or with which it compares are never zero, negative or NaN, unless the
/// setting that replaces them is.
void RequireSizes(const StereoWarpConstants& constants, const Input& input) {
    const StereoWarpArguments& arguments = input.arguments;
    Require(constants.screen_size > 0.01F);
    Require(constants.screen_size == arguments.screen_size || constants.screen_size == 1.0F);
    Require(constants.threshold > 0.03F);
    Require(constants.threshold == arguments.threshold || constants.threshold == 0.063F);
    Require(constants.depth_resolution >= 64.0F
                ? constants.depth_resolution == arguments.depth_resolution ||
                      constants.depth_resolution == static_cast<float>(input.settings.ai_resolution)
                : constants.depth_resolution == static_cast<float>(input.settings.ai_resolution));
    const bool overridden = input.fixed.curve_radius_override > 0.0F;
    RequireSame(constants.curve_radius,
                overridden ? input.fixed.curve_radius_override : input.fixed.curve_radius);
}

void RequireRegion(float low, float high, const float (&corners)[2]) {
    const bool numbers = !std::isnan(corners[0]) && !std::isnan(corners[1]);
    if (numbers) {
        Require(low <= high);
        Require((low == corners[0] && high == corners[1]) || (low == corners[1] && high == corners[0]));
    }
}

void RequireCurve(const StereoWarpConstants& constants, std::uint32_t curve_mode) {
    const float expected_mode = curve_mode == 0 ? 0.0F : curve_mode == 3 ? 2.0F : 1.0F;
    RequireSame(constants.curve_mode, expected_mode);
    RequireSame(constants.curve_margin_x, curve_mode == 3 ? 0.15F : 0.0F);
    RequireSame(constants.curve_margin_y, curve_mode == 3 ? 0.15F : 0.0F);
}

/// In double precision: what is left of the metres between the eyes when the screen, or its arc, is 1 wide.
double ExpectedSeparation(const Input& input, const StereoWarpConstants& constants) {
    constexpr double kPi = 3.14159265358979323846;
    const float distance = input.settings.eye_distance_mm;
    const double eye_distance = distance >= 45.0F && distance <= 85.0F ? distance : 63.0;
    const double metres = eye_distance * input.settings.f3d_separation_pct / 100.0 / 1000.0;
    const std::uint32_t curve_mode = input.arguments.curve_mode;
    if (curve_mode == 0) {
        return metres / constants.screen_size * input.multiplier;
    }
    const double angle = curve_mode == 2   ? kPi
                         : curve_mode == 3 ? static_cast<double>(input.arguments.curve_angle)
                                           : 2.0 * kPi;
    if (curve_mode == 3 && input.arguments.curve_angle < 0.1F) {
        return 0.0;
    }
    const double radius = std::fmax(input.fixed.curve_radius, 3.0);
    return metres / radius / angle * input.multiplier;
}

/// Only for numbers far from the limits of single precision, where no intermediate product overflows or
/// underflows.
void RequireSeparation(const StereoWarpConstants& constants, const Input& input) {
    for (const float value : {input.settings.f3d_separation_pct, constants.screen_size, input.multiplier,
                              input.fixed.curve_radius, input.arguments.curve_angle}) {
        const float size = std::fabs(value);
        if (!(size > 1e-5F && size < 1e5F)) {
            return;
        }
    }
    const double expected = ExpectedSeparation(input, constants);
    Require(std::fabs(constants.separation - expected) <= std::fabs(expected) * 1e-6);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const Input input = ReadInput(Values(data, size));
    const StereoWarpConstants constants =
        ComputeStereoWarpConstants(input.settings, input.arguments, input.multiplier, input.fixed);
    RequireSettingsUnchanged(constants, input);
    RequireSwitches(constants, input);
    RequireSizes(constants, input);
    RequireRegion(constants.region_low_x, constants.region_high_x, input.fixed.region_x);
    RequireRegion(constants.region_low_y, constants.region_high_y, input.fixed.region_y);
    RequireCurve(constants, input.arguments.curve_mode);
    RequireSeparation(constants, input);
    return 0;
}
