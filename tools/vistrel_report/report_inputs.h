// Where reports come from: files, folders, standard input.
#pragma once

#include <cstddef>
#include <functional>
#include <istream>
#include <string>
#include <vector>

/// No report is longer; a file that is, is not read. Bytes.
inline constexpr std::size_t kLongestInput = std::size_t{64} * 1024 * 1024;

/// One input's bytes, or why there are none.
struct InputBytes {
    std::string bytes;
    std::string error;  ///< empty when it was read
};

/// One thing to read.
struct Input {
    std::string name;          ///< UTF-8; "-" is standard input
    bool of_a_folder = false;  ///< it need not be a report
};

/// The inputs with folders replaced by the files in them and below, by name. An empty folder stays as it is.
std::vector<Input> ExpandFolders(const std::vector<std::string>& names);

/// Reads all of it. `standard_input` is read for "-".
InputBytes ReadInput(const Input& input, std::istream& standard_input);

/// Creates the folder, with those above it, unless it is there. False when it cannot be made.
bool MakeFolder(const std::string& path);

bool IsFolder(const std::string& path);

/// Replaces the file. False when it could not be written whole.
bool WriteWholeFile(const std::string& path, const std::string& text);
