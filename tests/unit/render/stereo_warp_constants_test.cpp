#include "render/stereo_warp_constants.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <limits>
#include <sstream>

#include "settings/settings_overlay.h"

namespace {

constexpr float kNotANumber = std::numeric_limits<float>::quiet_NaN();

/// The buffer as the shader gets it: 28 little-endian words, addressed by their byte.
class Words {
  public:
    explicit Words(const StereoWarpConstants& constants) {
        std::memcpy(bytes_.data(), &constants, bytes_.size());
    }

    std::uint32_t Unsigned(std::size_t byte) const {
        std::uint32_t word = 0;
        for (std::size_t i = 4; i-- > 0;) {
            word = word << 8 | bytes_.at(byte + i);
        }
        return word;
    }
    float Float(std::size_t byte) const { return std::bit_cast<float>(Unsigned(byte)); }

    const std::array<std::uint8_t, 112>& bytes() const { return bytes_; }

  private:
    std::array<std::uint8_t, 112> bytes_ = {};
};

Words Compute(const DiagSettings& settings, const StereoWarpArguments& arguments,
              const FixedWarpSettings& fixed = {}) {
    return Words(ComputeStereoWarpConstants(settings, arguments, 1.0F, fixed));
}

/// As the timing draws: 3 m wide, flat.
StereoWarpArguments TimingArguments() {
    StereoWarpArguments arguments;
    arguments.screen_size = 3.0F;
    arguments.threshold = 0.063F;
    return arguments;
}

StereoWarpArguments Curved(std::uint32_t mode, float angle = 0.0F) {
    StereoWarpArguments arguments = TimingArguments();
    arguments.curve_mode = mode;
    arguments.curve_angle = angle;
    return arguments;
}

TEST(StereoWarpConstants, MatchTheDefaultsByteForByte) {
    // 63 mm x 22 % over 3 m, and the rest of the defaults, as single precision in memory order.
    const std::array<std::uint8_t, 112> expected = {
        0x5f, 0x63, 0x97, 0x3b,  // 0.00462
        0x5c, 0x8f, 0xc2, 0x3e,  // 0.38
        0x7b, 0x14, 0xce, 0x3f,  // 1.61
        0x00, 0x00, 0x80, 0x3f,  // 1
        0x00, 0x00, 0x00, 0x00,  // 0
        0x01, 0x00, 0x00, 0x00,  // right eye
        0x14, 0x00, 0x00, 0x00,  // 20 steps
        0x00, 0x00, 0x00, 0x00,  // debug stage 0
        0x00, 0x00, 0x00, 0x00,  // edge magnet
        0x00, 0x00, 0x00, 0x00,  // one mip level
        0x00, 0x80, 0x01, 0x44,  // 518
        0x00, 0x00, 0x00, 0x00,  // second flag
        0x00, 0x00, 0x00, 0x00,  // depth not inverted
        0x00, 0x00, 0x80, 0x3f,  // fill smooth
        0x00, 0x00, 0xa0, 0x40,  // 5
        0x00, 0x00, 0x40, 0x40,  // 3 m
        0x25, 0x06, 0x81, 0x3d,  // 0.063
        0x00, 0x00, 0x00, 0x00,  //
        0x00, 0x00, 0x00, 0x00,  //
        0x00, 0x00, 0x80, 0x3f,  // 1
        0xcd, 0xcc, 0x4c, 0x3d,  // 0.05
        0x5c, 0x8f, 0x42, 0x3f,  // 0.76
        0x33, 0x33, 0x73, 0x3f,  // 0.95
        0xa4, 0x70, 0x7d, 0x3f,  // 0.99
        0x00, 0x00, 0x00, 0x00,  // flat
        0x00, 0x00, 0x00, 0x00,  //
        0x00, 0x00, 0x00, 0x00,  //
        0x00, 0x00, 0x00, 0x00,  //
    };
    StereoWarpArguments arguments = TimingArguments();
    arguments.eye = 1;
    EXPECT_EQ(Compute(DiagSettings{}, arguments).bytes(), expected);
}

TEST(StereoWarpConstants, EverySettingHasItsOffset) {
    DiagSettings settings;
    settings.f3d_screen_depth = 0.125F;
    settings.f3d_depth_strength = 2.5F;
    settings.f3d_popout_limit = 0.75F;
    settings.f3d_eye_balance = -0.5F;
    settings.f3d_search_steps = 77;
    settings.f3d_debug_stage = 3;
    settings.f3d_edge_magnet = 0.25F;
    settings.f3d_fill_smooth = false;
    StereoWarpArguments arguments;
    arguments.depth_has_mips = true;
    arguments.second_flag = true;
    const Words words = Compute(settings, arguments);
    EXPECT_EQ(words.Float(4), 0.125F);
    EXPECT_EQ(words.Float(8), 2.5F);
    EXPECT_EQ(words.Float(12), 0.75F);
    EXPECT_EQ(words.Float(16), -0.5F);
    EXPECT_EQ(words.Unsigned(20), 0U);
    EXPECT_EQ(words.Unsigned(24), 77U);
    EXPECT_EQ(words.Unsigned(28), 3U);
    EXPECT_EQ(words.Float(32), 0.25F);
    EXPECT_EQ(words.Float(36), 1.0F);
    EXPECT_EQ(words.Float(44), 1.0F);
    EXPECT_EQ(words.Float(52), 0.0F);
}

TEST(StereoWarpConstants, NegativeCountsKeepTheirBits) {
    DiagSettings settings;
    settings.f3d_search_steps = -1;
    settings.f3d_debug_stage = std::numeric_limits<std::int32_t>::min();
    const Words words = Compute(settings, TimingArguments());
    EXPECT_EQ(words.Unsigned(24), 0xFFFFFFFFU);
    EXPECT_EQ(words.Unsigned(28), 0x80000000U);
}

/// The constants of the product's own flat screen, for the defaults under `json`.
Words ComputeFrom(const char* json) {
    DiagSettings settings;
    std::istringstream file(json);
    OverlaySettings(file, settings);
    StereoWarpArguments arguments;
    arguments.screen_size = settings.ScreenMetres();
    return Compute(settings, arguments);
}

TEST(StereoWarpConstants, SettingsOutOfRangeReachTheShaderAsStored) {
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    Words words = ComputeFrom(R"({"vistrel_f3d_separation_pct": 1e300, "vistrel_f3d_screen_depth": -1e300,
                                  "vistrel_f3d_depth_strength": 1e300, "vistrel_f3d_popout_limit": -1e300,
                                  "vistrel_f3d_eye_balance": 1e300, "vistrel_f3d_search_steps": 4294967297,
                                  "vistrel_f3d_debug_stage": 1e300, "vistrel_f3d_edge_magnet": -1e300,
                                  "vistrel_ai_resolution": -1e300})");
    EXPECT_EQ(words.Float(0), kInfinity);
    EXPECT_EQ(words.Float(4), -kInfinity);
    EXPECT_EQ(words.Float(8), kInfinity);
    EXPECT_EQ(words.Float(12), -kInfinity);
    EXPECT_EQ(words.Float(16), kInfinity);
    EXPECT_EQ(words.Unsigned(24), 1U);
    EXPECT_EQ(words.Unsigned(28), 0x80000000U);
    EXPECT_EQ(words.Float(32), -kInfinity);
    EXPECT_EQ(words.Float(40), -2147483648.0F);
    EXPECT_EQ(words.Float(60), 3.0F);

