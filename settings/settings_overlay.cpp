#include "settings/settings_overlay.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <nlohmann/json.hpp>
#include <type_traits>

namespace {

/// Truncates a fraction. A number that no int can hold becomes the value to which the processor converts
/// every such number.
std::int32_t IntFromDouble(double number) {
    using Limits = std::numeric_limits<std::int32_t>;
    const double whole = std::trunc(number);
    const bool fits = whole >= Limits::min() && whole <= Limits::max();
    return fits ? static_cast<std::int32_t>(whole) : Limits::min();
}

/// The nearest single-precision number. As on the processor, a number that would round beyond the largest one
/// becomes infinity.
float FloatFromDouble(double number) {
    constexpr double kFirstInfinite = 0x1.FFFFFFp127;  // Half a step above the largest.
    constexpr float kLargest = std::numeric_limits<float>::max();
    if (std::fabs(number) >= kFirstInfinite) {
        return std::copysign(std::numeric_limits<float>::infinity(),
                             static_cast<float>(std::copysign(1.0, number)));
    }
    return static_cast<float>(std::clamp<double>(number, -kLargest, kLargest));
}

/// Converts numbers with a fraction or an exponent here, because the library's plain cast is undefined for
/// values that the field cannot hold. Everything else, errors included, is left to the library.
template <typename Field>
void Overlay(const nlohmann::json& file, const char* key, Field& field) {
    if (const auto found = file.find(key); found != file.end() && found->is_number_float()) {
        if constexpr (std::is_same_v<Field, std::int32_t>) {
            field = IntFromDouble(found->template get<double>());
            return;
        } else if constexpr (std::is_same_v<Field, float>) {
            field = FloatFromDouble(found->template get<double>());
            return;
        }
    }
    field = file.value(key, field);
}

}  // namespace

void OverlaySettings(std::istream& file, DiagSettings& settings) {
    nlohmann::json keys;
    file >> keys;
    // In the product's order: the first wrong value ends the overlay, and the keys before it apply.
    Overlay(keys, "vistrel_image_algo", settings.image_algo);
    Overlay(keys, "vistrel_scale", settings.scale);
    Overlay(keys, "vistrel_f3d_search_steps", settings.f3d_search_steps);
    Overlay(keys, "vistrel_f3d_separation_pct", settings.f3d_separation_pct);
    Overlay(keys, "vistrel_f3d_depth_strength", settings.f3d_depth_strength);
    Overlay(keys, "vistrel_f3d_screen_depth", settings.f3d_screen_depth);
    Overlay(keys, "vistrel_f3d_popout_limit", settings.f3d_popout_limit);
    Overlay(keys, "vistrel_f3d_eye_balance", settings.f3d_eye_balance);
    Overlay(keys, "vistrel_f3d_edge_magnet", settings.f3d_edge_magnet);
    Overlay(keys, "vistrel_f3d_fill_smooth", settings.f3d_fill_smooth);
    Overlay(keys, "vistrel_f3d_debug_stage", settings.f3d_debug_stage);
    Overlay(keys, "vistrel_depth_model_quality", settings.depth_model_quality);
    Overlay(keys, "vistrel_ai_resolution", settings.ai_resolution);
    Overlay(keys, "vistrel_ai_fps_limit", settings.ai_fps_limit);
    Overlay(keys, "vistrel_ai_fps_auto", settings.ai_fps_auto);
    Overlay(keys, "vistrel_depth_mode", settings.depth_mode);
    Overlay(keys, "vistrel_reshade_enabled", settings.reshade_enabled);
    Overlay(keys, "vistrel_reshade_depth_invert", settings.reshade_depth_invert);
    Overlay(keys, "vistrel_pseudo_3d", settings.pseudo_3d);
    Overlay(keys, "vistrel_cinema_mode", settings.cinema_mode);
    Overlay(keys, "vistrel_optical_flow", settings.optical_flow);
    Overlay(keys, "vistrel_fsr3", settings.fsr3);
    Overlay(keys, "vistrel_gpu_frame_wait", settings.gpu_frame_wait);
    Overlay(keys, "vistrel_screen_shape", settings.screen_shape);
    Overlay(keys, "vistrel_depth_edge_restore", settings.depth_edge_restore);
}
