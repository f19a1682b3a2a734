#include "settings/diag_settings.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

TEST(DiagSettings, StartsAtTheProductsDefaults) {
    const DiagSettings settings;
    EXPECT_FALSE(settings.log_to_console);
    EXPECT_EQ(settings.depth_model_quality, 1);
    EXPECT_EQ(settings.custom_model_path, "");
    EXPECT_TRUE(settings.capture_draw_cursor);
    EXPECT_EQ(settings.scale, 1.0F);
    EXPECT_EQ(settings.screen_shape, 1);
    EXPECT_FALSE(settings.optical_flow);
    EXPECT_FALSE(settings.fsr3);
    EXPECT_TRUE(settings.pseudo_3d);
    EXPECT_EQ(settings.depth_mode, 0);
    EXPECT_FALSE(settings.reshade_enabled);
    EXPECT_EQ(settings.ai_fps_limit, 30.0F);
    EXPECT_TRUE(settings.ai_fps_auto);
    EXPECT_EQ(settings.ai_resolution, 518);
    EXPECT_FALSE(settings.cinema_mode);
    EXPECT_EQ(settings.image_algo, 2);
    EXPECT_EQ(settings.f3d_separation_pct, 22.0F);
    EXPECT_EQ(settings.eye_distance_mm, 63.0F);
    EXPECT_TRUE(settings.f3d_fill_smooth);
    EXPECT_EQ(settings.f3d_depth_strength, 1.61F);
    EXPECT_EQ(settings.f3d_screen_depth, 0.38F);
    EXPECT_EQ(settings.f3d_popout_limit, 1.0F);
    EXPECT_EQ(settings.f3d_eye_balance, 0.0F);
    EXPECT_EQ(settings.f3d_search_steps, 20);
    EXPECT_EQ(settings.f3d_edge_magnet, 0.0F);
    EXPECT_FALSE(settings.reshade_depth_invert);
    EXPECT_FALSE(settings.gpu_frame_wait);
    EXPECT_TRUE(settings.depth_edge_restore);
    EXPECT_EQ(settings.f3d_debug_stage, 0);
    EXPECT_FALSE(settings.steam_build);
}

TEST(DiagSettings, IsOneInstancePerProcess) {
    EXPECT_EQ(&DiagSettings::Instance(), &DiagSettings::Instance());
    EXPECT_EQ(DiagSettings::Instance().f3d_separation_pct, 22.0F);
}

TEST(DiagSettings, SeparationIsAPercentageOfTheEyeDistance) {
    DiagSettings settings;
    EXPECT_EQ(settings.SeparationMm(), 63.0F * 22.0F * 0.01F);
    settings.f3d_separation_pct = 1.0F;
    EXPECT_FLOAT_EQ(settings.SeparationMm(), 0.63F);
    settings.f3d_separation_pct = -10.0F;
    EXPECT_FLOAT_EQ(settings.SeparationMm(), -6.3F);
}

TEST(DiagSettings, UnlikelyEyeDistancesCountAsTheDefault) {
    struct Case {
        float eye_distance_mm;
        float counts_as;
    };
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    constexpr float kNotANumber = std::numeric_limits<float>::quiet_NaN();
    for (const Case& c : {Case{45.0F, 45.0F}, Case{85.0F, 85.0F}, Case{44.9F, 63.0F}, Case{85.1F, 63.0F},
                          Case{70.5F, 70.5F}, Case{-63.0F, 63.0F}, Case{0.0F, 63.0F}, Case{kInfinity, 63.0F},
                          Case{-kInfinity, 63.0F}, Case{kNotANumber, 63.0F}}) {
        DiagSettings settings;
        settings.eye_distance_mm = c.eye_distance_mm;
        settings.f3d_separation_pct = 100.0F;
        EXPECT_FLOAT_EQ(settings.SeparationMm(), c.counts_as) << c.eye_distance_mm;
    }
}

}  // namespace
