// The report sections VISTREL SETTINGS IN EFFECT and VISTREL SETTINGS, VERBATIM.
#pragma once

#include <istream>
#include <string>

#include "settings/diag_settings.h"

/// Below these the report warns that the picture has no depth.
inline constexpr float kNearZeroSeparationMm = 1.0F;
inline constexpr float kNearZeroDepthStrength = 0.05F;

/// Reports what the settings mean, in plain words, with a warning when they alone make depth invisible.
void ReportSettingsInEffect();

/// Reports the product's own lines of the settings file that was applied.
void ReportSettingsVerbatim();

/// Prints the lines of ReportSettingsInEffect. `file_path` is what SettingsFilePath() returns.
void PrintSettingsInEffect(const DiagSettings& settings, const std::string& file_path);

/// Prints the lines of ReportSettingsVerbatim for an applied file; `file` is null when it could not be opened
/// again.
void PrintSettingsVerbatim(const std::string& file_path, std::istream* file);
