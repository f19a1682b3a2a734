// Opens a file by a name in UTF-8.
#pragma once

#include <fstream>
#include <string_view>

/// Opens the file for reading, without translating line ends. A file that another program is writing can be
/// opened too, unless that program does not share it. The stream is not open when there is no such file, when
/// it is a folder or locked, or when `path` is not well-formed UTF-8.
std::ifstream OpenFileForReading(std::string_view path);