    words = ComputeFrom(R"({"vistrel_scale": 1e300})");
    EXPECT_EQ(words.Float(60), kInfinity);
    EXPECT_EQ(words.Float(0), 0.0F);
    words = ComputeFrom(R"({"vistrel_scale": -1e300})");
    EXPECT_EQ(words.Float(60), 1.0F);
    words = ComputeFrom(R"({"vistrel_scale": 1e300, "vistrel_f3d_separation_pct": 1e300})");
    EXPECT_TRUE(std::isnan(words.Float(0)));
}

TEST(StereoWarpConstants, SeparationFollowsItsPercentAndTheMultiplier) {
    DiagSettings settings;
    settings.f3d_separation_pct = 50.0F;
    const StereoWarpArguments arguments = TimingArguments();
    EXPECT_EQ(Compute(settings, arguments).Float(0), 63.0F * 50.0F * 0.01F * 0.001F / 3.0F);
    EXPECT_EQ(ComputeStereoWarpConstants(settings, arguments, -2.0F).separation,
              63.0F * 50.0F * 0.01F * 0.001F / 3.0F * -2.0F);
}

TEST(StereoWarpConstants, AnEyeDistanceOutOfRangeCountsAs63) {
    const auto separation = [](float eye_distance_mm) {
        DiagSettings settings;
        settings.eye_distance_mm = eye_distance_mm;
        return Compute(settings, TimingArguments()).Float(0);
    };
    const float at63 = separation(63.0F);
    EXPECT_EQ(separation(44.9F), at63);
    EXPECT_EQ(separation(85.1F), at63);
    EXPECT_EQ(separation(kNotANumber), at63);
    EXPECT_LT(separation(45.0F), at63);
    EXPECT_GT(separation(85.0F), at63);
}

