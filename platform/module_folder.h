// The folder and path of the running executable.
#pragma once

#include <string>
#include <string_view>

/// The folder of the running executable: UTF-8, no trailing separator. Empty when its path cannot be read
/// whole into Windows' classic 260 characters, is not well-formed UTF-16 or has no folder.
std::string ExecutableFolder();

/// The running executable's own path, of any length. Empty when it cannot be read.
std::wstring ExecutablePath();

/// The part of `path` before its last '\' or '/'; empty when there is neither.
std::string FolderOfPath(std::string_view path);
