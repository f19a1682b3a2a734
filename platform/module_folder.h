// Where the running executable lies.
#pragma once

#include <string>
#include <string_view>

/// The folder of the running executable: UTF-8, no trailing separator. Empty when its path cannot be read
/// whole into Windows' classic 260 characters, is no well-formed UTF-16 or has no folder.
std::string ExecutableFolder();

/// The running executable's own path, of any length. Empty when it cannot be read.
std::wstring ExecutablePath();

/// What stands before the last '\' or '/' of `path`; empty when there is neither.
std::string FolderOfPath(std::string_view path);
