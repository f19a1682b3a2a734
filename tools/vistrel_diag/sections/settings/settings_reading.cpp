#include "tools/vistrel_diag/sections/settings/settings_reading.h"

#include <cmath>
#include <cstddef>
#include <limits>
#include <string_view>
#include <utility>

#include "depth/depth_model_presets.h"
#include "platform/format.h"
#include "tools/vistrel_diag/sections/settings/settings_section.h"

namespace {

constexpr std::int32_t kCustomModel = -1;

/// Separation, depth strength and the warnings about them depend on each other; they are put together at the
/// end.
struct PrintedDepth {
    float separation_mm = 0.0F;
    float strength = 0.0F;
};

bool ReadFile(const SourceLine& line, SettingsInEffectReading& reading) {
    if (reading.version_line == 0 &&
        LineScan(line.text).Text("Vistrel version  : ").Rest(reading.product_version).Matches()) {
        reading.version_line = line.number;
        return true;
    }
    if (reading.file_line == 0 &&
        LineScan(line.text).Text("settings.json   : ").Rest(reading.file_path).Matches()) {
        reading.file_line = line.number;
        return true;
    }
    return ReadFixedLine(
        line,
        "  -> BUILT-IN DEFAULTS are being measured, not this user's setup. Put the exe in the "
        "Vistrel folder for a real answer.",
        reading.defaults_line);
}

bool ReadWarp(const SourceLine& line, SettingsInEffectReading& reading) {
    std::size_t algorithm = 0;
    std::int32_t number = 0;
    if (LineScan(line.text)
            .Text("Warp algorithm  : ")
            .OneOf(algorithm, {"Vistrel 3D (stereo_warp)", "legacy parallax"})
            .Text(" (vistrel_image_algo=")
            .Whole(number)
            .Text(")")
            .IsWhole()) {
        reading.settings.image_algo = number;
        reading.warp_line = line.number;
        return true;
    }
    if (LineScan(line.text)
            .Text("Search steps    : ")
            .Whole(number)
            .Text("   <- march length per pixel per eye")
            .IsWhole()) {
        reading.settings.f3d_search_steps = number;
        reading.search_steps_line = line.number;
        return true;
    }
    return false;
}

/// The quality that selects the preset of that name and size.
std::optional<std::int32_t> QualityOf(std::string_view name_and_size) {
    const auto& presets = DepthModelPresets();
    for (std::size_t i = 0; i < presets.size(); ++i) {
        const DepthModelPreset& preset = presets[i];
        if (name_and_size.starts_with(preset.display_name) &&
            IsLine(name_and_size,
                   FormatText("%s (%dx%d)", preset.display_name, preset.input_width, preset.input_height))) {
            return static_cast<std::int32_t>(i);
        }
    }
    return std::nullopt;
}

bool ReadDepthModel(const SourceLine& line, SettingsInEffectReading& reading) {
    std::string model;
    std::int32_t pixels = 0;
    DiagSettings& settings = reading.settings;
    if (!LineScan(line.text).Text("Depth model     : ").Rest(model).Matches()) {
        return false;
    }
    if (LineScan(model).Text("custom, ").Whole(pixels).Text(" px").IsWhole()) {
        settings.ai_resolution = pixels;
        settings.depth_model_quality = kCustomModel;
    } else if (const std::optional<std::int32_t> quality = QualityOf(model)) {
        settings.depth_model_quality = *quality;
    } else {
        return false;
    }
    reading.depth_model_line = line.number;
    return true;
}

bool ReadDepthSource(const SourceLine& line, SettingsInEffectReading& reading) {
    DiagSettings& settings = reading.settings;
    std::size_t source = 0;
    std::size_t automatic = 0;
    float limit = 0.0F;
    if (LineScan(line.text)
            .Text("Depth source    : ")
            .OneOf(source, {"ReShade native depth", "AI model"})
            .IsWhole()) {
        settings.depth_mode = source == 0 ? DiagSettings::kReShadeDepthMode : 0;
        reading.depth_source_line = line.number;
        return true;
    }
    if (LineScan(line.text)
            .Text("AI rate limit   : ")
            .AnyNumber(limit)
            .Text(" fps (auto=")
            .OneOf(automatic, {"off", "on"})
            .Text(")")
            .IsWhole()) {
        settings.ai_fps_limit = limit;
        settings.ai_fps_auto = automatic == 1;
        reading.rate_limit_line = line.number;
        return true;
    }
    return ReadDepthModel(line, reading);
}

bool ReadStereo(const SourceLine& line, SettingsInEffectReading& reading) {
    std::size_t enabled = 0;
    std::string rest;
    if (!LineScan(line.text)
             .Text("3D enabled      : ")
             .OneOf(enabled, {"NO", "yes"})
             .Blanks()
             .Rest(rest)
             .Matches()) {
        return false;
    }
    const bool reshade = IsLine(rest, "(picture and depth from the ReShade addon)");
    if (!reshade && !rest.empty()) {
        return false;
    }
    reading.settings.pseudo_3d = enabled == 1;
    reading.settings.reshade_enabled = reshade;
    reading.stereo_line = line.number;
    return true;
}

bool ReadSeparation(const SourceLine& line, SettingsInEffectReading& reading, PrintedDepth& depth) {
    float separation = 0.0F;
    float strength = 0.0F;
    float screen_depth = 0.0F;
    if (!LineScan(line.text)
             .Text("Separation      : ")
             .AnyNumber(separation)
             .Text(" mm    Depth strength: ")
             .AnyNumber(strength)
             .Text("    Screen depth: ")
             .AnyNumber(screen_depth)
             .IsWhole()) {
        return false;
    }
    depth = {separation, strength};
    reading.settings.f3d_screen_depth = screen_depth;
    reading.separation_line = line.number;
    return true;
}

bool ReadNoDepthWarning(const SourceLine& line, SettingsInEffectReading& reading) {
    return ReadFixedLine(
               line,
               "  -> 3D is OFF. A flat screen in the headset is the expected result; nothing below can "
               "add depth while this is off.",
               reading.no_stereo_line) ||
           ReadFixedLine(line,
                         "  -> Separation is near zero, so both eyes get almost the same picture. That looks "
                         "exactly like no 3D at all.",
                         reading.near_zero_separation_line) ||
           ReadFixedLine(line,
                         "  -> Depth strength is near zero, so the depth map is being applied with almost no "
                         "effect.",
                         reading.near_zero_strength_line);
}

/// Whether a scale of `candidate` prints as `scale` and `metres`.
bool PrintsAs(float candidate, float scale, float metres) {
    DiagSettings settings;
    settings.scale = candidate;
    return FormatText("%.2f", candidate) == FormatText("%.2f", scale) &&
           FormatText("%.2f", settings.ScreenMetres()) == FormatText("%.2f", metres);
}

/// A scale that prints as `scale` and whose screen width prints as `metres`; `scale` itself when there is
/// none. Both were rounded, so it is searched for where their ranges overlap, which may be a single float.
float ScaleThatPrints(float scale, float metres) {
    constexpr double kMetresPerScale = 3.0;
    constexpr double kHalfOfLastDecimal = 0.005;
    constexpr int kMostSteps = 8;
    if (!std::isfinite(scale) || !std::isfinite(metres) || PrintsAs(scale, scale, metres)) {
        return scale;
    }
    const double low = std::fmax(scale - kHalfOfLastDecimal, (metres - kHalfOfLastDecimal) / kMetresPerScale);
    const double high =
        std::fmin(scale + kHalfOfLastDecimal, (metres + kHalfOfLastDecimal) / kMetresPerScale);
    const auto middle = static_cast<float>((low + high) / 2.0);
    float above = middle;
    float below = middle;
    for (int step = 0; step < kMostSteps; ++step) {
        if (PrintsAs(above, scale, metres)) {
            return above;
        }
        if (PrintsAs(below, scale, metres)) {
            return below;
        }
        above = std::nextafter(above, std::numeric_limits<float>::infinity());
        below = std::nextafter(below, -std::numeric_limits<float>::infinity());
    }
    return scale;
}

bool ReadScreen(const SourceLine& line, SettingsInEffectReading& reading) {
    DiagSettings& settings = reading.settings;
    float scale = 0.0F;
    float metres = 0.0F;
    if (LineScan(line.text)
            .Text("Screen scale    : ")
            .AnyNumber(scale)
            .Text("  (")
            .AnyNumber(metres)
            .Text(" m wide)")
            .IsWhole()) {
        settings.scale = ScaleThatPrints(scale, metres);
        reading.screen_metres = metres;
        reading.screen_scale_line = line.number;
        return true;
    }
    std::size_t cinema = 0;
    std::size_t flow = 0;
    std::size_t fsr3 = 0;
    if (LineScan(line.text)
            .Text("Cinema / OptFlow/ FSR3 : ")
            .OneOf(cinema, {"off", "on"})
            .Text(" / ")
            .OneOf(flow, {"off", "on"})
            .Text(" / ")
            .OneOf(fsr3, {"off", "on"})
            .IsWhole()) {
        settings.cinema_mode = cinema == 1;
        settings.optical_flow = flow == 1;
        settings.fsr3 = fsr3 == 1;
        reading.cinema_line = line.number;
        return true;
    }
    std::size_t wait = 0;
    if (LineScan(line.text)
            .Text("Wait for GPU    : ")
            .OneOf(wait,
                   {"OFF   (default; background can show through the picture in patches under heavy GPU "
                    "load)",
                    "ON   (a few ms of latency a frame; no patches)"})
            .IsWhole()) {
        settings.gpu_frame_wait = wait == 1;
        reading.gpu_wait_line = line.number;
        return true;
    }
    return false;
}

/// Sets the separation in percent of 63 mm so that the product makes `millimetres` of it.
void SetSeparation(DiagSettings& settings, float millimetres) {
    constexpr float kEyeDistanceMm = 63.0F;
    constexpr float kPercent = 100.0F;
    settings.eye_distance_mm = kEyeDistanceMm;
    settings.f3d_separation_pct = millimetres * kPercent / kEyeDistanceMm;
}

/// What prints as near zero is below the limit of the warning, or not, as the warning tells. With 3D off the
/// warning is not printed, so what was printed is all that is known.
void SetDepth(const PrintedDepth& depth, SettingsInEffectReading& reading) {
    constexpr float kBelow = 0.96F;  // Of the limit: it prints as the limit and is less.
    constexpr float kAbove = 1.02F;
    DiagSettings& settings = reading.settings;
    reading.separation_mm = depth.separation_mm;
    float separation = depth.separation_mm;
    if (settings.pseudo_3d && separation == kNearZeroSeparationMm) {
        separation *= reading.near_zero_separation_line != 0 ? kBelow : kAbove;
    }
    SetSeparation(settings, separation);
    settings.f3d_depth_strength = depth.strength;
    if (settings.pseudo_3d && depth.strength == kNearZeroDepthStrength) {
        settings.f3d_depth_strength *= reading.near_zero_strength_line != 0 ? kBelow : kAbove;
    }
}

}  // namespace

