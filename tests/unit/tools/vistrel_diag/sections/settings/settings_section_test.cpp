#include "tools/vistrel_diag/sections/settings/settings_section.h"

#include <gtest/gtest.h>

#include <limits>
#include <sstream>
#include <string>

#include "settings/settings_overlay.h"
#include "tests/unit/support/breaking_stream.h"
#include "tests/unit/support/report_capture.h"

namespace {

/// The section for the defaults under `json`, from a file "C:\V\settings.json".
std::string InEffect(const std::string& json) {
    DiagSettings settings;
    std::istringstream file(json);
    OverlaySettings(file, settings);
    const ReportCapture report;
    PrintSettingsInEffect(settings, "C:\\V\\settings.json");
    return report.Text();
}

std::string InEffect(const DiagSettings& settings) {
    const ReportCapture report;
    PrintSettingsInEffect(settings, "C:\\V\\settings.json");
    return report.Text();
}

bool Contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

TEST(SettingsInEffect, Defaults) {
    const ReportCapture report;
    ReportSettingsInEffect();
    EXPECT_EQ(report.Text(), R"(
== VISTREL SETTINGS IN EFFECT ====================================
Vistrel version  : 1.74
settings.json   : (not found)
  -> BUILT-IN DEFAULTS are being measured, not this user's setup. Put the exe in the Vistrel folder for a real answer.
Warp algorithm  : Vistrel 3D (stereo_warp) (vistrel_image_algo=2)
Search steps    : 20   <- march length per pixel per eye
Depth source    : AI model
Depth model     : Square Normal (392) (392x392)
AI rate limit   : 30 fps (auto=on)
3D enabled      : yes
Separation      : 13.9 mm    Depth strength: 1.61    Screen depth: 0.38
Screen scale    : 1.00  (3.00 m wide)
Cinema / OptFlow/ FSR3 : off / off / off
Wait for GPU    : OFF   (default; background can show through the picture in patches under heavy GPU load)
)");
}

TEST(SettingsInEffect, ReShade) {
    EXPECT_EQ(InEffect(R"({"vistrel_depth_mode": 1, "vistrel_reshade_enabled": true,
                           "vistrel_reshade_depth_invert": true, "vistrel_f3d_search_steps": 48,
                           "vistrel_gpu_frame_wait": true, "vistrel_scale": 1.5})"),
              R"(Vistrel version  : 1.74
settings.json   : C:\V\settings.json
Warp algorithm  : Vistrel 3D (stereo_warp) (vistrel_image_algo=2)
Search steps    : 48   <- march length per pixel per eye
Depth source    : ReShade native depth
3D enabled      : yes  (picture and depth from the ReShade addon)
Separation      : 13.9 mm    Depth strength: 1.61    Screen depth: 0.38
Screen scale    : 1.50  (4.50 m wide)
Cinema / OptFlow/ FSR3 : off / off / off
Wait for GPU    : ON   (a few ms of latency a frame; no patches)
)");
}

TEST(SettingsInEffect, ThreeDOffIsTheOnlyWarning) {
    EXPECT_EQ(InEffect(R"({"vistrel_pseudo_3d": false, "vistrel_f3d_separation_pct": 0,
                           "vistrel_f3d_depth_strength": 0, "vistrel_cinema_mode": true})"),
              R"(Vistrel version  : 1.74
settings.json   : C:\V\settings.json
Warp algorithm  : Vistrel 3D (stereo_warp) (vistrel_image_algo=2)
Search steps    : 20   <- march length per pixel per eye
Depth source    : AI model
Depth model     : Square Normal (392) (392x392)
AI rate limit   : 30 fps (auto=on)
3D enabled      : NO
Separation      : 0.0 mm    Depth strength: 0.00    Screen depth: 0.38
  -> 3D is OFF. A flat screen in the headset is the expected result; nothing below can add depth while this is off.
Screen scale    : 1.00  (3.00 m wide)
Cinema / OptFlow/ FSR3 : on / off / off
Wait for GPU    : OFF   (default; background can show through the picture in patches under heavy GPU load)
)");
}

TEST(SettingsInEffect, NearZeroSeparation) {
    EXPECT_EQ(InEffect(R"({"vistrel_f3d_separation_pct": 1.0, "vistrel_f3d_depth_strength": 0.01,
                           "vistrel_optical_flow": true, "vistrel_depth_model_quality": 11})"),
              R"(Vistrel version  : 1.74
settings.json   : C:\V\settings.json
Warp algorithm  : Vistrel 3D (stereo_warp) (vistrel_image_algo=2)
Search steps    : 20   <- march length per pixel per eye
Depth source    : AI model
Depth model     : Video Depth Fast (518x294) (518x294)
AI rate limit   : 30 fps (auto=on)
3D enabled      : yes
Separation      : 0.6 mm    Depth strength: 0.01    Screen depth: 0.38
  -> Separation is near zero, so both eyes get almost the same picture. That looks exactly like no 3D at all.
Screen scale    : 1.00  (3.00 m wide)
Cinema / OptFlow/ FSR3 : off / on / off
Wait for GPU    : OFF   (default; background can show through the picture in patches under heavy GPU load)
)");
}

