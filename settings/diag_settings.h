// The product's settings on which the measurements are based.
#pragma once

#include <cstdint>
#include <string>

/// The product's built-in defaults until the settings file overlays them (settings_overlay.h). Fields are
/// named after their keys in the file, without the "vistrel_" prefix; those marked "never read" always keep
/// their default.
struct DiagSettings {
    /// The process-wide record, created with the defaults on the first call. Only the settings loader changes
    /// it.
    static DiagSettings& Instance();

    /// The separation of the two eye views in millimetres, in single precision. An eye distance outside 45 to
    /// 85 mm, or NaN, counts as 63 mm.
    float SeparationMm() const;

    /// How wide the virtual screen is, in metres.
    float ScreenMetres() const { return scale * 3.0F; }

    bool log_to_console = false;           ///< never read; echo the log of log/logger.h to the console
    std::int32_t depth_model_quality = 1;  ///< index into DepthModelPresets(); any other value: custom model
    std::string custom_model_path;         ///< never read; UTF-8
    bool capture_draw_cursor = true;       ///< never read
    float scale = 1.0F;                    ///< of the virtual screen; see ScreenMetres
    std::int32_t screen_shape = 1;
    bool optical_flow = false;
    bool fsr3 = false;
    bool pseudo_3d = true;        ///< false: the headset shows a flat screen
    std::int32_t depth_mode = 0;  ///< kReShadeDepthMode, or any other value: depth from the AI model
    bool reshade_enabled = false;
    float ai_fps_limit = 30.0F;  ///< maximum inferences per second
    bool ai_fps_auto = true;
    std::int32_t ai_resolution = 518;  ///< input size of a custom depth model, in pixels
    bool cinema_mode = false;
    std::int32_t image_algo = 2;       ///< kStereoWarpAlgorithm, or any other value: the legacy parallax warp
    float f3d_separation_pct = 22.0F;  ///< eye separation in percent of the eye distance
    float eye_distance_mm = 63.0F;     ///< never read
    bool f3d_fill_smooth = true;
    float f3d_depth_strength = 1.61F;
    float f3d_screen_depth = 0.38F;
    float f3d_popout_limit = 1.0F;
    float f3d_eye_balance = 0.0F;
    std::int32_t f3d_search_steps = 20;  ///< march length for each pixel of each eye
    float f3d_edge_magnet = 0.0F;
    bool reshade_depth_invert = false;
    bool gpu_frame_wait = false;
    bool depth_edge_restore = true;
    std::int32_t f3d_debug_stage = 0;
    bool steam_build = false;  ///< never read; names the user's settings file

    static constexpr std::int32_t kReShadeDepthMode = 1;
    static constexpr std::int32_t kStereoWarpAlgorithm = 2;
};
