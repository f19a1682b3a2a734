// Paths beyond the 260 characters that Windows takes unless a setting of the machine says otherwise.
#pragma once

#include <string>
#include <string_view>

/// The form of an absolute path (UTF-8) in which Windows opens it whatever its length and that setting: a
/// long one begins with "\\?\", and in one that begins so already slashes become backslashes, for there they
/// separate nothing. A short path and a relative one stay as they are, and so does one with a ".." in it,
/// which means nothing in that form.
std::string OpenablePath(std::string_view path);
