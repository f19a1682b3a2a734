#include "platform/long_path.h"

#include <algorithm>

namespace {

constexpr std::size_t kShortPath = 259;  // Windows also counts the terminating zero.

bool BeginsWithDrive(std::string_view path) {
    return path.size() > 2 && path[1] == ':' && (path[2] == '\\' || path[2] == '/');
}

bool BeginsWithServer(std::string_view path) {
    return path.starts_with("\\\\") && !path.starts_with("\\\\?\\") && !path.starts_with("\\\\.\\");
}

/// After "\\?\" Windows treats a slash as an ordinary character.
std::string WithBackslashes(std::string_view path) {
    std::string text(path);
    std::replace(text.begin(), text.end(), '/', '\\');
    return text;
}

bool HasParentFolder(std::string_view path) {
    return WithBackslashes(path).find("\\..\\") != std::string::npos;
}

}  // namespace

std::string OpenablePath(std::string_view path) {
    if (path.starts_with("\\\\?\\")) {
        return WithBackslashes(path);
    }
    if (path.size() <= kShortPath || HasParentFolder(path)) {
        return std::string(path);
    }
    if (BeginsWithDrive(path)) {
        return "\\\\?\\" + WithBackslashes(path);
    }
    if (BeginsWithServer(path)) {
        return "\\\\?\\UNC\\" + WithBackslashes(path.substr(2));
    }
    return std::string(path);
}
