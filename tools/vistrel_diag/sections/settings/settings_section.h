// The report sections VISTREL SETTINGS IN EFFECT and VISTREL SETTINGS, VERBATIM.
#pragma once

#include <istream>
#include <string>

#include "settings/diag_settings.h"

/// What the settings mean, in plain words, with a warning when they alone keep depth from being seen.
void ReportSettingsInEffect();

/// The product's own lines of the settings file that was applied.
void ReportSettingsVerbatim();

/// The lines of ReportSettingsInEffect. `file_path` is as SettingsFilePath() gives it.
void PrintSettingsInEffect(const DiagSettings& settings, const std::string& file_path);

/// The lines of ReportSettingsVerbatim for an applied file; `file` is null when it could not be opened again.
void PrintSettingsVerbatim(const std::string& file_path, std::istream* file);