TEST(StereoWarpConstants, AScreenWithoutSizeCountsAsOneMetre) {
    for (const float screen_size : {0.0F, 0.01F, -3.0F, kNotANumber}) {
        StereoWarpArguments arguments;
        arguments.screen_size = screen_size;
        const Words words = Compute(DiagSettings{}, arguments);
        EXPECT_EQ(words.Float(60), 1.0F);
        EXPECT_EQ(words.Float(0), 63.0F * 22.0F * 0.01F * 0.001F);
    }
    StereoWarpArguments arguments;
    arguments.screen_size = 0.02F;
    EXPECT_EQ(Compute(DiagSettings{}, arguments).Float(60), 0.02F);
}

TEST(StereoWarpConstants, TheSettingReplacesASmallDepthResolution) {
    const auto resolution = [](float argument) {
        StereoWarpArguments arguments;
        arguments.depth_resolution = argument;
        DiagSettings settings;
        settings.ai_resolution = 700;
        return Compute(settings, arguments).Float(40);
    };
    EXPECT_EQ(resolution(0.0F), 700.0F);
    EXPECT_EQ(resolution(63.9F), 700.0F);
    EXPECT_EQ(resolution(kNotANumber), 700.0F);
    EXPECT_EQ(resolution(64.0F), 64.0F);
    EXPECT_EQ(resolution(1024.5F), 1024.5F);
}

TEST(StereoWarpConstants, TheDefaultReplacesALowThreshold) {
    const auto threshold = [](float argument) {
        StereoWarpArguments arguments;
        arguments.threshold = argument;
        return Compute(DiagSettings{}, arguments).Float(64);
    };
    EXPECT_EQ(threshold(0.0F), 0.063F);
    EXPECT_EQ(threshold(0.03F), 0.063F);
    EXPECT_EQ(threshold(0.031F), 0.031F);
    EXPECT_EQ(threshold(kNotANumber), 0.063F);
}

TEST(StereoWarpConstants, DepthIsInvertedOnlyWhenItComesFromReShade) {
    const auto inverted = [](bool reshade, std::int32_t depth_mode, bool invert) {
        DiagSettings settings;
        settings.reshade_enabled = reshade;
        settings.depth_mode = depth_mode;
        settings.reshade_depth_invert = invert;
        return Compute(settings, StereoWarpArguments{}).Float(48);
    };
    EXPECT_EQ(inverted(true, 0, true), 1.0F);
    EXPECT_EQ(inverted(false, 1, true), 1.0F);
    EXPECT_EQ(inverted(true, 1, true), 1.0F);
    EXPECT_EQ(inverted(false, 0, true), 0.0F);
    EXPECT_EQ(inverted(false, 2, true), 0.0F);
    EXPECT_EQ(inverted(true, 1, false), 0.0F);
}

TEST(StereoWarpConstants, PairsAreSortedInAscendingOrder) {
    FixedWarpSettings swapped;
    std::swap(swapped.region_x[0], swapped.region_x[1]);
    std::swap(swapped.region_y[0], swapped.region_y[1]);
    EXPECT_EQ(Compute({}, TimingArguments(), swapped).bytes(), Compute({}, TimingArguments()).bytes());
    FixedWarpSettings half;
    std::swap(half.region_y[0], half.region_y[1]);
    EXPECT_EQ(Compute({}, TimingArguments(), half).bytes(), Compute({}, TimingArguments()).bytes());
}

