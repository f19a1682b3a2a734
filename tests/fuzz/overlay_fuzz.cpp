// Any bytes as a settings file: it is either accepted or throws a std::exception; fields without a key do not
// change, and no field is ever a NaN.
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <exception>
#include <sstream>
#include <string>

#include "settings/settings_overlay.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::istringstream file(std::string(reinterpret_cast<const char*>(data), size));
    DiagSettings settings;
    try {
        OverlaySettings(file, settings);
    } catch (const std::exception& error) {
        if (*error.what() == '\0') {
            std::abort();
        }
    }
    const bool numbers = !std::isnan(settings.scale) && !std::isnan(settings.ai_fps_limit) &&
                         !std::isnan(settings.f3d_separation_pct) &&
                         !std::isnan(settings.f3d_depth_strength) && !std::isnan(settings.f3d_screen_depth) &&
                         !std::isnan(settings.f3d_popout_limit) && !std::isnan(settings.f3d_eye_balance) &&
                         !std::isnan(settings.f3d_edge_magnet);
    const bool rest_untouched = !settings.log_to_console && settings.custom_model_path.empty() &&
                                settings.capture_draw_cursor && settings.eye_distance_mm == 63.0F &&
                                !settings.steam_build;
    if (!numbers || !rest_untouched) {
        std::abort();
    }
    return 0;
}
