// Finding the product's settings file and applying it.
#pragma once

#include <string>
#include <string_view>
#include <vector>

/// The value of SettingsFilePath while no file has been applied.
inline constexpr std::string_view kNoSettingsFile = "(not found)";

/// The path of the settings file that was applied in full (UTF-8), or kNoSettingsFile.
const std::string& SettingsFilePath();

/// Sets `path` as the file that was applied. For the loader, and for tests.
void SetSettingsFilePath(std::string path);

/// Finds the product's settings file, first in the product data folder, then in `exe_dir` (UTF-8; empty: the
/// current directory), then one level up, and applies it to DiagSettings::Instance(). True when a file was
/// found and applied in full. A file that cannot be parsed is reported in a report line, and no other is
/// tried; keys read before the error stay applied.
bool LoadProductSettings(std::string_view exe_dir);

/// Where a settings file is looked for, in this order. `user_file` is the one in the product data folder.
std::vector<std::string> SettingsFileCandidates(std::string user_file, std::string_view exe_dir);

/// Applies the first of `candidates` that can be opened, as LoadProductSettings does.
bool ApplyFirstSettingsFile(const std::vector<std::string>& candidates);
