#include "platform/module_folder.h"

std::string FolderOfPath(std::string_view path) {
    const std::size_t separator = path.find_last_of("\\/");
    return separator == std::string_view::npos ? std::string() : std::string(path.substr(0, separator));
}
