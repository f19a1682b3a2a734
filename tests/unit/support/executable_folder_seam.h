// The folder that the program takes for its own. For the one source file of a test program.
#pragma once

#include <filesystem>
#include <string>

#include "platform/module_folder.h"

inline std::filesystem::path executable_folder;

// In place of platform/module_folder.cpp's.
std::string ExecutableFolder() {
    const std::u8string folder = executable_folder.u8string();
    return {folder.begin(), folder.end()};
}
