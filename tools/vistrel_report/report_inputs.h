// Where reports come from: files, folders, standard input.
#pragma once

#include <cstddef>
#include <functional>
#include <istream>
#include <string>
#include <string_view>
#include <vector>

/// The size in bytes above which a file is not read; no report is that long.
inline constexpr std::size_t kLongestInput = std::size_t{64} * 1024 * 1024;

/// One input's bytes, or why there are none.
struct InputBytes {
    std::string bytes;
    std::string error;  ///< empty when it was read
};

/// One thing to read.
struct Input {
    std::string name;          ///< UTF-8; "-" is standard input
    std::size_t argument = 0;  ///< the place in the list of names that it comes from
    bool of_a_folder = false;  ///< found in a folder, so it need not be a report
};

/// The inputs, with each folder replaced by the files in it and its subfolders, sorted by name. An empty
/// folder is kept.
std::vector<Input> ExpandFolders(const std::vector<std::string>& names);

/// Reads the whole input. `standard_input` is read for "-".
InputBytes ReadInput(const Input& input, std::istream& standard_input);

/// Creates the folder and its parent folders unless it exists. False when it cannot be created.
bool MakeFolder(const std::string& path);

bool IsFolder(const std::string& path);

/// Whether there is a file with content that does not begin with `start`, or that cannot be read.
bool HoldsOtherThan(std::string_view start, const std::string& path);

/// Replaces the file. False when it could not be written completely.
bool WriteWholeFile(const std::string& path, const std::string& text);
