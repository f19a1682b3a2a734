// Sets the folder that the program uses as its own. Include it in only one source file of a test program.
#pragma once

#include <filesystem>
#include <string>

#include "platform/module_folder.h"

inline std::filesystem::path executable_folder;

// Replaces the function in platform/module_folder.cpp.
std::string ExecutableFolder() {
    const std::u8string folder = executable_folder.u8string();
    return {folder.begin(), folder.end()};
}
