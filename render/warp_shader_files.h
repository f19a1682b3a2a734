// Finds and reads the product's warp shader.
#pragma once

#include <string>
#include <string_view>
#include <vector>

/// The paths to try for the warp shader's source, in order, for an executable in `executable_folder` (no
/// trailing separator; empty when unknown). All text is UTF-8. The last path is relative to the current
/// directory.
std::vector<std::string> WarpShaderCandidates(std::string_view executable_folder);

/// WarpShaderCandidates for the running executable.
std::vector<std::string> FindWarpShaderCandidates();

/// Reads the file at `path` (UTF-8) byte for byte. False, and `text` empty, when the file cannot be opened or
/// is empty.
bool ReadWholeFile(const std::string& path, std::string& text);