TEST(SettingsInEffect, NearZeroDepthStrength) {
    EXPECT_EQ(InEffect(R"({"vistrel_f3d_depth_strength": 0.049, "vistrel_image_algo": 0,
                           "vistrel_f3d_screen_depth": -0.125, "vistrel_fsr3": true})"),
              R"(Vistrel version  : 1.74
settings.json   : C:\V\settings.json
Warp algorithm  : legacy parallax (vistrel_image_algo=0)
Search steps    : 20   <- march length per pixel per eye
Depth source    : AI model
Depth model     : Square Normal (392) (392x392)
AI rate limit   : 30 fps (auto=on)
3D enabled      : yes
Separation      : 13.9 mm    Depth strength: 0.05    Screen depth: -0.12
  -> Depth strength is near zero, so the depth map is being applied with almost no effect.
Screen scale    : 1.00  (3.00 m wide)
Cinema / OptFlow/ FSR3 : off / off / on
Wait for GPU    : OFF   (default; background can show through the picture in patches under heavy GPU load)
)");
}

TEST(SettingsInEffect, CustomQuality) {
    EXPECT_EQ(InEffect(R"({"vistrel_depth_model_quality": 12, "vistrel_ai_resolution": 700,
                           "vistrel_ai_fps_limit": 59.94, "vistrel_ai_fps_auto": false})"),
              R"(Vistrel version  : 1.74
settings.json   : C:\V\settings.json
Warp algorithm  : Vistrel 3D (stereo_warp) (vistrel_image_algo=2)
Search steps    : 20   <- march length per pixel per eye
Depth source    : AI model
Depth model     : custom, 700 px
AI rate limit   : 60 fps (auto=off)
3D enabled      : yes
Separation      : 13.9 mm    Depth strength: 1.61    Screen depth: 0.38
Screen scale    : 1.00  (3.00 m wide)
Cinema / OptFlow/ FSR3 : off / off / off
Wait for GPU    : OFF   (default; background can show through the picture in patches under heavy GPU load)
)");
}

TEST(SettingsInEffect, ANegativeQualityIsCustomToo) {
    EXPECT_TRUE(
        Contains(InEffect(R"({"vistrel_depth_model_quality": -1})"), "\nDepth model     : custom, 518 px\n"));
    EXPECT_TRUE(Contains(InEffect(R"({"vistrel_depth_model_quality": 0})"),
                         "\nDepth model     : Square Fast (256) (256x256)\n"));
}

TEST(SettingsInEffect, AnyOtherNumberIsTheLegacyWarpOrTheAiModel) {
    EXPECT_TRUE(Contains(InEffect(R"({"vistrel_image_algo": -3})"),
                         "\nWarp algorithm  : legacy parallax (vistrel_image_algo=-3)\n"));
    EXPECT_TRUE(Contains(InEffect(R"({"vistrel_depth_mode": 2})"), "\nDepth source    : AI model\n"));
}

TEST(SettingsInEffect, WarningsBeginStrictlyBelowTheirThresholds) {
    DiagSettings settings;
    settings.f3d_separation_pct = 100.0F / 63.0F;  // 1 mm in single precision.
    ASSERT_EQ(settings.SeparationMm(), 1.0F);
    settings.f3d_depth_strength = 0.05F;
    EXPECT_FALSE(Contains(InEffect(settings), "->"));
    settings.f3d_depth_strength = 0.0499999F;
    EXPECT_TRUE(Contains(InEffect(settings), "  -> Depth strength"));
    settings.f3d_separation_pct = 1.587F;
    EXPECT_TRUE(Contains(InEffect(settings), "  -> Separation"));
    settings.f3d_separation_pct = -22.0F;
    EXPECT_TRUE(Contains(InEffect(settings), "  -> Separation"));
}

TEST(SettingsInEffect, AValueThatIsNotANumberGivesNoWarning) {
    DiagSettings settings;
    settings.f3d_separation_pct = std::numeric_limits<float>::quiet_NaN();
    settings.f3d_depth_strength = std::numeric_limits<float>::quiet_NaN();
    EXPECT_FALSE(Contains(InEffect(settings), "->"));
}

