// Paths beyond the 260 characters that Windows takes unless a setting of the machine says otherwise.
#pragma once

#include <string>
#include <string_view>

/// The form of an absolute path (UTF-8) in which Windows opens it whatever its length and that setting: a
/// long one begins with "\\?\". A short path, a relative one and one that begins so already stay as they are,
/// and so does one with a ".." in it, which means nothing in that form.
std::string OpenablePath(std::string_view path);
