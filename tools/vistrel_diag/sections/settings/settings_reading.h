// Reads back the lines of VISTREL SETTINGS IN EFFECT and VISTREL SETTINGS, VERBATIM.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "settings/diag_settings.h"
#include "tools/vistrel_diag/report/line_reading.h"

/// The settings as the record that was printed; a field that is not printed has its default.
///
/// Not in the lines: every field that they do not name; the depth model and the rate limit when depth comes
/// from ReShade; every depth mode but 1 (read as 0); the number of a quality that is not a preset (read as
/// -1); the input size of a custom model when a preset is set; fractions beyond the printed decimals;
/// separation and eye distance other than by their product (read with an eye distance of 63 mm).
struct SettingsInEffectReading {
    DiagSettings settings;
    std::string file_path;        ///< as printed; may be "(not found)"
    std::string product_version;  ///< the version that the tool was written for
    std::uint32_t version_line = 0;
    std::uint32_t file_line = 0;
    std::uint32_t defaults_line = 0;  ///< of "  -> BUILT-IN DEFAULTS are being measured ..."
    std::uint32_t warp_line = 0;
    std::uint32_t search_steps_line = 0;
    std::uint32_t depth_source_line = 0;
    std::uint32_t depth_model_line = 0;
    std::uint32_t rate_limit_line = 0;
    std::uint32_t stereo_line = 0;      ///< of "3D enabled      : ..."
    std::uint32_t separation_line = 0;  ///< of separation, depth strength and screen depth
    std::uint32_t no_stereo_line = 0;   ///< of the warning that 3D is off
    std::uint32_t near_zero_separation_line = 0;
    std::uint32_t near_zero_strength_line = 0;
    std::uint32_t screen_scale_line = 0;
    std::uint32_t cinema_line = 0;  ///< of cinema mode, optical flow and FSR 3
    std::uint32_t gpu_wait_line = 0;
    double separation_mm = 0.0;  ///< as printed
    double screen_metres = 0.0;  ///< as printed
};

/// The settings file as it is quoted.
struct SettingsVerbatimReading {
    std::string path;              ///< empty when no file was found
    std::vector<ReadText> quoted;  ///< the product's lines, without their leading blanks
    std::uint32_t path_line = 0;
    std::uint32_t no_file_line = 0;          ///< of "No settings file was found ..."
    std::uint32_t not_opened_line = 0;       ///< of "... could not be opened."
    std::uint32_t explanation_line = 0;      ///< of "(only the \"vistrel_*\" keys are quoted; ..."
    std::uint32_t broke_off_line = 0;        ///< of "  !! The file could not be read to its end."
    std::uint32_t no_product_keys_line = 0;  ///< of "  (no vistrel_* keys in the file - ..."
};

/// A settings file that was found but could not be used.
struct SettingsFileReading {
    std::string path;
    std::string error;  ///< its lines are separated by line feeds
    std::uint32_t line = 0;
};

/// Empty when no line was understood. Lines that were not understood are added to `unread`.
std::optional<SettingsInEffectReading> ReadSettingsInEffect(SourceLines lines, UnreadLines& unread);
std::optional<SettingsVerbatimReading> ReadSettingsVerbatim(SourceLines lines, UnreadLines& unread);
std::optional<SettingsFileReading> ReadSettingsFile(SourceLines lines, UnreadLines& unread);
