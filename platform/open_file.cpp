#include "platform/open_file.h"

#include <filesystem>
#include <string>

#include "platform/long_path.h"
#include "platform/utf8.h"

std::ifstream OpenFileForReading(std::string_view path) {
#ifdef _WIN32
    // The wide function accepts every name, whatever the code page.
    const std::wstring name = WideFromUtf8(OpenablePath(path));
#else
    const std::string name(path);
#endif
    if (name.empty()) {
        return {};
    }
    return std::ifstream(std::filesystem::path(name), std::ios::binary);
}