TEST(SettingsInEffect, NumbersOutOfRangeArePrintedAsStored) {
    EXPECT_EQ(InEffect(R"({"vistrel_image_algo": 4294967298, "vistrel_f3d_search_steps": 1e300,
                           "vistrel_depth_model_quality": -4294967297, "vistrel_ai_resolution": 4294967295,
                           "vistrel_depth_mode": 2147483648.5, "vistrel_ai_fps_limit": 1e39,
                           "vistrel_f3d_separation_pct": 1e300, "vistrel_f3d_depth_strength": 1e300,
                           "vistrel_f3d_screen_depth": -1e300, "vistrel_scale": 1e300})"),
              R"(Vistrel version  : 1.74
settings.json   : C:\V\settings.json
Warp algorithm  : Vistrel 3D (stereo_warp) (vistrel_image_algo=2)
Search steps    : -2147483648   <- march length per pixel per eye
Depth source    : AI model
Depth model     : custom, -1 px
AI rate limit   : inf fps (auto=on)
3D enabled      : yes
Separation      : inf mm    Depth strength: inf    Screen depth: -inf
Screen scale    : inf  (inf m wide)
Cinema / OptFlow/ FSR3 : off / off / off
Wait for GPU    : OFF   (default; background can show through the picture in patches under heavy GPU load)
)");
}

TEST(SettingsInEffect, NegativeInfinitiesArePrintedWithAWarning) {
    EXPECT_EQ(InEffect(R"({"vistrel_image_algo": -3e9, "vistrel_f3d_search_steps": -4294967297,
                           "vistrel_depth_model_quality": 3e9, "vistrel_ai_resolution": 3e9,
                           "vistrel_depth_mode": 4294967296, "vistrel_ai_fps_limit": -1e39,
                           "vistrel_f3d_separation_pct": -1e300, "vistrel_f3d_depth_strength": -1e300,
                           "vistrel_f3d_screen_depth": 1e300, "vistrel_scale": -1e300})"),
              R"(Vistrel version  : 1.74
settings.json   : C:\V\settings.json
Warp algorithm  : legacy parallax (vistrel_image_algo=-2147483648)
Search steps    : -1   <- march length per pixel per eye
Depth source    : AI model
Depth model     : custom, -2147483648 px
AI rate limit   : -inf fps (auto=on)
3D enabled      : yes
Separation      : -inf mm    Depth strength: -inf    Screen depth: inf
  -> Separation is near zero, so both eyes get almost the same picture. That looks exactly like no 3D at all.
Screen scale    : -inf  (-inf m wide)
Cinema / OptFlow/ FSR3 : off / off / off
Wait for GPU    : OFF   (default; background can show through the picture in patches under heavy GPU load)
)");
}

TEST(SettingsInEffect, TheLargestNumbersArePrinted) {
    EXPECT_TRUE(Contains(InEffect(R"({"vistrel_scale": 3.4028235e38})"),
                         "\nScreen scale    : 340282346638528859811704183484516925440.00  (inf m wide)\n"));
    EXPECT_TRUE(Contains(InEffect(R"({"vistrel_f3d_search_steps": 2147483647})"),
                         "\nSearch steps    : 2147483647   <- march length per pixel per eye\n"));
}

TEST(SettingsInEffect, AFileNameThatResemblesTheMissingOneIsAFile) {
    const ReportCapture report;
    PrintSettingsInEffect(DiagSettings(), "(not found) ");
    EXPECT_FALSE(Contains(report.Text(), "BUILT-IN"));
}

constexpr const char* kVerbatimOpening = R"(C:\V\settings.json
(only the "vistrel_*" keys are quoted; the rest of the file belongs to Ambulo and is deliberately left out)

)";

/// What is quoted of a file with these bytes, behind the opening lines.
std::string Verbatim(const std::string& bytes) {
    std::istringstream file(bytes);
    const ReportCapture report;
    PrintSettingsVerbatim("C:\\V\\settings.json", &file);
    const std::string text = report.Text();
    const std::string opening = kVerbatimOpening;
    EXPECT_EQ(text.substr(0, opening.size()), opening);
    return text.substr(opening.size());
}

constexpr const char* kNoKeys =
    "  (no vistrel_* keys in the file - every Vistrel setting is at its built-in default)\n";

TEST(SettingsVerbatim, WithoutAFileThereIsNothingToQuote) {
    const ReportCapture report;
    ReportSettingsVerbatim();
    EXPECT_EQ(report.Text(), R"(
== VISTREL SETTINGS, VERBATIM ====================================
No settings file was found, so there is nothing to quote.
)");
}

TEST(SettingsVerbatim, AMissingFileIsNamed) {
    const ReportCapture report;
    PrintSettingsVerbatim("C:\\Üser\\settings.json", nullptr);
    EXPECT_EQ(report.Text(), "C:\\Üser\\settings.json could not be opened.\n");
}

