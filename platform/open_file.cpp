#include "platform/open_file.h"

#include <filesystem>
#include <string>

#include "platform/utf8.h"

std::ifstream OpenFileForReading(std::string_view path) {
#ifdef _WIN32
    const std::wstring name = WideFromUtf8(path);  // The wide form bears every name, whatever the code page.
#else
    const std::string name(path);
#endif
    if (name.empty()) {
        return {};
    }
    return std::ifstream(std::filesystem::path(name), std::ios::binary);
}
