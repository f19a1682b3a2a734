// Paths longer than the 260 characters that Windows accepts unless a setting of the machine allows more.
#pragma once

#include <string>
#include <string_view>

/// The form of an absolute path (UTF-8) in which Windows opens it, regardless of its length and of that
/// setting. A long path gets the prefix "\\?\". In a path that already has it, slashes become backslashes,
/// because a slash does not separate folders there. A short or relative path is returned unchanged, and so is
/// one with "..", which has no meaning in that form.
std::string OpenablePath(std::string_view path);
