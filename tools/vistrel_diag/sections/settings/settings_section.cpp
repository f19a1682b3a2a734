#include "tools/vistrel_diag/sections/settings/settings_section.h"

#include <algorithm>
#include <cstddef>
#include <fstream>
#include <string_view>

#include "depth/depth_model_presets.h"
#include "platform/open_file.h"
#include "platform/text_lines.h"
#include "settings/settings_file.h"
#include "tools/vistrel_diag/report/report.h"

namespace {

constexpr const char* kVistrelVersion = "1.74";  // The release this tool was written for.

const char* OnOff(bool on) {
    return on ? "on" : "off";
}

void PrintDepthModel(const DiagSettings& settings) {
    if (const DepthModelPreset* preset = FindDepthModelPreset(settings.depth_model_quality)) {
        Report::Line("Depth model     : %s (%dx%d)", preset->display_name, preset->input_width,
                     preset->input_height);
    } else {
        Report::Line("Depth model     : custom, %d px", settings.ai_resolution);
    }
    Report::Line("AI rate limit   : %.0f fps (auto=%s)", settings.ai_fps_limit, OnOff(settings.ai_fps_auto));
}

/// At most one warning: the first is enough to explain a flat picture. A NaN causes no warning.
void PrintNoDepthWarning(const DiagSettings& settings) {
    if (!settings.pseudo_3d) {
        Report::Line(
            "  -> 3D is OFF. A flat screen in the headset is the expected result; nothing below can add "
            "depth while this is off.");
    } else if (settings.SeparationMm() < kNearZeroSeparationMm) {
        Report::Line(
            "  -> Separation is near zero, so both eyes get almost the same picture. That looks exactly like "
            "no 3D at all.");
    } else if (settings.f3d_depth_strength < kNearZeroDepthStrength) {
        Report::Line(
            "  -> Depth strength is near zero, so the depth map is being applied with almost no effect.");
    }
}

/// Appends `text` to the start of a line up to the length that the report can print, without the line's
/// leading blanks.
void AppendToStart(std::string& start, std::string_view text) {
    if (start.empty()) {
        text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size()));
    }
    start += text.substr(0, Report::kLongestLine - start.size());
}

/// Returns how many lines were quoted.
std::size_t QuoteProductLines(std::istream& file) {
    constexpr std::string_view kProductWord = "vistrel";
    static_assert(kProductWord.size() <= TextLines::kOverlap);
    std::size_t quoted = 0;
    std::string start;
    bool of_product = false;
    TextLines lines(file);
    while (const auto piece = lines.Next()) {
        if (piece->begins) {
            start.clear();
            of_product = false;
        }
        of_product = of_product || piece->text.find(kProductWord) != std::string_view::npos;
        AppendToStart(start, piece->Fresh());
        if (piece->ends && of_product) {
            Report::Line("  %s", start.c_str());
            ++quoted;
        }
    }
    return quoted;
}

}  // namespace

void ReportSettingsInEffect() {
    Report::Section("VISTREL SETTINGS IN EFFECT");
    PrintSettingsInEffect(DiagSettings::Instance(), SettingsFilePath());
}

void PrintSettingsInEffect(const DiagSettings& settings, const std::string& file_path) {
    Report::Line("Vistrel version  : %s", kVistrelVersion);
    Report::Line("settings.json   : %s", file_path.c_str());
    if (file_path == kNoSettingsFile) {
        Report::Line(
            "  -> BUILT-IN DEFAULTS are being measured, not this user's setup. Put the exe in the Vistrel "
            "folder for a real answer.");
    }
    const bool stereo_warp = settings.image_algo == DiagSettings::kStereoWarpAlgorithm;
    Report::Line("Warp algorithm  : %s (vistrel_image_algo=%d)",
                 stereo_warp ? "Vistrel 3D (stereo_warp)" : "legacy parallax", settings.image_algo);
    Report::Line("Search steps    : %d   <- march length per pixel per eye", settings.f3d_search_steps);
    const bool native_depth = settings.depth_mode == DiagSettings::kReShadeDepthMode;
    Report::Line("Depth source    : %s", native_depth ? "ReShade native depth" : "AI model");
    if (!native_depth) {
        PrintDepthModel(settings);
    }
    Report::Line("3D enabled      : %s%s", settings.pseudo_3d ? "yes" : "NO",
                 settings.reshade_enabled ? "  (picture and depth from the ReShade addon)" : "");
    Report::Line("Separation      : %.1f mm    Depth strength: %.2f    Screen depth: %.2f",
                 settings.SeparationMm(), settings.f3d_depth_strength, settings.f3d_screen_depth);
    PrintNoDepthWarning(settings);
    Report::Line("Screen scale    : %.2f  (%.2f m wide)", settings.scale, settings.ScreenMetres());
    Report::Line("Cinema / OptFlow/ FSR3 : %s / %s / %s", OnOff(settings.cinema_mode),
                 OnOff(settings.optical_flow), OnOff(settings.fsr3));
    Report::Line(
        "Wait for GPU    : %s%s", settings.gpu_frame_wait ? "ON" : "OFF",
        settings.gpu_frame_wait
            ? "   (a few ms of latency a frame; no patches)"
            : "   (default; background can show through the picture in patches under heavy GPU load)");
}

void ReportSettingsVerbatim() {
    Report::Section("VISTREL SETTINGS, VERBATIM");
    if (SettingsFilePath() == kNoSettingsFile) {
        Report::Line("No settings file was found, so there is nothing to quote.");
        return;
    }
    std::ifstream file = OpenFileForReading(SettingsFilePath());
    PrintSettingsVerbatim(SettingsFilePath(), file.is_open() ? &file : nullptr);
}

void PrintSettingsVerbatim(const std::string& file_path, std::istream* file) {
    if (file == nullptr) {
        Report::Line("%s could not be opened.", file_path.c_str());
        return;
    }
    Report::Line("%s", file_path.c_str());
    Report::Line(
        "(only the \"vistrel_*\" keys are quoted; the rest of the file belongs to Ambulo and is deliberately "
        "left out)");
    Report::Line("");
    const std::size_t quoted = QuoteProductLines(*file);
    if (file->bad()) {
        Report::Line("  !! The file could not be read to its end.");
    } else if (quoted == 0) {
        Report::Line("  (no vistrel_* keys in the file - every Vistrel setting is at its built-in default)");
    }
}