TEST(StereoWarpConstants, FixedSettingsHaveTheirOffsets) {
    FixedWarpSettings fixed;
    fixed.curve_radius = 2.0F;
    fixed.flat_flag = true;
    fixed.flat_pair_first = true;
    fixed.fixed_flag = false;
    Words words = Compute({}, TimingArguments(), fixed);
    EXPECT_EQ(words.Float(56), 2.0F);
    EXPECT_EQ(words.Float(68), 1.0F);
    EXPECT_EQ(words.Float(72), 0.0F);
    EXPECT_EQ(words.Float(76), 0.0F);
    fixed.flat_pair_second = true;
    fixed.curve_radius_override = 7.5F;
    words = Compute({}, TimingArguments(), fixed);
    EXPECT_EQ(words.Float(56), 7.5F);
    EXPECT_EQ(words.Float(72), 1.0F);
    words = Compute({}, Curved(1), fixed);
    EXPECT_EQ(words.Float(68), 0.0F);
    EXPECT_EQ(words.Float(72), 0.0F);
    EXPECT_EQ(words.Float(76), 0.0F);
}

struct CurveCase {
    std::uint32_t mode;
    float angle;
    float radians;  // Expected; 0 for no separation.
    float mode_value;
    float wraps;
    float margin;
};

class CurvedScreen : public testing::TestWithParam<CurveCase> {};

TEST_P(CurvedScreen, ReplacesTheSeparation) {
    const CurveCase& curve = GetParam();
    const Words words = Compute(DiagSettings{}, Curved(curve.mode, curve.angle));
    const float arc_metres = 63.0F * 22.0F * 0.01F * 0.001F / 5.0F;
    EXPECT_EQ(words.Float(0), curve.radians > 0.0F ? arc_metres / curve.radians : 0.0F);
    EXPECT_EQ(words.Float(60), 3.0F);
    EXPECT_EQ(words.Float(96), curve.mode_value);
    EXPECT_EQ(words.Float(100), curve.wraps);
    EXPECT_EQ(words.Float(104), curve.margin);
    EXPECT_EQ(words.Float(108), curve.margin);
}

constexpr float kHalfTurn = 3.14159265F;

INSTANTIATE_TEST_SUITE_P(Modes, CurvedScreen,
                         testing::Values(CurveCase{1, 0.0F, 2.0F * kHalfTurn, 1.0F, 1.0F, 0.0F},
                                         CurveCase{2, 0.0F, kHalfTurn, 1.0F, 0.0F, 0.0F},
                                         CurveCase{3, 1.5F, 1.5F, 2.0F, 0.0F, 0.15F},
                                         CurveCase{3, 0.1F, 0.1F, 2.0F, 0.0F, 0.15F},
                                         CurveCase{3, 0.05F, 0.0F, 2.0F, 0.0F, 0.15F},
                                         CurveCase{3, -1.0F, 0.0F, 2.0F, 0.0F, 0.15F},
                                         CurveCase{4, 1.5F, 2.0F * kHalfTurn, 1.0F, 0.0F, 0.0F},
                                         CurveCase{0xFFFFFFFF, 1.5F, 2.0F * kHalfTurn, 1.0F, 0.0F, 0.0F}));

TEST(StereoWarpConstants, ACurveRadiusBelowThreeCountsAsThree) {
    const auto separation = [](float radius) {
        FixedWarpSettings fixed;
        fixed.curve_radius = radius;
        return Compute(DiagSettings{}, Curved(2), fixed).Float(0);
    };
    EXPECT_EQ(separation(2.9F), separation(3.0F));
    EXPECT_LT(separation(3.1F), separation(3.0F));
}

TEST(StereoWarpConstants, TheMultiplierScalesACurvedSeparationToo) {
    const float once = ComputeStereoWarpConstants({}, Curved(2), 1.0F).separation;
    EXPECT_EQ(ComputeStereoWarpConstants({}, Curved(2), 3.0F).separation, once * 3.0F);
}

}  // namespace
