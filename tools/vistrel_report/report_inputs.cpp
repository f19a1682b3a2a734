#include "tools/vistrel_report/report_inputs.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <system_error>

#include "platform/open_file.h"

namespace {

namespace fs = std::filesystem;

fs::path PathOf(const std::string& name) {
    return {std::u8string(name.begin(), name.end())};
}

std::string NameOf(const fs::path& path) {
    const std::u8string name = path.u8string();
    return {name.begin(), name.end()};
}

InputBytes ReadAll(std::istream& stream) {
    InputBytes input;
    std::array<char, 65536> block{};
    while (stream.read(block.data(), block.size()) || stream.gcount() > 0) {
        input.bytes.append(block.data(), static_cast<std::size_t>(stream.gcount()));
        if (input.bytes.size() > kLongestInput) {
            return {{}, "is longer than any report"};
        }
    }
    if (stream.bad()) {
        return {{}, "could not be read to its end"};
    }
    return input;
}

/// Files in `folder` and below, sorted; what cannot be entered is passed over.
std::vector<std::string> FilesIn(const fs::path& folder) {
    std::vector<std::string> files;
    std::error_code error;
    fs::recursive_directory_iterator entry(folder, fs::directory_options::skip_permission_denied, error);
    for (; !error && entry != fs::recursive_directory_iterator(); entry.increment(error)) {
        std::error_code ignored;
        if (entry->is_regular_file(ignored)) {
            files.push_back(NameOf(entry->path()));
        }
    }
    std::sort(files.begin(), files.end());
    return files;
}

}  // namespace

bool IsFolder(const std::string& path) {
    std::error_code error;
    return fs::is_directory(PathOf(path), error);
}

bool HoldsOtherThan(std::string_view start, const std::string& path) {
    std::error_code error;
    if (!fs::is_regular_file(PathOf(path), error) || fs::file_size(PathOf(path), error) == 0) {
        return false;
    }
    std::ifstream file = OpenFileForReading(path);
    std::string found(start.size(), '\0');
    file.read(found.data(), static_cast<std::streamsize>(found.size()));
    return !file || found != start;
}

std::vector<Input> ExpandFolders(const std::vector<std::string>& names) {
    std::vector<Input> inputs;
    for (std::size_t argument = 0; argument < names.size(); ++argument) {
        const std::string& name = names[argument];
        const bool folder = name != "-" && IsFolder(name);
        const std::vector<std::string> files = folder ? FilesIn(PathOf(name)) : std::vector<std::string>();
        if (files.empty()) {
            inputs.push_back({name, argument, false});
        }
        for (const std::string& file : files) {
            inputs.push_back({file, argument, true});
        }
    }
    return inputs;
}

InputBytes ReadInput(const Input& input, std::istream& standard_input) {
    if (input.name == "-") {
        return ReadAll(standard_input);
    }
    if (IsFolder(input.name)) {
        return {{}, "is a folder without files"};
    }
    std::ifstream file = OpenFileForReading(input.name);
    if (!file) {
        return {{}, "could not be opened"};
    }
    return ReadAll(file);
}

bool MakeFolder(const std::string& path) {
    std::error_code error;
    fs::create_directories(PathOf(path), error);
    return IsFolder(path);
}

bool WriteWholeFile(const std::string& path, const std::string& text) {
    std::ofstream file(PathOf(path), std::ios::binary | std::ios::trunc);
    file.write(text.data(), static_cast<std::streamsize>(text.size()));
    file.close();
    return !file.fail();
}