TEST(SettingsVerbatim, AReadErrorIsNotReportedAsNoKeys) {
    BreakingStream file;
    const ReportCapture report;
    PrintSettingsVerbatim("C:\\V\\settings.json", &file);
    EXPECT_EQ(report.Text(), std::string(kVerbatimOpening) + "  !! The file could not be read to its end.\n");
}

TEST(SettingsVerbatim, OnlyTheProductsLinesAreQuoted) {
    EXPECT_EQ(Verbatim("{\n"
                       "    \"osc_port\": 9000,\n"
                       "    \"vistrel_scale\": 1.25,  \n"
                       "\t \t\"vistrel_fsr3\" :\ttrue\n"
                       "    \"wallpaper\": \"vistrel.png\",\n"
                       "    \"Vistrel_upper\": 1,\n"
                       "    \"secret\": \"abc\", \"vistrel_pseudo_3d\": true, \"more\": 1\n"
                       "}\n"),
              "  \"vistrel_scale\": 1.25,  \n"
              "  \"vistrel_fsr3\" :\ttrue\n"
              "  \"wallpaper\": \"vistrel.png\",\n"
              "  \"secret\": \"abc\", \"vistrel_pseudo_3d\": true, \"more\": 1\n");
}

TEST(SettingsVerbatim, AFileOfOneLineIsQuotedWhole) {
    EXPECT_EQ(Verbatim(R"({"osc_port":9000,"vistrel_scale":1.25})"),
              "  {\"osc_port\":9000,\"vistrel_scale\":1.25}\n");
}

TEST(SettingsVerbatim, AcceptsBothLineEnds) {
    EXPECT_EQ(Verbatim("vistrel_a\r\nother\r\nvistrel_b\nvistrel_c\r\n"),
              "  vistrel_a\n  vistrel_b\n  vistrel_c\n");
    EXPECT_EQ(Verbatim("vistrel_a\r\nvistrel_b"), "  vistrel_a\n  vistrel_b\n");
}

TEST(SettingsVerbatim, ReachTheReportFileWithItsLineEnds) {
    std::istringstream file("vistrel_a\nvistrel_b\r\n");
    const ReportCapture report;
    PrintSettingsVerbatim("p", &file);
    EXPECT_TRUE(Contains(report.FileText(), "\r\n\r\n  vistrel_a\r\n  vistrel_b\r\n"));
}

TEST(SettingsVerbatim, TheBareWordIsALineOfTheProduct) {
    EXPECT_EQ(Verbatim("vistrel\n vistre\nvistr\nel\n"), "  vistrel\n");
}

TEST(SettingsVerbatim, AFileWithoutProductLinesSaysSo) {
    EXPECT_EQ(Verbatim(""), kNoKeys);
    EXPECT_EQ(Verbatim("{\n  \"osc_port\": 9000\n}\n"), kNoKeys);
    EXPECT_EQ(Verbatim("{\"VISTREL_SCALE\": 1}"), kNoKeys);
}

TEST(SettingsVerbatim, ALineTooLongForTheReportIsCut) {
    const std::string line = "vistrel_" + std::string(6000, 'x');
    EXPECT_EQ(Verbatim("  \t" + line + "\nvistrel_b\n"), "  " + line.substr(0, 4093) + "\n  vistrel_b\n");
    EXPECT_EQ(Verbatim(line.substr(0, 4093)), "  " + line.substr(0, 4093) + "\n");
}

TEST(SettingsVerbatim, TheWordIsFoundAfterTheCut) {
    for (const std::size_t before : {4090U, 5000U, 262'140U, 262'143U, 300'000U, 1'000'000U}) {
        const std::string line = std::string(before, 'x') + "vistrel" + std::string(300'000, 'y');
        EXPECT_EQ(Verbatim("other\n" + line + "\n"), "  " + line.substr(0, 4093) + "\n") << before;
    }
}

TEST(SettingsVerbatim, LeadingBlanksOfAnyLengthAreRemoved) {
    EXPECT_EQ(Verbatim(std::string(600'000, ' ') + "\tvistrel_a \n"), "  vistrel_a \n");
    EXPECT_EQ(Verbatim(std::string(600'000, ' ') + "\n"), kNoKeys);
}

TEST(SettingsVerbatim, BinaryDataDoesNoHarm) {
    EXPECT_EQ(Verbatim("\xFF\xFE%s%n vistrel \x01\x80\n"), "  \xFF\xFE%s%n vistrel \x01\x80\n");
    // A report line ends at a zero byte, as text does everywhere in it.
    EXPECT_EQ(Verbatim(std::string("vistrel a\0b\nx\0vistrel\n\0vistrel\n", 31)), "  vistrel a\n  x\n  \n");
    EXPECT_EQ(Verbatim("vistrel_a\nvist\x1Arel\nvistrel_b\n"), "  vistrel_a\n")
        << "0x1A ends a text file on Windows";
}

}  // namespace