std::optional<SettingsInEffectReading> ReadSettingsInEffect(SourceLines lines, UnreadLines& unread) {
    SettingsInEffectReading reading;
    PrintedDepth depth;
    const bool any = ReadEachLine(lines, unread, [&](const SourceLine& line) {
        return ReadFile(line, reading) || ReadWarp(line, reading) || ReadDepthSource(line, reading) ||
               ReadStereo(line, reading) || ReadSeparation(line, reading, depth) ||
               ReadNoDepthWarning(line, reading) || ReadScreen(line, reading);
    });
    if (reading.separation_line != 0) {
        SetDepth(depth, reading);
    }
    return any ? std::optional(std::move(reading)) : std::nullopt;
}

namespace {

/// All files that the settings are looked for in are named like this.
bool NamesSettingsFile(std::string_view path) {
    const std::size_t end = path.find_last_not_of(" \t");
    return end != std::string_view::npos && path.substr(0, end + 1).ends_with(".json");
}

}  // namespace

std::optional<SettingsVerbatimReading> ReadSettingsVerbatim(SourceLines lines, UnreadLines& unread) {
    SettingsVerbatimReading reading;
    const bool any = ReadEachLine(lines, unread, [&reading](const SourceLine& line) {
        if (ReadFixedLine(line, "No settings file was found, so there is nothing to quote.",
                          reading.no_file_line) ||
            ReadFixedLine(
                line,
                "(only the \"vistrel_*\" keys are quoted; the rest of the file belongs to Ambulo and is "
                "deliberately left out)",
                reading.explanation_line) ||
            ReadFixedLine(line, "  !! The file could not be read to its end.", reading.broke_off_line) ||
            ReadFixedLine(
                line, "  (no vistrel_* keys in the file - every Vistrel setting is at its built-in default)",
                reading.no_product_keys_line)) {
            return true;
        }
        if (line.text.starts_with("  ") && reading.path_line != 0) {
            reading.quoted.push_back({std::string(line.text.substr(2)), line.number});
            return true;
        }
        if (reading.path_line != 0 || reading.no_file_line != 0 || line.text.starts_with("  ")) {
            return false;
        }
        std::string path;
        if (LineScan(line.text).UpToLast(path, " could not be opened.").IsWhole()) {
            reading.not_opened_line = line.number;
        } else {
            path.assign(line.text);
        }
        if (!NamesSettingsFile(path)) {
            reading.not_opened_line = 0;
            return false;
        }
        reading.path = std::move(path);
        reading.path_line = line.number;
        return true;
    });
    return any ? std::optional(std::move(reading)) : std::nullopt;
}

std::optional<SettingsFileReading> ReadSettingsFile(SourceLines lines, UnreadLines& unread) {
    SettingsFileReading reading;
    for (const SourceLine& line : lines) {
        if (reading.line != 0) {
            reading.error.append("\n").append(line.text);
        } else if (LineScan(line.text)
                       .Text("!! settings.json found at ")
                       .UpTo(reading.path, " but could not be parsed: ")
                       .Rest(reading.error)
                       .Matches()) {
            reading.line = line.number;
        } else if (!IsBlankLine(line.text)) {
            unread.push_back(line);
        }
    }
    while (reading.error.ends_with('\n')) {
        reading.error.pop_back();
    }
    return reading.line != 0 ? std::optional(std::move(reading)) : std::nullopt;
}
